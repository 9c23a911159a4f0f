// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A line of a crontab is empty, a comment, a setting or an entry:
//
//   # comment
//   NAME = "value"
//   minute hour day month weekday [user] command
//   @word [user] command
//
// A column is a list, such as 1,10-20, of numbers, ranges and *, each optionally with a step as in
// */5; months and days of the week may be names. The last line needs a line feed too.

#include "plugins/host/system/Crontabs.h"

#include <kestrel/KestrelException.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <optional>
#include <utility>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/system/Accounts.h"

namespace Kestrel::Host {
namespace {

constexpr char kUserFolder[] = "/var/spool/cron/crontabs";
constexpr char kSystemFile[] = "/etc/crontab";
constexpr char kSystemFolder[] = "/etc/cron.d";

constexpr std::string_view kBlanks = " \t";

constexpr std::string_view kMonths[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                        "jul", "aug", "sep", "oct", "nov", "dec"};
constexpr std::string_view kWeekdays[] = {"sun", "mon", "tue", "wed", "thu", "fri", "sat"};

// What a column may contain.
struct Column {
  const char* name;
  long first;
  long last;
  const std::string_view* words;  // the names of the numbers from `first` on
  std::size_t wordCount;
};

constexpr Column kColumns[kCrontabColumns] = {
    {"minute", 0, 59, nullptr, 0},
    {"hour", 0, 23, nullptr, 0},
    {"day", 1, 31, nullptr, 0},
    {"month", 1, 12, kMonths, std::size(kMonths)},
    {"weekday", 0, 7, kWeekdays, std::size(kWeekdays)},
};

struct ScheduleWord {
  std::string_view word;
  std::array<const char*, kCrontabColumns> columns;
};

constexpr ScheduleWord kScheduleWords[] = {
    {"@reboot", {"", "", "", "", ""}},        {"@yearly", {"0", "0", "1", "1", "*"}},
    {"@annually", {"0", "0", "1", "1", "*"}}, {"@monthly", {"0", "0", "1", "*", "*"}},
    {"@weekly", {"0", "0", "*", "*", "0"}},   {"@daily", {"0", "0", "*", "*", "*"}},
    {"@midnight", {"0", "0", "*", "*", "*"}}, {"@hourly", {"0", "*", "*", "*", "*"}},
};

std::string_view SkipBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

// Removes the first word and the space after it from `text`, and returns the word.
std::string_view TakeWord(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
  const std::string_view word = text.substr(0, end);
  text = SkipBlanks(text.substr(end));
  return word;
}

bool IsDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::optional<long> ParseValue(std::string_view text, const Column& column) {
  const std::string word = LowerCase(text);
  for (std::size_t i = 0; i < column.wordCount; ++i) {
    if (word == column.words[i]) {
      return column.first + static_cast<long>(i);
    }
  }
  const auto number = IsDigits(text) ? ParseNumber(text) : std::nullopt;
  return number && *number >= column.first && *number <= column.last ? number : std::nullopt;
}

// Whether the text is "*", "3" or "1-5", optionally followed by a step as in "/2".
bool IsRange(std::string_view text, const Column& column) {
  const std::size_t slash = text.find('/');
  if (slash != std::string_view::npos) {
    const std::string_view step = text.substr(slash + 1);
    if (!IsDigits(step) || step.find_first_not_of('0') == std::string_view::npos) {
      return false;
    }
    text = text.substr(0, slash);
  }
  if (text == "*") {
    return true;
  }
  const std::size_t dash = text.find('-');
  const auto first = ParseValue(text.substr(0, dash), column);
  const auto last =
      dash == std::string_view::npos ? first : ParseValue(text.substr(dash + 1), column);
  return first && last && *first <= *last;
}

bool IsColumn(std::string_view text, const Column& column) {
  const auto ranges = Split(text, ',');
  return std::all_of(ranges.begin(), ranges.end(),
                     [&column](std::string_view range) { return IsRange(range, column); });
}

// Removes the quoted string at the start of `text`, and returns what is within the quotes. If there
// is none, removes and returns the text before the first of the characters `ends`.
std::string_view TakeQuoted(std::string_view& text, std::string_view ends) {
  if (!text.empty() && (text.front() == '"' || text.front() == '\'')) {
    const std::size_t end = text.find(text.front(), 1);
    if (end != std::string_view::npos) {
      const std::string_view content = text.substr(1, end - 1);
      text.remove_prefix(end + 1);
      return content;
    }
  }
  const std::size_t end = std::min(text.find_first_of(ends), text.size());
  const std::string_view content = text.substr(0, end);
  text.remove_prefix(end);
  return content;
}

bool IsSettingName(std::string_view name) {
  const auto isLetter = [](char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || letter == '_';
  };
  return !name.empty() && isLetter(name[0]) && std::all_of(name.begin(), name.end(), [&](char c) {
    return isLetter(c) || (c >= '0' && c <= '9');
  });
}

// Returns the name and the value, or nothing if the line is not a setting.
std::optional<std::pair<std::string, std::string>> ParseSetting(std::string_view line) {
  const std::string_view name = TakeQuoted(line, " \t=");
  line = SkipBlanks(line);
  if (!IsSettingName(name) || line.empty() || line.front() != '=') {
    return std::nullopt;
  }
  std::string_view value = Trim(line.substr(1));
  std::string_view rest = value;
  const std::string_view content = TakeQuoted(rest, "");
  value = rest.empty() ? content : value;
  return std::make_pair(std::string(name), std::string(value));
}

class CrontabParser {
 public:
  CrontabParser(const std::string& file, const std::string& user) : file_(file), user_(user) {}

