// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/KestrelException.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/system/OsRelease.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("SystemVersion")
          .Text("Host Name", "The name by which the machine calls itself.")
          .Text("Kernel", "The name of the kernel.")
          .Text("Release", "The release of the kernel.")
          .Text("Build", "The build of the kernel: its number, options and time.")
          .Text("Architecture", "The kind of processor that the kernel runs on.")
          .Text("Distribution", "The name and version of the distribution; empty when unknown.");
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
    Shape().DeclareRecord(spec, "The versions of the running system.");
  }

  void Run(const CallSpec::Input&, CallSpec::Output& output) const override {
    utsname kernel = {};
    if (::uname(&kernel) != 0) {
      throw KestrelException(std::string("Unable to ask the kernel for its version: ") +
                             std::strerror(errno));
    }
    const auto record = Shape().NewRecord();
    record->SetField("Host Name", OutsideText(kernel.nodename));
    record->SetField("Kernel", OutsideText(kernel.sysname));
    record->SetField("Release", OutsideText(kernel.release));
    record->SetField("Build", OutsideText(kernel.version));
    record->SetField("Architecture", OutsideText(kernel.machine));
    record->SetField("Distribution", OutsideText(ReadDistributionName("")));
    output.SetRootObject(record);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemVersionGet() {
  return std::make_shared<SystemVersionGet>();
}

}  // namespace Kestrel::Host
