// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <ctime>
#include <optional>
#include <string>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TimeFormat.h"
#include "plugins/host/service/ServiceCommands.h"
#include "plugins/host/service/ServiceManager.h"
#include "plugins/host/service/ServiceParameters.h"
#include "plugins/host/service/Systemctl.h"
#include "plugins/host/service/SystemctlOutput.h"

namespace Kestrel::Host {
namespace {

constexpr std::string_view kEnding = ".timer";

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("Timer")
          .String("Unit", "The name of the timer.")
          .String("Activates", "The unit that it starts; \"none\" when there is none.")
          .String("Next", "When it next starts the unit; \"none\" if it will not.")
          .String("Last", "When it last started the unit; \"never\" if it has not yet.");
  return shape;
}

std::string ToText(const std::optional<std::int64_t>& time, const char* word) {
  return time ? TextOr(word, FormatTimestamp(*time)) : word;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Timer& timer) {
  auto row = Shape().NewStruct();
  row->SetField("Unit", SanitizedText(timer.unit));
  row->SetField("Activates", SanitizedText(TextOr("none", timer.activates)));
  row->SetField("Next", SanitizedText(ToText(timer.next, "none")));
  row->SetField("Last", SanitizedText(ToText(timer.last, "never")));
  return row;
}

std::string WithoutEnding(const std::string& unit) {
  const bool hasEnding = unit.size() > kEnding.size() &&
                         unit.compare(unit.size() - kEnding.size(), kEnding.size(), kEnding) == 0;
  return hasEnding ? unit.substr(0, unit.size() - kEnding.size()) : unit;
}

class SystemTimerList final : public ListCommand {
 public:
  SystemTimerList()
      : ListCommand("List the timers of systemd, and when each starts its unit.", Shape,
                    "The timers, in the order in which they next start their units; none on a "
                    "machine without "
                    "systemd.") {
    ShowColumns("Next,Last,Unit", {{"wrap-last", "true"}});
    AddMetaData("complete:name", "system.timer.list Unit");
    AddExample("", "List all timers");
    AddExample("--name 'apt-*'", "List the timers of apt");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    UnitNames::DeclareParameters(spec, "timers");
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const UnitNames names(input, kEnding);
    if (!ServiceManager().IsSystemd()) {
      return;
    }
    const std::string output = Systemctl().Ask(
        {"list-timers", "--all", "--full", "--no-legend", "--no-pager", "--output=json"});
    ::tzset();  // otherwise only the first conversion in a program reads TZ
    for (const Timer& timer : ParseTimers(output)) {
      if (names.Accept(WithoutEnding(timer.unit))) {
        rows.Add(ToStruct(timer));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemTimerList() {
  return std::make_shared<SystemTimerList>();
}

}  // namespace Kestrel::Host
