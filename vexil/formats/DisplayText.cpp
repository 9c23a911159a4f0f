// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/DisplayText.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "vexil/formats/EscapedText.h"
#include "vexil/formats/Utf8.h"
#include "vexil/formats/WidthTable.h"

namespace Kestrel::Formats {

namespace {

constexpr char32_t kZeroWidthJoiner = 0x200d;
constexpr char32_t kEmojiSelector = 0xfe0f;

// Stops at bytes that are not printable ASCII characters. Bytes are signed, so those from 0x80 on
// are below 0x20.
struct PrintableAscii {
  template <typename Bytes>
  static constexpr auto Stops(Bytes bytes) {
    return (bytes < 0x20) | (bytes == 0x7f);
  }
};

bool IsAscii(std::string_view text) { return !AnyStop<PrintableAscii>(text); }

// Whether the character is an emoji, or in a range with symbols that can be drawn as emoji.
bool IsPictograph(char32_t code) {
  return (code >= 0x2190 && code < 0x2c00) || (code >= 0x1f000 && code < 0x20000);
}

// Two regional indicators form a flag of two columns, but some terminals draw two columns for each.
bool IsRegionalIndicator(char32_t code) { return code >= 0x1f1e6 && code <= 0x1f1ff; }

std::string EscapeByte(char byte) { return "\\x" + Hex(static_cast<unsigned char>(byte), 2); }

std::string EscapeCharacter(char32_t code) {
  switch (code) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      break;
  }
  if (code < 0x80) {
    return EscapeByte(static_cast<char>(code));
  }
  return "\\u{" + Hex(code, 1) + "}";
}

/// What is shown for one character, or for a byte that belongs to none.
struct Piece {
  std::string text;
  TextWidth width;
  char32_t code = 0;
  bool isEscape = false;
};

Piece MakeEscape(std::string text, char32_t code) {
  const std::size_t size = text.size();
  return {std::move(text), {size, size}, code, true};
}

/// Splits a string into pieces, beginning at its front.
class PieceReader {
 public:
  explicit PieceReader(std::string_view text) : rest_(text) {}

  bool IsAtEnd() const { return rest_.empty(); }

  Piece Next() {
    const Character character = FirstCharacter(rest_);
    if (character.size == 0) {
      Piece piece = MakeEscape(EscapeByte(rest_[0]), 0);
      rest_.remove_prefix(1);
      return Remember(std::move(piece));
    }
    const WidthClass widthClass = WidthClassOf(character.code);
    Piece piece = widthClass == WidthClass::Hidden
                      ? MakeEscape(EscapeCharacter(character.code), character.code)
                      : Piece{std::string(rest_.substr(0, character.size)),
                              WidthOf(character.code, widthClass), character.code};
    rest_.remove_prefix(character.size);
    return Remember(std::move(piece));
  }

 private:
  TextWidth WidthOf(char32_t code, WidthClass widthClass) const {
    // Some terminals draw a narrow symbol as a wide emoji if this character follows it.
    if (code == kEmojiSelector) {
      return {0, isAfterNarrow_ ? 1U : 0U};
    }
    const auto width = static_cast<std::size_t>(widthClass);
    if (isAfterJoiner_ && IsPictograph(code)) {
      return {0, width};
    }
    return {width, IsRegionalIndicator(code) ? 2 : width};
  }

  Piece Remember(Piece piece) {
    isAfterJoiner_ = piece.code == kZeroWidthJoiner && isAfterPictograph_;
    if (piece.isEscape || piece.width.max > 0) {
      isAfterPictograph_ =
          !piece.isEscape && (IsPictograph(piece.code) || piece.code == kEmojiSelector);
      // An escape ends with a narrow character.
      isAfterNarrow_ = piece.isEscape || (piece.width.max == 1 && piece.code != kEmojiSelector);
    }
    return piece;
  }

  std::string_view rest_;
  bool isAfterNarrow_ = true;  // The string may follow a space.
  bool isAfterPictograph_ = false;
  bool isAfterJoiner_ = false;
};

/// Collects pieces in lines.
class LineBreaker {
 public:
  LineBreaker(std::size_t maxWidth, bool marksEscapes)
      : maxWidth_(maxWidth), marksEscapes_(marksEscapes) {}

  void Add(Piece piece) {
    if (piece.text == " ") {
      return AddSpace();
    }
    if (isAfterWide_ && piece.width.usual > 0) {
      breakEnd_ = wordEnd_;
      breakStart_ = End();
    }
    isSkippingSpaces_ = false;
    if (Overflows(piece) && breakEnd_.bytes > 0) {
      BreakLine();
    }
    if (Overflows(piece)) {
      EndLine();
    }
    if (line_.text.empty() && piece.width.usual == 0 && IsPictograph(piece.code)) {
      piece.width.usual = piece.width.max;  // there is nothing on this line that it is joined to
    }
    piece.width.max > maxWidth_ ? AddInParts(piece) : Append(piece);
  }

