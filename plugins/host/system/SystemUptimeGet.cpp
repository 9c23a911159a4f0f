// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/system/ClockText.h"
#include "plugins/host/system/SystemCommands.h"
#include "plugins/host/system/SystemFigures.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("SystemUptime")
          .Text("Started", "When the machine started, in its own time zone.")
          .Text("Up", "For how long it has been up: days-hours:minutes:seconds.")
          .Number("Seconds", "The same in seconds.")
          .Number("Idle Seconds", "The time without work in seconds, summed over all processors.");
  return shape;
}

class SystemUptimeGet final : public HostCommand {
 public:
  SystemUptimeGet() : HostCommand("Show since when the machine has been up.") {
    ShowAsLines("SystemUptime", "Started,Up,Seconds,Idle Seconds",
                {{"units:SystemUptime.Seconds", "s"}, {"units:SystemUptime.Idle Seconds", "s"}});
    AddExample("", "Show since when this machine has been up");
  }

 private:
  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareRecord(spec, "Since when the machine has been up.");
  }

  void Run(const CallSpec::Input&, CallSpec::Output& output) const override {
    const Uptime uptime = ReadUptime(kProc);
    const auto record = Shape().NewRecord();
    record->SetField("Started", MomentText(ReadStartMoment(kProc)));
    record->SetField("Up", SpanText(uptime.seconds));
    record->SetField("Seconds", uptime.seconds);
    record->SetField("Idle Seconds", uptime.idleSeconds);
    output.SetRootObject(record);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemUptimeGet() {
  return std::make_shared<SystemUptimeGet>();
}

}  // namespace Kestrel::Host
