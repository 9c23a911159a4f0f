// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "vexil/CommandLine.h"
#include "vexil/Words.h"

namespace Kestrel::Complete {

/// Where on the road of a command line a word is.
enum class Place {
  /// Before the path: an option of the dispatcher, or the first word of the path.
  BeforePath,
  /// After the first word of the path.
  Path,
  /// After an option that follows the path.
  AfterPath,
  /// After a word that belongs to no option.
  Nowhere
};

/// A command line and the word in it that is being completed.
struct CursorLine {
  Place place = Place::BeforePath;
  /// The word up to the cursor.
  std::string word;
  /// What precedes the part of the word that is a value: "--sort=", or nothing.
  std::string beforeValue;
  /// The name of the option that the word, or its end, is the value of.
  std::optional<std::string> option;
  /// Whether an option would take any word here as its value.
  bool followsOption = false;
  /// The words of the path before the cursor.
  Vexil::Words path;
  /// The whole line without an unfinished option at the cursor: what is given already, also after
  /// the cursor, and the path of the command even if the cursor is before it.
  Vexil::CommandLine given;
  /// The dispatcher options without the one at the cursor.
  std::vector<Vexil::TypedOption> settledOptions;
  /// Whether nothing but the tool's name and the word is in the line.
  bool isOnlyWord = false;

  /// The part of the word that is a value.
  std::string GetValue() const { return word.substr(beforeValue.size()); }
};

/// Reads the words of a line, the first of which is the tool's name. `index` is at least 1 and at
/// most the number of words; in the latter case the cursor is after the last word.
CursorLine ReadCursorLine(const Vexil::Words& words, std::size_t index);

}  // namespace Kestrel::Complete
