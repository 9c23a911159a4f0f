// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// The columns of a schedule: minute, hour, day of the month, month and day of the week.
constexpr std::size_t kCrontabColumns = 5;

/// A command that cron starts at set times, or a line of a crontab that cron does not understand.
struct CrontabEntry {
  std::string user;      ///< Empty if a broken line does not name it.
  std::string schedule;  ///< As written: the columns separated by spaces, or a word such as @daily.
  /// Empty for @reboot and for an unknown word, and in a broken line from the first broken column
  /// on.
  std::array<std::string, kCrontabColumns> columns;
  std::string command;                   ///< As written; the whole line if it is broken.
  std::string problem;                   ///< The error in the line; empty if there is none.
  std::string ignored;                   ///< Why cron ignores the file; empty if it reads it.
  std::vector<std::string> environment;  ///< The settings above the line, as NAME=VALUE.
  std::string file;
  long line = 0;
};

/// Parses the content of a crontab that belongs to `user`. If `user` is empty, each line has a
/// column with the user.
std::vector<CrontabEntry> ParseCrontab(std::string_view text, const std::string& file,
                                       const std::string& user);

// The following functions read the crontabs below `root`, those in one folder in the order of their
// names. A file or folder that does not exist has no entries. Each function throws KestrelException
// if a file or folder cannot be read. Cron ignores a file that others could have written; its
// entries are returned with the reason in `ignored`. The owner of the folder `root` counts as the
// superuser.

/// Reads the users' crontabs in /var/spool/cron/crontabs.
std::vector<CrontabEntry> ReadUserCrontabs(const std::string& root);

/// Reads /etc/crontab, then the files in /etc/cron.d whose names cron accepts.
std::vector<CrontabEntry> ReadSystemCrontabs(const std::string& root);

}  // namespace Kestrel::Host
