// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/EscapedText.h"
#include "vexil/formats/ExactFormat.h"
#include "vexil/formats/LinePrinter.h"

// The format "csv" (RFC 4180): cells are separated by commas, lines end with CR LF. A cell is in
// quotes if it contains a comma, a quote, CR or LF, or if it is empty and alone in its line; quotes
// in it are doubled.

namespace Kestrel::Formats {

namespace {

// Stops at bytes that require quotes, and at those that are not ASCII.
struct Unquoted {
  template <typename Bytes>
  static constexpr auto Stops(Bytes bytes) {
    return (bytes == ',') | (bytes == '"') | (bytes == '\r') | (bytes == '\n') | (bytes < 0);
  }
  static bool IsCopied(char32_t /*character*/) { return true; }
};

struct Quoted {
  template <typename Bytes>
  static constexpr auto Stops(Bytes bytes) {
    return (bytes == '"') | (bytes < 0);
  }
  static bool IsCopied(char32_t /*character*/) { return true; }
  static void Replace(char32_t /*quote*/, TextBuffer& out) { out.Append("\"\""); }
};

struct CsvSyntax {
  static constexpr char kSeparator = ',';
  static constexpr std::string_view kLineEnd = "\r\n";

  struct Ordinary {
    template <typename Bytes>
    static constexpr auto Stops(Bytes bytes) {
      return (bytes < 0x20) | (bytes == ',') | (bytes == '"');
    }
  };

  static void Text(std::string_view text, bool isAlone, TextBuffer& out) {
    // Without quotes, a line with one empty cell would be an empty line, which readers skip.
    const bool mustQuote = text.empty() && isAlone;
    if (!mustQuote && CountCopied<Unquoted>(text) == text.size()) {
      return out.Append(text);
    }
    out.Append('"');
    AppendEscaped<Quoted>(text, out);
    out.Append('"');
  }
};

void Print(const Selection& selection, const FormatOptions& options, TextBuffer& out) {
  LinePrinter<CsvSyntax>(selection, out).Print(options.hasHeader);
}

}  // namespace

const ExactFormat kCsvFormat = {"csv",
                                "Print lines of values that are separated by commas (RFC 4180).",
                                true,
                                {&kHeaderKey},
                                Print};

}  // namespace Kestrel::Formats
