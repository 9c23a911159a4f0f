// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/KestrelException.h>

#include <memory>
#include <string>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/Regex.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/system/Crontabs.h"
#include "plugins/host/system/SystemCommands.h"

namespace Kestrel::Host {
namespace {

constexpr const char* kColumnFields[kCrontabColumns] = {"Minute", "Hour", "Day", "Month",
                                                        "Weekday"};

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("CrontabEntry")
          .String("User",
                  "The user as whom the command runs; \"unknown\" if a broken line names none.")
          .String("Schedule",
                  "The five columns of the schedule, or a word such as @reboot; \"broken\" for a "
                  "line that cron does not understand, \"ignored\" for one in a file that it "
                  "ignores.")
          .String("Minute", "The minutes; \"-\" for @reboot and a broken line.")
          .String("Hour", "The hours; likewise.")
          .String("Day", "The days of the month; likewise.")
          .String("Month", "The months; likewise.")
          .String("Weekday", "The days of the week, 0 and 7 are Sunday; likewise.")
          .String("Command", "The command as written; the whole line if it is broken.")
          .Strings("Environment", "The settings that apply to the command, as NAME=VALUE.")
          .String("File", "The file that contains the entry.")
          .Int("Line", "The number of its line, from 1 on.")
          .String("Problem", "What is wrong with the line or its file, or \"none\".");
  return shape;
}

std::shared_ptr<MetaObj::MetaString> TextOr(const std::string& text, const char* otherwise) {
  return SanitizedText(text.empty() ? otherwise : text);
}

std::string ScheduleOf(const CrontabEntry& entry) {
  if (!entry.problem.empty()) {
    return "broken";
  }
  return entry.ignored.empty() ? entry.schedule : "ignored";
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const CrontabEntry& entry) {
  const bool isBroken = !entry.problem.empty();
  auto result = Shape().NewStruct();
  result->SetField("User", TextOr(entry.user, "unknown"));
  result->SetField("Schedule", SanitizedText(ScheduleOf(entry)));
  for (std::size_t i = 0; i < kCrontabColumns; ++i) {
    result->SetField(kColumnFields[i], TextOr(isBroken ? "" : entry.columns[i], "-"));
  }
  result->SetField("Command", SanitizedText(entry.command));
  result->SetField("Environment", SanitizedList(entry.environment));
  result->SetField("File", SanitizedText(entry.file));
  result->SetField("Line", entry.line);
  result->SetField("Problem", TextOr(isBroken ? entry.problem : entry.ignored, "none"));
  return result;
}

class SystemCrontabList final : public ListCommand {
 public:
  SystemCrontabList()
      : ListCommand("List the commands that cron starts at set times.", Shape,
                    "The entries: those of users by name, then /etc/crontab and /etc/cron.d.") {
    ShowColumns("User,Schedule,Command", {{"wrap-last", "true"}});
    AddMetaData("complete:user", "system.account.list Name");
    AddExample("--source=system", "List the commands of the system");
    AddExample("--source=system --match=backup --sort=File", "Find a command by its text");
    AddExample("--source=system --user=root", "List what runs as root");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("user", CallSpec::StringList,
              "List only commands of one of these users; * in a name stands for any text.")
        .Short("u")
        .AddTo(spec);
    Parameter("match", CallSpec::String,
              "List only commands that contain a match of this regular expression.")
        .Short("m")
        .AddTo(spec);
    Parameter("source", CallSpec::String,
              "List only entries of one source, which needs no right to read the other: %FULLENUM%")
        .Short("s")
        .OneOf({{"user", "the crontabs of the users"},
                {"system", "/etc/crontab and the files in /etc/cron.d"}})
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const NameFilter users(input, "user");
    const std::unique_ptr<Regex> match = input.HasParameter("match")
                                             ? std::make_unique<Regex>(input.GetParameter("match"))
                                             : nullptr;
    for (const CrontabEntry& entry : ReadEntries(input.GetParameter("source"))) {
      // A broken line that names no user may belong to one of the wanted users.
      const bool isWanted = entry.user.empty() || users.Accepts(entry.user);
      if (isWanted && (match == nullptr || match->IsFoundIn(entry.command))) {
        rows.Add(ToStruct(entry));
      }
    }
  }

  static std::vector<CrontabEntry> ReadEntries(const std::string& source) {
    auto entries = source == "system" ? std::vector<CrontabEntry>() : ReadUserCrontabs("");
    if (source != "user") {
      auto system = ReadSystemCrontabs("");
      std::move(system.begin(), system.end(), std::back_inserter(entries));
    }
    return entries;
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewSystemCrontabList() {
  return std::make_shared<SystemCrontabList>();
}

}  // namespace Kestrel::Host
