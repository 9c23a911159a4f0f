// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/KestrelException.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/OsRelease.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("SystemVersion")
          .String("Host Name", "The host name.")
          .String("Kernel", "The name of the kernel.")
          .String("Release", "The release of the kernel.")
          .String("Build", "The build of the kernel: its number, options and time.")
          .String("Architecture", "The architecture of the processor.")
          .String("Distribution", "The name and version of the distribution, or \"unknown\".");
  return shape;
}

class SystemVersionGet final : public HostCommand {
 public:
  SystemVersionGet() : HostCommand("Show the versions of the kernel and the distribution.") {
    ShowAsLines("SystemVersion", "Host Name,Distribution,Kernel,Release,Build,Architecture");
    AddExample("", "Show what this machine runs");
  }

 private:
  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareStruct(spec, "The versions of the running system.");
  }

  void Run(const CallSpec::Input&, CallSpec::Output& output) const override {
    utsname kernel = {};
    if (::uname(&kernel) != 0) {
      throw KestrelException(std::string("Unable to ask the kernel for its version: ") +
                             std::strerror(errno));
    }
    const auto result = Shape().NewStruct();
    result->SetField("Host Name", SanitizedText(kernel.nodename));
    result->SetField("Kernel", SanitizedText(kernel.sysname));
    result->SetField("Release", SanitizedText(kernel.release));
    result->SetField("Build", SanitizedText(kernel.version));
    result->SetField("Architecture", SanitizedText(kernel.machine));
    const std::string distribution = ReadDistributionName("");
    result->SetField("Distribution",
                     SanitizedText(distribution.empty() ? "unknown" : distribution));
    output.SetRootObject(result);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemVersionGet() {
  return std::make_shared<SystemVersionGet>();
}

}  // namespace Kestrel::Host
