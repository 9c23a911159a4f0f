// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/log/Journal.h"
#include "plugins/host/log/LogCommands.h"
#include "plugins/host/log/LogFile.h"
#include "plugins/host/log/LogLevel.h"
#include "plugins/host/log/LogLines.h"
#include "plugins/host/log/LogParameters.h"
#include "plugins/host/log/LogTime.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("LogLine")
          .String("Time",
                  "When it was written, in the time zone of the machine: its own time, never that "
                  "of a line before it; \"none\" for a line that shows no time.")
          .Int("Level",
               "How urgent it is, from 0, emergency, to 7, debug. In a file, the most urgent level "
               "that a word of the line names, 6 when none does.")
          .String("Level Name",
                  "The word for the level: emerg, alert, crit, err, warning, notice, info, debug.")
          .String("Source",
                  "The program that wrote it or, for a file, the file's name without its folders; "
                  "\"unknown\" when the journal names no program.")
          .String("Text", "The message or, of a file, the whole line.");
  return shape;
}

/// Makes the rows. Adjacent rows share equal values.
class LogRows {
 public:
  explicit LogRows(const LocalZone& zone) : zone_(zone) {}

  std::shared_ptr<MetaObj::MetaStruct> ToStruct(const FileLine& line, std::string_view source) {
    // Fields are set in the order in which a structure keeps them, so that none has to be moved.
    auto result = Shape().NewStruct();
    result->SetField("Level", line.level);
    result->SetField("Level Name", levels_.Get(LevelName(line.level)));
    result->SetField("Source", sources_.Get(source));
    result->SetField("Text", SanitizedText(line.text));
    result->SetField("Time", line.time ? TimeText(*line.time) : none_);
    return result;
  }

 private:
  const std::shared_ptr<MetaObj::MetaString>& TimeText(std::int64_t seconds) {
    if (timeText_ == nullptr || seconds != time_) {
      timeText_ = MetaObj::MetaString::New(zone_.ToText(seconds));
      time_ = seconds;
    }
    return timeText_;
  }

  const LocalZone& zone_;
  const std::shared_ptr<MetaObj::MetaString> none_ = MetaObj::MetaString::New("none");
  std::int64_t time_ = 0;
  std::shared_ptr<MetaObj::MetaString> timeText_;
  RepeatedText levels_;
  RepeatedText sources_;
};

void AddFileRows(const std::string& path, const LogFilter& filter, const LocalZone& zone,
                 MetaObj::MetaList& rows) {
  LogFile file(path);
  LogTimeReader times(zone);
  LogRows made(zone);
  const std::string name = path.substr(path.rfind('/') + 1);
  std::vector<std::shared_ptr<MetaObj::MetaStruct>> lastFirst;
  ForEachLastLine(file, filter, times,
                  [&](const FileLine& line) { lastFirst.push_back(made.ToStruct(line, name)); });
  rows.Reserve(lastFirst.size());
  std::for_each(lastFirst.rbegin(), lastFirst.rend(), [&rows](const auto& row) { rows.Add(row); });
}

void AddJournalRows(const std::vector<std::string>& units, const LogFilter& filter,
                    const LocalZone& zone, MetaObj::MetaList& rows) {
  LogRows made(zone);
  for (const LogLine& line : ReadJournal(units, filter)) {
    const std::string_view source = line.source;
    rows.Add(
        made.ToStruct({line.time, line.level, line.text}, source.empty() ? "unknown" : source));
  }
}

class LogList final : public ListCommand {
 public:
  LogList()
      : ListCommand("List the last lines of the journal, of units, or of a log file.", Shape,
                    "The lines, the last one at the end.") {
    ShowColumns("Time,Source,Text", {{"wrap-last", "true"}});
    AddMetaData("complete:file", "file");
    AddMetaData("complete:unit", "service.list Name");
    AddExample("", "List the last 50 lines of the journal");
    AddExample("--unit ssh --since today", "List what one unit wrote today");
    AddExample("--level err --since -2h", "List the errors of the last two hours");
    AddExample("--file /var/log/dpkg.log --lines 5", "List the last five lines of a file");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("unit", CallSpec::StringList,
              "List only lines of this unit in the journal; a name, or a pattern with *.")
        .Short("u")
        .AddTo(spec);
    Parameter("file", CallSpec::String, "Read this file instead of the journal.")
        .Short("f")
        .AddTo(spec);
    AddLogParameters(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const LocalZone zone;
    const LogChoice choice(input, zone, output);
    if (input.HasParameter("unit") && input.HasParameter("file")) {
      output.AddErrorMessage("--unit and --file exclude each other: a file has no units");
    }
    if (output.HasError()) {
      return;
    }
    if (input.HasParameter("file")) {
      return AddFileRows(input.GetParameter("file"), choice.GetFilter(), zone, rows);
    }
    std::vector<std::string> units;
    input.GetParameterList("unit", units);
    AddJournalRows(units, choice.GetFilter(), zone, rows);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewLogList() { return std::make_shared<LogList>(); }

}  // namespace Kestrel::Host
