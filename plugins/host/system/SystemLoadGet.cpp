// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/system/SystemCommands.h"
#include "plugins/host/system/SystemStatistics.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("SystemLoad")
          .String("One Minute", "How many tasks ran or waited, on average over one minute.")
          .String("Five Minutes", "The same over five minutes.")
          .String("Fifteen Minutes", "The same over fifteen minutes.")
          .Int("Running", "How many tasks run or wait for a processor now.")
          .Int("Tasks", "How many tasks there are, each thread counted as one.");
  return shape;
}

class SystemLoadGet final : public HostCommand {
 public:
  SystemLoadGet() : HostCommand("Show how busy the machine is.") {
    ShowAsLines("SystemLoad", "One Minute,Five Minutes,Fifteen Minutes,Running,Tasks");
    AddExample("", "Show how busy this machine is");
  }

 private:
  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareStruct(spec, "The averages of the load, and the tasks at this moment.");
  }

  void Run(const CallSpec::Input&, CallSpec::Output& output) const override {
    const Load load = ReadLoad(kProc);
    const auto result = Shape().NewStruct();
    result->SetField("One Minute", load.oneMinute);
    result->SetField("Five Minutes", load.fiveMinutes);
    result->SetField("Fifteen Minutes", load.fifteenMinutes);
    result->SetField("Running", load.running);
    result->SetField("Tasks", load.tasks);
    output.SetRootObject(result);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemLoadGet() { return std::make_shared<SystemLoadGet>(); }

}  // namespace Kestrel::Host