  std::vector<CrontabEntry> Parse(std::string_view text) {
    for (const std::string_view line : SplitLines(text)) {
      ++number_;
      const bool isCut = line.data() + line.size() == text.data() + text.size();
      ParseLine(SkipBlanks(line), isCut);
    }
    return std::move(entries_);
  }

 private:
  // `isCut` means that no line feed ends the line.
  void ParseLine(std::string_view line, bool isCut) {
    if (Trim(line).empty() || line.front() == '#') {
      return;
    }
    if (const auto setting = ParseSetting(line)) {
      settings_[setting->first] = setting->second;
      return;
    }
    CrontabEntry entry;
    entry.user = user_;
    entry.file = file_;
    entry.line = number_;
    for (const auto& [name, value] : settings_) {
      entry.environment.push_back(name + "=" + value);
    }
    entry.problem = ParseEntry(line, entry);
    if (entry.problem.empty() && isCut) {
      entry.problem = "the last line has no line feed";
    }
    if (!entry.problem.empty()) {
      entry.command = line;
    }
    entries_.push_back(std::move(entry));
  }

  // Returns the error in the line; an empty string if there is none.
  std::string ParseEntry(std::string_view line, CrontabEntry& entry) const {
    std::string problem =
        line.front() == '@' ? TakeScheduleWord(line, entry) : TakeColumns(line, entry);
    if (!problem.empty()) {
      return problem;
    }
    if (user_.empty()) {
      entry.user = TakeWord(line);
    }
    entry.command = line;
    return line.empty() ? "there is no command" : "";
  }

  static std::string TakeScheduleWord(std::string_view& line, CrontabEntry& entry) {
    entry.schedule = TakeWord(line);
    for (const ScheduleWord& known : kScheduleWords) {
      if (known.word == entry.schedule) {
        std::copy(known.columns.begin(), known.columns.end(), entry.columns.begin());
        return {};
      }
    }
    return "there is no schedule " + entry.schedule;
  }

  static std::string TakeColumns(std::string_view& line, CrontabEntry& entry) {
    for (std::size_t i = 0; i < kCrontabColumns; ++i) {
      const std::string_view word = TakeWord(line);
      if (word.empty()) {
        return std::string("there is no ") + kColumns[i].name;
      }
      if (!IsColumn(word, kColumns[i])) {
        return "'" + std::string(word) + "' is not a valid " + kColumns[i].name;
      }
      entry.columns[i] = word;
      entry.schedule += (i == 0 ? "" : " ") + entry.columns[i];
    }
    return {};
  }

