// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <string>
#include <vector>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/log/KernelLog.h"
#include "plugins/host/log/LocalZone.h"
#include "plugins/host/log/LogCommands.h"
#include "plugins/host/log/LogLevel.h"
#include "plugins/host/log/LogParameters.h"
#include "plugins/host/log/LogTime.h"

namespace Kestrel::Host {
namespace {

constexpr std::int64_t kMicroseconds = 1000000;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("KernelLogLine")
          .String("Time",
                  "When it was written, in the time zone of the machine, according to its present "
                  "clock. Older times are inexact if the machine has been asleep since.")
          .Int("Uptime Microseconds",
               "How long the machine had been running, in microseconds, as the kernel counts.")
          .Int("Level", "How urgent it is, from 0, emergency, to 7, debug.")
          .String("Level Name",
                  "The word for the level: emerg, alert, crit, err, warning, notice, info, debug.")
          .String("Facility", "Which part of the system wrote it: kern, user, daemon and others.")
          .String("Text", "The message.");
  return shape;
}

// Converts the times of kernel messages to seconds since the epoch, using the present clock.
class KernelClock {
 public:
  std::int64_t ToSeconds(const KernelMessage& message) const {
    return (boot_ + message.microseconds) / kMicroseconds;
  }

 private:
  std::int64_t boot_ = BootMicroseconds();
};

bool Passes(const KernelMessage& message, const LogFilter& filter, const KernelClock& clock) {
  return message.level <= filter.level &&
         (!filter.since || clock.ToSeconds(message) >= *filter.since) &&
         (filter.match == nullptr || filter.match->IsFoundIn(message.text));
}

std::vector<KernelMessage> LastMessages(const LogFilter& filter, const KernelClock& clock) {
  std::vector<KernelMessage> messages = ReadKernelLog();
  const auto isUnwanted = [&](const KernelMessage& each) { return !Passes(each, filter, clock); };
  messages.erase(std::remove_if(messages.begin(), messages.end(), isUnwanted), messages.end());
  const std::size_t tooMany = messages.size() - std::min(messages.size(), filter.lines);
  messages.erase(messages.begin(), messages.begin() + static_cast<std::ptrdiff_t>(tooMany));
  return messages;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const KernelMessage& message,
                                              const std::string& time) {
  auto result = Shape().NewStruct();
  result->SetField("Time", time);
  result->SetField("Uptime Microseconds", message.microseconds);
  result->SetField("Level", message.level);
  result->SetField("Level Name", LevelName(message.level));
  result->SetField("Facility", FacilityName(message.facility));
  result->SetField("Text", SanitizedText(message.text));
  return result;
}

class LogKernelList final : public ListCommand {
 public:
  LogKernelList()
      : ListCommand("List the last messages of the kernel.", Shape,
                    "The messages, the last one at the end.") {
    ShowColumns("Time,Level,Text", {{"wrap-last", "true"}});
    AddExample("", "List the last 50 messages");
    AddExample("--level warning --since today", "List today's warnings and errors");
    AddExample("--match usb --lines 10", "List the last ten messages about USB");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override { AddLogParameters(spec); }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const LocalZone zone;
    const LogChoice choice(input, zone, output);
    if (output.HasError()) {
      return;
    }
    const KernelClock clock;
    for (const KernelMessage& message : LastMessages(choice.GetFilter(), clock)) {
      rows.Add(ToStruct(message, zone.ToText(clock.ToSeconds(message))));
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewLogKernelList() { return std::make_shared<LogKernelList>(); }

}  // namespace Kestrel::Host
