// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/autocli/Dispatcher.h>
#include <kestrel/callspec/InputSpec.h>
#include <kestrel/callspec/OutputSpec.h>
#include <kestrel/metaobj/MetaList.h>

#include <string>

#include "plugins/host/frame/RowOrder.h"
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

const Host::StructShape& Shape() {
  static const Host::StructShape shape =
      Host::StructShape("VexilPlugin")
          .String("File", "The name of the file, or built-in.")
          .String("Kind", "library for a shared library, descriptor or built-in.")
          .Int("Commands", "The number of commands that come from the plug-in.")
          .String("Path",
                  "The path of the file; for a built-in plug-in, that of the library or the tool.");
  return shape;
}

const char* WordOf(Catalog::PluginKind kind) {
  switch (kind) {
    case Catalog::PluginKind::SharedLibrary:
      return "library";
    case Catalog::PluginKind::Descriptor:
      return "descriptor";
    case Catalog::PluginKind::BuiltIn:
      break;
  }
  return "built-in";
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const LoadedPlugin& loaded) {
  auto result = Shape().NewStruct();
  result->SetField("File", Host::SanitizedText(loaded.plugin.file));
  result->SetField("Kind", WordOf(loaded.plugin.kind));
  result->SetField("Commands", loaded.commands);
  result->SetField("Path", Host::SanitizedText(loaded.plugin.path));
  return result;
}

class PluginList final : public AutoCli::Command {
 public:
  PluginList() {
    SetDescription("List the plug-ins that are loaded, in the order of loading.");
    AddExample("", "List the plug-ins");
    AddExample("--sort Commands --descending --limit 3", "List those with the most commands");
    SetDefaultOutputFormatter("table");
    SetDefaultOutputParameter("fields", "File,Kind,Commands,Path");
    SetDefaultOutputParameter("wrap-last", "true");
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    auto spec = InputSpec::New();
    Host::RowOrder::DeclareParameters(*spec);
    return spec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    Shape().DeclareList(*spec, "The plug-ins, in the order of loading.");
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& input,
                       const std::shared_ptr<Output>& output) override {
    const auto order =
        Host::RowOrder::Read(input != nullptr ? *input : *Input::New(), Shape(), *output);
    if (!order.has_value()) {
      return;
    }
    auto list = Shape().NewList();
    for (const LoadedPlugin& loaded : FindLoadedPlugins(*GetDispatcher())) {
      list->Add(ToStruct(loaded));
    }
    output->SetRootObject(order->Apply(list));
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewPluginList() { return std::make_shared<PluginList>(); }

}  // namespace Kestrel::Vexil