  const std::string& file_;
  const std::string& user_;
  long number_ = 0;
  std::map<std::string, std::string> settings_;
  std::vector<CrontabEntry> entries_;
};

// Calls stat or lstat; returns nothing if there is no file.
std::optional<struct stat> FileStatus(int (*call)(const char*, struct stat*),
                                      const std::string& path) {
  struct stat status = {};
  if (call(path.c_str(), &status) == 0) {
    return status;
  }
  if (!IsAbsence(errno)) {
    throw KestrelException("Unable to read " + path + ": " + std::strerror(errno));
  }
  return std::nullopt;
}

std::optional<uid_t> OwnerOf(const std::string& path) {
  const auto status = FileStatus(::lstat, path);
  return status ? std::optional<uid_t>(status->st_uid) : std::nullopt;
}

bool IsOwnedBy(const struct stat& status, const std::string& user) {
  const auto account = FindAccount(user);
  return account && status.st_uid == account->id;
}

// Returns why cron ignores the file, whose status is `status`; an empty string if cron reads it.
// `user` is empty for a file of the system; a link to such a file must belong to root, too.
std::string WhyIgnored(const std::string& root, const std::string& path, const struct stat& status,
                       const std::string& user) {
  const auto superuser = OwnerOf(root + "/");
  const bool isTrusted = user.empty() ? status.st_uid == superuser && OwnerOf(path) == superuser
                                      : status.st_uid == superuser || IsOwnedBy(status, user);
  if (!isTrusted) {
    return "cron ignores the file: its owner is not root" + (user.empty() ? "" : " or " + user);
  }
  const bool isWritable = (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
  return isWritable ? "cron ignores the file: others than its owner can write to it" : "";
}

void AddCrontab(const std::string& root, const std::string& file, const std::string& user,
                std::vector<CrontabEntry>& entries) {
  const std::string path = root + file;
  const auto status = FileStatus(::stat, path);
  const bool isRegular = status && S_ISREG(status->st_mode);
  if (const auto text = isRegular ? ReadOptionalFile(path) : std::nullopt) {
    const std::string ignored = WhyIgnored(root, path, *status, user);
    for (CrontabEntry& entry : ParseCrontab(*text, file, user)) {
      entry.ignored = ignored;
      entries.push_back(std::move(entry));
    }
  }
}

std::vector<std::string> NamesIn(const std::string& folder) {
  return ListOptionalFolder(folder).value_or(std::vector<std::string>());
}

// Whether cron reads a file of this name. It skips hidden files, and copies such as those that
// package tools leave.
bool IsAcceptedName(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
           (letter >= '0' && letter <= '9') || letter == '_' || letter == '-';
  });
}

}  // namespace

std::vector<CrontabEntry> ParseCrontab(std::string_view text, const std::string& file,
                                       const std::string& user) {
  return CrontabParser(file, user).Parse(text);
}

std::vector<CrontabEntry> ReadUserCrontabs(const std::string& root) {
  std::vector<CrontabEntry> entries;
  for (const std::string& user : NamesIn(root + kUserFolder)) {
    if (user.front() != '.') {
      AddCrontab(root, std::string(kUserFolder) + "/" + user, user, entries);
    }
  }
  return entries;
}

std::vector<CrontabEntry> ReadSystemCrontabs(const std::string& root) {
  std::vector<CrontabEntry> entries;
  AddCrontab(root, kSystemFile, "", entries);
  for (const std::string& name : NamesIn(root + kSystemFolder)) {
    if (IsAcceptedName(name)) {
      AddCrontab(root, std::string(kSystemFolder) + "/" + name, "", entries);
    }
  }
  return entries;
}

}  // namespace Kestrel::Host