  std::vector<DisplayLine> Finish() {
    if (lines_.empty() || wordEnd_.bytes > 0) {
      EndLine();
    }
    return std::move(lines_);
  }

 private:
  /// A place in the line.
  struct Place {
    std::size_t bytes = 0;
    TextWidth width;
  };

  Place End() const { return {line_.text.size(), line_.width}; }

  bool Overflows(const Piece& piece) const {
    return !line_.text.empty() && line_.width.max + piece.width.max > maxWidth_;
  }

  void AddSpace() {
    isAfterWide_ = false;
    if (isSkippingSpaces_) {
      return;
    }
    if (line_.width.max + 1 > maxWidth_) {
      EndLine();
      isSkippingSpaces_ = true;
      return;
    }
    line_.text += ' ';
    line_.width += {1, 1};
    breakEnd_ = wordEnd_;
    breakStart_ = End();
  }

  void Append(const Piece& piece) {
    const bool isMarked = piece.isEscape && marksEscapes_;
    line_.text += isMarked ? kReverseOn : "";
    line_.text += piece.text;
    line_.text += isMarked ? kReverseOff : "";
    line_.width += piece.width;
    wordEnd_ = End();
    isAfterWide_ =
        !piece.isEscape && (piece.width.usual == 2 || (isAfterWide_ && piece.width.usual == 0));
  }

  // Adds a piece for which no line has room. A wide character is shown as its escape; an escape is
  // broken where a line is full.
  void AddInParts(const Piece& piece) {
    for (const char part : piece.isEscape ? piece.text : EscapeCharacter(piece.code)) {
      if (line_.width.max + 1 > maxWidth_) {
        EndLine();
      }
      Append(MakeEscape(std::string(1, part), static_cast<unsigned char>(part)));
    }
  }

  /// Ends the line at the last place where it may be broken, and begins the next line with the
  /// rest.
  void BreakLine() {
    DisplayLine next;
    next.text = line_.text.substr(breakStart_.bytes);
    next.width = {line_.width.usual - breakStart_.width.usual,
                  line_.width.max - breakStart_.width.max};
    wordEnd_ = breakEnd_;
    EndLine();
    line_ = std::move(next);
    wordEnd_ = End();
  }

  /// Ends the line after its last word.
  void EndLine() {
    line_.text.erase(wordEnd_.bytes);
    line_.width = wordEnd_.width;
    lines_.push_back(std::move(line_));
    line_ = {};
    wordEnd_ = breakEnd_ = breakStart_ = {};
    isAfterWide_ = false;
  }

  std::size_t maxWidth_;
  bool marksEscapes_;
  std::vector<DisplayLine> lines_;
  DisplayLine line_;
  Place wordEnd_;     // the end of the last character that is not a space
  Place breakEnd_;    // where the line may be broken; its beginning if there is no such place
  Place breakStart_;  // where the next line then begins
  bool isAfterWide_ = false;
  bool isSkippingSpaces_ = false;  // after a line that was broken
};

}  // namespace

WidthClass WidthClassOf(char32_t character) {
  if (character >= 0x20 && character < 0x7f) {
    return WidthClass::Narrow;
  }
  const std::uint32_t* const end = kWidthRuns + kWidthRunCount;
  const std::uint32_t* const next =
      std::upper_bound(kWidthRuns, end, static_cast<std::uint32_t>(character) << 2U | 3U);
  return static_cast<WidthClass>(next[-1] & 3U);
}

TextWidth MeasureText(std::string_view text) {
  if (IsAscii(text)) {
    return {text.size(), text.size()};
  }
  TextWidth width;
  for (PieceReader reader(text); !reader.IsAtEnd();) {
    width += reader.Next().width;
  }
  return width;
}

std::vector<DisplayLine> BreakText(std::string_view text, std::size_t maxWidth, bool marksEscapes) {
  if (text.size() <= maxWidth && IsAscii(text)) {
    const std::string_view shown = text.substr(0, text.find_last_not_of(' ') + 1);
    return {{std::string(shown), {shown.size(), shown.size()}}};
  }
  LineBreaker breaker(maxWidth, marksEscapes);
  for (PieceReader reader(text); !reader.IsAtEnd();) {
    breaker.Add(reader.Next());
  }
  return breaker.Finish();
}

}  // namespace Kestrel::Formats
