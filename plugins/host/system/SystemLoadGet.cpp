// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/Hundredths.h"
#include "plugins/host/system/SystemCommands.h"
#include "plugins/host/system/SystemStatistics.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("SystemLoad")
          .String("One Minute",
                  "The average number of running or waiting tasks in the last minute.")
          .Int("One Minute Hundredths", "The same in hundredths.")
          .String("Five Minutes", "The average over five minutes.")
          .Int("Five Minutes Hundredths", "The same in hundredths.")
          .String("Fifteen Minutes", "The average over fifteen minutes.")
          .Int("Fifteen Minutes Hundredths", "The same in hundredths.")
          .Int("Running", "How many tasks are running or waiting for a processor now.")
          .Int("Tasks", "The number of tasks; each thread is one.");
  return shape;
}

void SetAverage(MetaObj::MetaStruct& result, const std::string& name, long hundredths) {
  result.SetField(name, FormatHundredths(hundredths));
  result.SetField(name + " Hundredths", hundredths);
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
    SetAverage(*result, "One Minute", load.oneMinute);
    SetAverage(*result, "Five Minutes", load.fiveMinutes);
    SetAverage(*result, "Fifteen Minutes", load.fifteenMinutes);
    result->SetField("Running", load.running);
    result->SetField("Tasks", load.tasks);
    output.SetRootObject(result);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemLoadGet() { return std::make_shared<SystemLoadGet>(); }

}  // namespace Kestrel::Host
