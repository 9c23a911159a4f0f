// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/EscapedText.h"
#include "vexil/formats/ExactFormat.h"
#include "vexil/formats/LinePrinter.h"

// The format "tsv": cells are separated by tabs, lines end with LF. Tab, LF, CR and backslash in a
// cell become \t, \n, \r and \\, so that a reader can split lines and cells without a parser.

namespace Kestrel::Formats {

namespace {

struct TsvRules {
  template <typename Bytes>
  static constexpr auto Stops(Bytes bytes) {
    return (bytes == '\t') | (bytes == '\n') | (bytes == '\r') | (bytes == '\\') | (bytes < 0);
  }
  static bool IsCopied(char32_t /*character*/) { return true; }
  static void Replace(char32_t character, TextBuffer& out) {
    out.Append('\\');
    out.Append(character == '\t' ? 't' : character == '\n' ? 'n' : character == '\r' ? 'r' : '\\');
  }
};

struct TsvSyntax {
  static constexpr char kSeparator = '\t';
  static constexpr std::string_view kLineEnd = "\n";

  struct Ordinary {
    template <typename Bytes>
    static constexpr auto Stops(Bytes bytes) {
      return (bytes < 0x20) | (bytes == '\\');
    }
  };

  static void Text(std::string_view text, bool /*isAlone*/, TextBuffer& out) {
    AppendEscaped<TsvRules>(text, out);
  }
};

void Print(const Selection& selection, const FormatOptions& options, TextBuffer& out) {
  LinePrinter<TsvSyntax>(selection, out).Print(options.hasHeader);
}

}  // namespace

const ExactFormat kTsvFormat = {
    "tsv", "Print lines of values that are separated by tabs.", true, {&kHeaderKey}, Print};

}  // namespace Kestrel::Formats
