// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/Journal.h"

#include <kestrel/KestrelException.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "plugins/host/frame/ChildProcess.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr std::int64_t kMicroseconds = 1000000;
constexpr std::size_t kLengthSize = 8;

// Messages of journalctl in the C locale.
constexpr std::string_view kNoFiles = "No journal files were found";
constexpr std::string_view kNoRight = "insufficient permissions";
constexpr std::string_view kOwnEntriesOnly = "You are currently not seeing messages from other";
constexpr std::string_view kNoSuchUnits = "Failed to add filter for units: No data available";

// Where a machine without a journal usually stores its messages.
constexpr const char* kUsualFiles[] = {"/var/log/syslog", "/var/log/messages"};

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool IsFieldName(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char letter) {
    return (letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9') || letter == '_';
  });
}

std::uint64_t ReadLength(const char* bytes) {
  std::uint64_t length = 0;
  for (std::size_t index = kLengthSize; index-- > 0;) {
    length = length << 8 | static_cast<unsigned char>(bytes[index]);
  }
  return length;
}

[[noreturn]] void FailWithoutJournal(const std::string& reason) {
  std::string advice = ". Read a log file with --file instead";
  for (const char* const path : kUsualFiles) {
    if (::access(path, R_OK) == 0) {
      advice.append(", such as ").append(path);
      break;
    }
  }
  throw KestrelException("There is no journal: " + reason + advice);
}

std::string RequireJournalctl() {
  const auto path = FindProgram("journalctl");
  if (!path) {
    FailWithoutJournal("the program journalctl (package systemd) is not in PATH");
  }
  return *path;
}

void RequireSuccess(const ProgramResult& result) {
  if (Contains(result.errorOutput, kOwnEntriesOnly) || Contains(result.errorOutput, kNoRight)) {
    throw KestrelException(
        "Only root and members of the group systemd-journal may read the whole journal");
  }
  if (Contains(result.errorOutput, kNoFiles)) {
    FailWithoutJournal("no journal files were found");
  }
  if (Contains(result.errorOutput, kNoSuchUnits)) {
    throw KestrelException("The journal has no unit whose name matches --unit");
  }
  if (result.status != 0) {
    throw KestrelException("journalctl failed: " + result.GetReason());
  }
}

// Requests the newest entry first, so that reading can stop as soon as there are enough.
std::vector<std::string> ArgumentsFor(const std::vector<std::string>& units,
                                      const LogFilter& filter) {
  std::vector<std::string> arguments = {"--no-pager", "--reverse", "--output=export",
                                        "--output-fields=PRIORITY,SYSLOG_IDENTIFIER,_COMM,MESSAGE"};
  // journalctl's limit would also count entries that do not match.
  if (filter.match == nullptr && filter.lines != kAllLines) {
    arguments.push_back("--lines=" + std::to_string(filter.lines));
  }
  // Not passed for the lowest level, because the option also omits entries without a priority.
  if (filter.level < kLowestLevel) {
    arguments.push_back("--priority=" + std::to_string(filter.level));
  }
  if (filter.since) {
    arguments.push_back("--since=@" + std::to_string(*filter.since));
  }
  for (const std::string& unit : units) {
    arguments.push_back("--unit=" + unit);
  }
  return arguments;
}

std::vector<LogLine> AskJournal(const std::vector<std::string>& units, const LogFilter& filter) {
  std::vector<LogLine> lines;
  JournalParser parser;
  const ProgramResult result =
      RunProgram(RequireJournalctl(), ArgumentsFor(units, filter), [&](std::string_view piece) {
        parser.Append(piece);
        while (auto entry = parser.Next()) {
          if (filter.match == nullptr || filter.match->IsFoundIn(entry->text)) {
            lines.push_back(std::move(*entry));
          }
          if (lines.size() >= filter.lines) {
            break;
          }
        }
        return lines.size() < filter.lines;
      });
  RequireSuccess(result);
  if (lines.size() < filter.lines && !parser.IsBetweenEntries()) {
    throw KestrelException("journalctl's answer ends in the middle of an entry");
  }
  std::reverse(lines.begin(), lines.end());
  return lines;
}

