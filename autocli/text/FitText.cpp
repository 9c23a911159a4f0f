// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// How a string that is too long for its columns is broken into lines:
//
// A single space separates two words, so there is an empty word between two adjacent spaces. A
// space at the end of the string ends the last word and begins none. Each word takes one column
// more than it has bytes. A line takes words while they fit into the available columns. If the
// first word of the string does not fit, it begins on the second line, and the first line is empty.
// The words of a line are printed as they are in the string, so each line is found and written as
// one run of bytes.

#include "autocli/text/FitText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "autocli/text/TextPieces.h"
#include "autocli/text/TextWriter.h"
#include "kestrel/autocli/Util.h"

namespace Kestrel::AutoCli {

namespace {

void WriteMargin(const FitRules& rules, TextWriter& writer) {
  // A margin of 0 columns still takes one space.
  writer.Repeat(' ', static_cast<std::size_t>(std::max(rules.indent, 1)));
}

void BreakLine(const FitRules& rules, TextWriter& writer) {
  writer.Append(rules.wrapChar == 0 ? ' ' : rules.wrapChar);
  writer.Append('\n');
  WriteMargin(rules, writer);
}

/// Returns the length of the first line of `text`: as many words as fit, but at least one.
std::size_t FindLineLength(std::string_view text, std::size_t available) {
  if (text.size() < available) {
    return text.size();
  }
  const std::size_t lastFitting = text.substr(0, available).rfind(' ');
  if (lastFitting != std::string_view::npos) {
    return lastFitting;
  }
  return std::min(text.find(' ', available), text.size());
}

void WriteBroken(std::string_view text, std::size_t available, const FitRules& rules,
                 TextWriter& writer) {
  if (text.back() == ' ') {
    text.remove_suffix(1);
  }
  std::size_t length = FindLineLength(text, available);
  if (length >= available) {
    BreakLine(rules, writer);
  }
  while (!writer.HasFailed()) {
    writer.Append(text.substr(0, length));
    if (length == text.size()) {
      return;
    }
    BreakLine(rules, writer);
    text.remove_prefix(length + 1);
    length = FindLineLength(text, available);
  }
}

/// Fits `text`, in which a line feed is a byte like any other.
void FitLine(std::string_view text, const FitRules& rules, TextWriter& writer) {
  if (!rules.skipFirstIndent) {
    WriteMargin(rules, writer);
  }
  const std::int64_t available = std::int64_t{rules.width} - rules.indent;
  if (available <= 0 || text.size() <= static_cast<std::size_t>(available)) {
    writer.Append(text);
  } else {
    WriteBroken(text, static_cast<std::size_t>(available), rules, writer);
  }
  if (rules.endLine) {
    writer.Append('\n');
  }
}

}  // namespace

void FitText(std::string_view text, const FitRules& rules, TextWriter& writer) {
  if (!rules.splitLines) {
    FitLine(text, rules, writer);
    return;
  }
  FitRules lineRules = rules;
  bool isFirst = true;
  TextPieces lines(text, '\n');
  for (std::string_view line; lines.Next(line) && !writer.HasFailed(); isFirst = false) {
    if (!isFirst) {
      lineRules.skipFirstIndent = false;
      if (!rules.endLine) {
        writer.Append('\n');
      }
    }
    FitLine(line, lineRules, writer);
  }
}

void AutoCli_FitString(const int& indent, const int& width, const std::string& text,
                       bool skipFirstIndent, std::ostream& out, bool endLine, char wrapChar,
                       bool splitLines) {
  TextWriter writer(out);
  FitText(text, {indent, width, skipFirstIndent, endLine, wrapChar, splitLines}, writer);
  writer.Drain();
}

}  // namespace Kestrel::AutoCli
