// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TimeFormat.h"
#include "plugins/host/system/SystemCommands.h"
#include "plugins/host/system/SystemStatistics.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("SystemUptime")
          .String("Started", "When the machine was started, in its time zone.")
          .String("Up", "How long it has been running: days-hours:minutes:seconds.")
          .Int("Seconds", "The time in seconds.")
          .Int("Idle Seconds", "The idle time in seconds, the sum of all processors.");
  return shape;
}

class SystemUptimeGet final : public HostCommand {
 public:
  SystemUptimeGet() : HostCommand("Show how long the machine has been running.") {
    ShowAsLines("SystemUptime", "Started,Up,Seconds,Idle Seconds",
                {{"units:SystemUptime.Seconds", "s"}, {"units:SystemUptime.Idle Seconds", "s"}});
    AddExample("", "Show how long this machine has been running");
  }

 private:
  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareStruct(spec, "The time since the machine was started.");
  }

  void Run(const CallSpec::Input&, CallSpec::Output& output) const override {
    const Uptime uptime = ReadUptime(kProc);
    const auto result = Shape().NewStruct();
    result->SetField("Started", FormatTimestamp(ReadStartTime(kProc)));
    result->SetField("Up", FormatDuration(uptime.seconds));
    result->SetField("Seconds", uptime.seconds);
    result->SetField("Idle Seconds", uptime.idleSeconds);
    output.SetRootObject(result);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemUptimeGet() {
  return std::make_shared<SystemUptimeGet>();
}

}  // namespace Kestrel::Host
