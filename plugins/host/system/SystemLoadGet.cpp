// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/system/SystemCommands.h"
#include "plugins/host/system/SystemFigures.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("SystemLoad")
          .Text("One Minute", "How many tasks ran or waited, on average over one minute.")
          .Text("Five Minutes", "The same over five minutes.")
          .Text("Fifteen Minutes", "The same over fifteen minutes.")
          .Number("Running", "How many tasks run or wait for a processor now.")
          .Number("Tasks", "How many tasks there are, each thread counted as one.");
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
    Shape().DeclareRecord(spec, "The averages of the load, and the tasks at this moment.");
  }

  void Run(const CallSpec::Input&, CallSpec::Output& output) const override {
    const Load load = ReadLoad(kProc);
    const auto record = Shape().NewRecord();
    record->SetField("One Minute", load.oneMinute);
    record->SetField("Five Minutes", load.fiveMinutes);
    record->SetField("Fifteen Minutes", load.fifteenMinutes);
    record->SetField("Running", load.running);
    record->SetField("Tasks", load.tasks);
    output.SetRootObject(record);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemLoadGet() { return std::make_shared<SystemLoadGet>(); }

}  // namespace Kestrel::Host
