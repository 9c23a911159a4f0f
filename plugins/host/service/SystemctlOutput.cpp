// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/SystemctlOutput.h"

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <ctime>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>

#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

using Json = nlohmann::json;

constexpr std::int64_t kMicroseconds = 1000000;
// Enough of an unexpected output to recognize it.
constexpr std::size_t kMaxShown = 60;

[[noreturn]] void Refuse(std::string_view output) {
  throw KestrelException("systemctl printed something unexpected: '" +
                         SanitizedText(Trim(output).substr(0, kMaxShown))->GetValue() + "'");
}

// Parses a list of structures. Returns nothing for output that does not begin like one.
std::optional<Json> ParseList(const std::string& output) {
  if (!StartsWith(Trim(output), "[")) {
    return std::nullopt;
  }
  Json list = Json::parse(output, nullptr, false);
  if (!list.is_array()) {
    Refuse(output);
  }
  for (const Json& row : list) {
    if (!row.is_object()) {
      Refuse(output);
    }
  }
  return list;
}

std::string TextIn(const Json& row, const char* key) {
  const auto found = row.find(key);
  return found != row.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::string RequireText(const Json& row, const char* key) {
  std::string text = TextIn(row, key);
  if (text.empty()) {
    Refuse(row.dump(-1, ' ', true));
  }
  return text;
}

// Returns a time in seconds from a number of microseconds since the epoch. A missing number and 0
// mean that there is no time.
std::optional<std::int64_t> TimeIn(const Json& row, const char* key) {
  const auto found = row.find(key);
  if (found == row.end() || !found->is_number_unsigned() || *found == 0U) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(found->get<std::uint64_t>() / kMicroseconds);
}

// Returns the rest of `line` after `lastWord`, which is a view into `line`.
std::string_view RestAfter(std::string_view line, std::string_view lastWord) {
  return Trim(
      line.substr(static_cast<std::size_t>(lastWord.data() - line.data()) + lastWord.size()));
}

// Returns the words of a line that begins with a unit and has at least `count` words; throws for
// other lines.
std::vector<std::string_view> RequireWords(std::string_view line, std::size_t count) {
  std::vector<std::string_view> words = SplitWords(line);
  if (words.size() < count || words[0].find('.') == std::string_view::npos) {
    Refuse(line);
  }
  return words;
}

LoadedUnit ParseUnitLine(std::string_view line) {
  const auto words = RequireWords(line, 4);
  return {std::string(words[0]), std::string(words[1]), std::string(words[2]),
          std::string(words[3]), std::string(RestAfter(line, words[3]))};
}

// Parses a line of the table of timers: the next start and the time until then, the last start and
// the time since then, the timer, and the unit that it starts. "-" and "n/a" mean that there is no
// time.
//
//   Mon 2026-11-23 00:00:00 UTC 15h left n/a n/a a.timer a.service
class TimerLine {
 public:
  explicit TimerLine(std::string_view line) : line_(line), words_(SplitWords(line)) {}

  Timer Parse() {
    Timer timer;
    timer.next = TakeTime();
    SkipSpan();
    timer.last = TakeTime();
    while (position_ < words_.size() && !IsTimer(words_[position_])) {
      ++position_;
    }
    timer.unit = Take();
    timer.activates = position_ < words_.size() ? Take() : std::string_view();
    return timer;
  }

 private:
  static bool IsTimer(std::string_view word) {
    constexpr std::string_view kEnding = ".timer";
    return word.size() > kEnding.size() && word.substr(word.size() - kEnding.size()) == kEnding;
  }

  static bool IsNone(std::string_view word) { return word == "-" || word == "n/a"; }

  static bool IsWeekday(std::string_view word) {
    constexpr std::string_view kDays[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
    return std::find(std::begin(kDays), std::end(kDays), word) != std::end(kDays);
  }

  std::string_view Take() {
    if (position_ == words_.size()) {
      Refuse(line_);
    }
    return words_[position_++];
  }

  // Skips the words between two times: a word for no time, or a span such as "1h 2min left".
  void SkipSpan() {
    Take();
    while (position_ < words_.size() && !IsNone(words_[position_]) &&
           !IsWeekday(words_[position_])) {
      ++position_;
    }
  }

  // Takes "Mon 2026-11-23 00:00:00 UTC", in the zone of this process.
  std::optional<std::int64_t> TakeTime() {
    if (IsNone(Take())) {
      return std::nullopt;
    }
    const std::string text = std::string(Take()).append(" ").append(Take());
    Take();
    std::tm parts = {};
    parts.tm_isdst = -1;
    const char* const end = ::strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &parts);
    if (end == nullptr || *end != '\0') {
      Refuse(line_);
    }
    return std::mktime(&parts);
  }

  const std::string_view line_;
  const std::vector<std::string_view> words_;
  std::size_t position_ = 0;
};

}  // namespace

std::vector<LoadedUnit> ParseUnits(const std::string& output) {
  std::vector<LoadedUnit> units;
  if (const std::optional<Json> list = ParseList(output)) {
    units.reserve(list->size());
    for (const Json& row : *list) {
      units.push_back({RequireText(row, "unit"), TextIn(row, "load"), TextIn(row, "active"),
                       TextIn(row, "sub"), TextIn(row, "description")});
    }
    return units;
  }
  for (const std::string_view line : SplitLines(output)) {
    if (!Trim(line).empty()) {
      units.push_back(ParseUnitLine(line));
    }
  }
  return units;
}

std::map<std::string, std::string> ParseUnitFiles(const std::string& output) {
  std::map<std::string, std::string> files;
  if (const std::optional<Json> list = ParseList(output)) {
    for (const Json& row : *list) {
      files[RequireText(row, "unit_file")] = TextIn(row, "state");
    }
    return files;
  }
  for (const std::string_view line : SplitLines(output)) {
    if (!Trim(line).empty()) {
      const auto words = RequireWords(line, 2);
      files[std::string(words[0])] = words[1];
    }
  }
  return files;
}

std::vector<Timer> ParseTimers(const std::string& output) {
  std::vector<Timer> timers;
  if (const std::optional<Json> list = ParseList(output)) {
    for (const Json& row : *list) {
      timers.push_back({RequireText(row, "unit"), TextIn(row, "activates"), TimeIn(row, "next"),
                        TimeIn(row, "last")});
    }
    return timers;
  }
  for (const std::string_view line : SplitLines(output)) {
    if (!Trim(line).empty()) {
      timers.push_back(TimerLine(line).Parse());
    }
  }
  return timers;
}

std::vector<UnitProperties> ParseProperties(const std::string& output) {
  std::vector<UnitProperties> units;
  bool isNew = true;
  for (const std::string_view line : SplitLines(output)) {
    const std::size_t equals = line.find('=');
    if (line.empty()) {
      isNew = true;
      continue;
    }
    if (equals == std::string_view::npos) {
      Refuse(line);
    }
    if (isNew) {
      units.emplace_back();
      isNew = false;
    }
    units.back().emplace(line.substr(0, equals), line.substr(equals + 1));
  }
  return units;
}

}  // namespace Kestrel::Host
