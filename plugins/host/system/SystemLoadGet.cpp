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
          .String("One Minute",
                  "The average number of running or waiting tasks in the last minute.")
          .String("Five Minutes", "The average over five minutes.")
          .String("Fifteen Minutes", "The average over fifteen minutes.")
          .Int("Running", "How many tasks are running or waiting for a processor now.")
          .Int("Tasks", "The number of tasks; each thread is one.");
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
    Shape().DeclareStruct(spec, "The load averages and the current tasks.");
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
