// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// How a text too long for its columns is broken:
//
// Words end at single blanks, so two blanks in a row hold an empty word between them; the text's
// last blank ends a word and begins none. Every word costs its bytes and one column more. A line
// takes words while their cost is within the columns available; the first word of the text is
// broken off too when it does not fit, which leaves an empty first line behind. Since the words of
// one line stand in the text as they are printed, a line is found and written as a single run.

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
  // A margin of no columns still takes one blank.
  writer.Repeat(' ', static_cast<std::size_t>(std::max(rules.indent, 1)));
}

void BreakLine(const FitRules& rules, TextWriter& writer) {
  writer.Append(rules.wrapChar == 0 ? ' ' : rules.wrapChar);
  writer.Append('\n');
  WriteMargin(rules, writer);
}

/// The length of the line that `text` begins with: as many words as fit, but at least one.
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

/// Fits a text whose line breaks, if any, are bytes like others.
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
  writer.HandOn();
}

}  // namespace Kestrel::AutoCli
