// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace Kestrel::Host {

// The urgency of a line of a log, as in syslog(3): from 0, emergency, to 7, debug.
constexpr int kInfoLevel = 6;
constexpr int kLowestLevel = 7;

/// Lists the main values that `ParseLevel` accepts, for messages.
extern const char* const kLevelForms;

/// Returns the word for a level from 0 to 7: emerg, alert, crit, err, warning, notice, info, debug.
const char* LevelName(int level);

/// Parses a level given by the user: a digit from 0 to 7, a word of LevelName, or another common
/// word, such as error, warn or critical, in upper or lower case. Returns nothing for other
/// strings.
std::optional<int> ParseLevel(std::string_view text);

/// The priority before the text of a message, such as "<30>", and its length.
struct LinePriority {
  int level;
  int facility;
  std::size_t size;
};
std::optional<LinePriority> ReadPriority(std::string_view line);

/// Returns the level that a line of a file indicates: that of its priority, otherwise the most
/// urgent level that one of its words indicates, otherwise kInfoLevel. This is a guess, because
/// most log files do not store levels.
int GuessLevel(std::string_view line);

}  // namespace Kestrel::Host
