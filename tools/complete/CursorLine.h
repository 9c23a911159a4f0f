// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "vexil/CommandLine.h"
#include "vexil/Words.h"

namespace Kestrel::Complete {

/// The part of a command line that a word belongs to.
enum class Place {
  /// Before the path: an option of the dispatcher, or the first word of the path.
  BeforePath,
  /// After the first word of the path.
  Path,
  /// After an option that follows the path.
  AfterPath,
  /// After a word that belongs neither to the path nor to an option.
  Nowhere
};

/// A command line and the word in it that is being completed.
struct CursorLine {
  Place place = Place::BeforePath;
  /// The word up to the cursor.
  std::string word;
  /// The start of the word before its value, such as "--sort="; empty if the whole word is the
  /// value.
  std::string beforeValue;
  /// The name of the option whose value is being completed; nothing if there is none. The value is
  /// the word without `beforeValue`.
  std::optional<std::string> option;
  /// Whether the word before this one is an option without a value.
  bool followsOption = false;
  /// The words of the path before the cursor.
  Vexil::Words path;
  /// The whole line; the word at the cursor is part of it only if it is or contains the value of an
  /// option. Includes the options after the cursor, and the path of the command even if the cursor
  /// is before it.
  Vexil::CommandLine given;
  /// The dispatcher options without the one at the cursor.
  std::vector<Vexil::TypedOption> settledOptions;
  /// Whether the line contains only the tool's name and the word.
  bool isOnlyWord = false;
  /// Whether the line is a command line of vexil-explain, which accepts everything that the tool
  /// accepts except --input, and has two options of its own.
  bool isExplained = false;
  /// Whether the word is the first argument of such a line. Only the first can be one of the two
  /// options.
  bool isFirstOfExplainedLine = false;

  /// Returns the part of the word that is a value.
  std::string GetValue() const { return word.substr(beforeValue.size()); }
};

/// The options that only vexil-explain has, and their descriptions.
inline constexpr std::array<std::pair<const char*, const char*>, 2> kExplainOptions = {
    {{"--shell-text", "Only print the text that the shell would get."},
     {"--shell-input", "Only print the standard input of the shell."}}};

/// Parses the words of a line; the first one is the name of the tool or of vexil-explain. `index`
/// is the index of the word at the cursor, from 1 to the number of words. If it is the number of
/// words, the cursor is after the last word.
CursorLine ReadCursorLine(const Vexil::Words& words, std::size_t index);

}  // namespace Kestrel::Complete
