// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace Kestrel::Host {

// How urgent a line of a log is, as in syslog(3): from 0, emergency, to 7, debug.
constexpr int kInfoLevel = 6;
constexpr int kLowestLevel = 7;

/// What `ParseLevel` reads, for messages.
extern const char* const kLevelForms;

/// The word for a level from 0 to 7: emerg, alert, crit, err, warning, notice, info, debug.
const char* LevelName(int level);

/// The level that a user names: a digit from 0 to 7, or a word as above or spelled as people do
/// (error, warn, critical), in either case. Nothing for other strings.
std::optional<int> ParseLevel(std::string_view text);

/// The priority before the text of a message, such as "<30>", and its length.
struct LinePriority {
  int level;
  int facility;
  std::size_t size;
};
std::optional<LinePriority> ReadPriority(std::string_view line);

/// The level that a line of a file shows: its priority, else the most urgent level that one of its
/// words names, else kInfoLevel. No more than a guess: a file does not keep the level.
int GuessLevel(std::string_view line);

}  // namespace Kestrel::Host
