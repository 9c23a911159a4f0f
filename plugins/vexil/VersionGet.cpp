// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/Version.h>
#include <kestrel/autocli/Dispatcher.h>
#include <kestrel/callspec/InputSpec.h>
#include <kestrel/callspec/OutputSpec.h>
#include <sys/utsname.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/StructShape.h"
#include "plugins/vexil/LoadedPlugins.h"
#include "plugins/vexil/ToolCommands.h"

namespace Kestrel::Vexil {
namespace {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;

#if defined(__clang__)
constexpr const char* kCompiler = "clang " __clang_version__;
#else
constexpr const char* kCompiler = "gcc " __VERSION__;
#endif

const Host::StructShape& Shape() {
  static const Host::StructShape shape =
      Host::StructShape("VexilVersion")
          .String("Version", "The version that this plug-in was built with.")
          .String("Tool", "The path of the program that runs.")
          .String("Library", "The path of the library; the end of its name is its version.")
          .String("Plugin Folder", "The folder whose plug-ins are loaded by default.")
          .Int("Plugins", "The number of plug-ins that are loaded.")
          .Int("Commands", "The number of commands that come from them.")
          .String("Compiler", "The compiler that this plug-in was built with.")
          .String("System", "The kernel, its release and the machine that it is for.");
  return shape;
}

/// Returns the target of a path with all links followed; the path itself if that cannot be
/// determined.
std::string Resolved(const std::string& path) {
  std::error_code error;
  const std::filesystem::path resolved = std::filesystem::canonical(path, error);
  return error ? path : resolved.string();
}

std::string SystemName() {
  utsname system = {};
  return uname(&system) == 0
             ? std::string(system.sysname) + " " + system.release + " " + system.machine
             : "unknown";
}

long CountCommands(const std::vector<LoadedPlugin>& plugins) {
  long commands = 0;
  for (const LoadedPlugin& plugin : plugins) {
    commands += plugin.commands;
  }
  return commands;
}

class VersionGet final : public AutoCli::Command {
 public:
  VersionGet() {
    SetDescription("Get the version of the tool and other details for bug reports.");
    AddExample("", "Get the version");
    SetDefaultOutputFormatter("simple");
    SetDefaultOutputParameter("align-fields", "true");
    SetDefaultOutputParameter(
        "fields", "Version,Tool,Library,Plugin Folder,Plugins,Commands,Compiler,System");
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override { return InputSpec::New(); }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    Shape().DeclareStruct(*spec, "The versions and files of the tool.");
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& /*input*/,
                       const std::shared_ptr<Output>& output) override {
    const std::vector<LoadedPlugin> plugins = FindLoadedPlugins(*GetDispatcher());
    auto result = Shape().NewStruct();
    result->SetField("Version", KESTREL_VERSION_STRING);
    result->SetField("Tool", Host::SanitizedText(Resolved("/proc/self/exe")));
    result->SetField("Library", Host::SanitizedText(Resolved(plugins.front().plugin.path)));
    result->SetField("Plugin Folder", KESTREL_PLUGIN_DIR);
    result->SetField("Plugins", static_cast<long>(plugins.size()));
    result->SetField("Commands", CountCommands(plugins));
    result->SetField("Compiler", kCompiler);
    result->SetField("System", Host::SanitizedText(SystemName()));
    output->SetRootObject(result);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewVersionGet() { return std::make_shared<VersionGet>(); }

}  // namespace Kestrel::Vexil