// Throws if the journal is missing or only partly readable. In the export format, journalctl
// reports neither; when asked for zero lines of text, it reports both.
void RequireWholeJournal() {
  RequireSuccess(RunProgram(RequireJournalctl(), {"--no-pager", "--lines=0"}));
}

bool IsInJournal(const std::string& unit) {
  LogFilter filter;
  filter.lines = 1;
  return !AskJournal({unit}, filter).empty();
}

// Whether systemctl reports that systemd knows the unit, even if systemd cannot load the unit.
bool IsKnownToManager(const std::string& unit) {
  const auto systemctl = FindProgram("systemctl");
  if (!systemctl) {
    return false;
  }
  const ProgramResult result =
      RunProgram(*systemctl, {"show", "--property=LoadState", "--value", "--", unit});
  const std::string_view state = Trim(result.output);
  return result.status == 0 && !state.empty() && state != "not-found";
}

void RequireUnit(const std::string& unit) {
  if (!IsInJournal(unit) && !IsKnownToManager(unit)) {
    throw KestrelException("Neither the journal nor systemctl knows the unit " + unit);
  }
}

}  // namespace

std::optional<LogLine> JournalParser::Next() {
  while (!isComplete_) {
    if (!TakeField()) {
      text_.erase(0, std::exchange(position_, 0));
      return std::nullopt;
    }
  }
  isComplete_ = hasFields_ = false;
  if (entry_.source.empty()) {
    entry_.source = std::move(command_);
  }
  command_.clear();
  return std::exchange(entry_, LogLine());
}

// Returns false if the field continues in a piece that has not arrived yet.
bool JournalParser::TakeField() {
  const std::size_t lineEnd = text_.find('\n', position_);
  if (lineEnd == std::string::npos) {
    return false;
  }
  const std::string_view line(text_.data() + position_, lineEnd - position_);
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos && IsFieldName(line)) {
    return TakeSizedField(lineEnd);
  }
  if (equals != std::string_view::npos) {
    SetField(line.substr(0, equals), line.substr(equals + 1));
  }
  isComplete_ = line.empty() && hasFields_;
  position_ = lineEnd + 1;
  return true;
}

bool JournalParser::TakeSizedField(std::size_t nameEnd) {
  const std::size_t lengthStart = nameEnd + 1;
  if (text_.size() - lengthStart < kLengthSize) {
    return false;
  }
  const std::uint64_t length = ReadLength(text_.data() + lengthStart);
  const std::size_t start = lengthStart + kLengthSize;
  if (text_.size() - start <= length) {
    return false;
  }
  const std::string_view text = text_;
  const auto size = static_cast<std::size_t>(length);
  SetField(text.substr(position_, nameEnd - position_), text.substr(start, size));
  position_ = start + size + 1;  // a line feed ends the field
  return true;
}

void JournalParser::SetField(std::string_view name, std::string_view value) {
  hasFields_ = true;
  if (name == "MESSAGE") {
    entry_.text = value;
  } else if (name == "SYSLOG_IDENTIFIER") {
    entry_.source = value;
  } else if (name == "_COMM") {
    command_ = value;
  } else if (name == "PRIORITY") {
    entry_.level = ParseLevel(value).value_or(kInfoLevel);
  } else if (name == "__REALTIME_TIMESTAMP") {
    if (const auto microseconds = ParseNumber(value)) {
      entry_.time = *microseconds / kMicroseconds;
    }
  }
}

std::vector<LogLine> ReadJournal(const std::vector<std::string>& units, const LogFilter& filter) {
  std::vector<LogLine> lines = AskJournal(units, filter);
  if (lines.empty() || ::geteuid() != 0) {
    RequireWholeJournal();
  }
  const bool isUnitSure = units.size() == 1 && !lines.empty();
  if (!isUnitSure) {
    std::for_each(units.begin(), units.end(), RequireUnit);
  }
  return lines;
}

}  // namespace Kestrel::Host
