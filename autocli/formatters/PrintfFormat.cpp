// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// format     := { text | "%%" | conversion }
// conversion := "%" [ "1$" ] { flag } [ number ] [ "." [ number ] ] [ modifier ] letter
// flag       := "-" | "+" | " " | "#" | "0" | "'" | "I"
// modifier   := "hh" | "h" | "l" | "ll" | "q" | "L" | "j" | "z" | "t"
// letter     := "d" | "i" | "o" | "u" | "x" | "X" | "c" | "s" | "m"
//
// "s" has no modifier; "m" has neither a modifier nor "1$". All conversions except "m" print the
// value. A format has either at most one of these, without "1$", or any number of these, all with
// "1$".
//
// Each conversion is printed separately, with the argument cast to the type that it reads. Because
// the output is cut at a limit, width and precision are first reduced to what that limit can show:
// more spaces and zeros would cost time without changing the output.

#include "autocli/formatters/PrintfFormat.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <utility>

#include "autocli/formatters/ValueView.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"

namespace Kestrel::AutoCli {

namespace {

constexpr std::size_t kSlack = 64;
constexpr long kTooLarge = static_cast<long>(INT_MAX) + 1;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsOneOf(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

/// The argument of a conversion: `text` unless that is null, else `number`.
struct Argument {
  long number = 0;
  const char* text = nullptr;
};

int PrintTo(char* buffer, std::size_t size, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"  // Assembled here from checked parts.
  const int length = std::vsnprintf(buffer, size, format, arguments);
#pragma GCC diagnostic pop
  va_end(arguments);
  return length;
}

int PrintSigned(char* buffer, std::size_t size, const char* format, const std::string& modifier,
                long number) {
  if (modifier.empty() || modifier[0] == 'h') {
    return PrintTo(buffer, size, format, static_cast<int>(number));
  }
  return PrintTo(buffer, size, format, number);
}

int PrintUnsigned(char* buffer, std::size_t size, const char* format, const std::string& modifier,
                  long number) {
  if (modifier.empty() || modifier[0] == 'h') {
    return PrintTo(buffer, size, format, static_cast<unsigned int>(number));
  }
  return PrintTo(buffer, size, format, static_cast<unsigned long>(number));
}

int PrintCharacter(char* buffer, std::size_t size, const char* format, const std::string& modifier,
                   long number) {
  if (modifier == "l" || modifier == "ll" || modifier == "q" || modifier == "L") {
    return PrintTo(buffer, size, format, static_cast<std::wint_t>(number));
  }
  return PrintTo(buffer, size, format, static_cast<int>(number));
}

}  // namespace

class PrintfFormat::Parser {
 public:
  explicit Parser(std::string_view format) : rest_(format) {}

  /// Parses the format into `pieces`. Returns false if the format is not supported.
  bool Parse(std::vector<Piece>& pieces) {
    Piece piece;
    while (!rest_.empty()) {
      if (!TakeLiteral(piece.literal)) {
        if (!TakeConversion(piece)) {
          return false;
        }
        pieces.push_back(std::exchange(piece, Piece()));
      }
    }
    pieces.push_back(std::move(piece));
    return plainCount_ == 0 || (plainCount_ == 1 && positionalCount_ == 0);
  }

 private:
  bool TakeLiteral(std::string& literal) {
    if (rest_.substr(0, 2) == "%%") {
      literal += '%';
      rest_.remove_prefix(2);
      return true;
    }
    const std::size_t length = std::min(rest_.find('%'), rest_.size());
    literal += rest_.substr(0, length);
    rest_.remove_prefix(length);
    return length > 0;
  }

  bool TakeConversion(Piece& piece) {
    rest_.remove_prefix(1);
    const bool isPositional = TakePosition();
    piece.flags = TakeWhile("-+ #0'I");
    piece.width = TakeNumber(-1);
    if (!rest_.empty() && rest_[0] == '.') {
      rest_.remove_prefix(1);
      piece.precision = TakeNumber(0);
    }
    piece.modifier = TakeWhile("hlqLjzt");
    if (rest_.empty()) {
      return false;
    }
    piece.conversion = rest_[0];
    rest_.remove_prefix(1);
    if (piece.conversion == 'm') {
      return !isPositional && piece.modifier.empty();
    }
    ++(isPositional ? positionalCount_ : plainCount_);
    return IsKnown(piece);
  }

  bool TakePosition() {
    if (rest_.substr(0, 2) != "1$") {
      return false;
    }
    rest_.remove_prefix(2);
    return true;
  }

  std::string TakeWhile(std::string_view set) {
    const std::size_t length = std::min(rest_.find_first_not_of(set), rest_.size());
    std::string taken(rest_.substr(0, length));
    rest_.remove_prefix(length);
    return taken;
  }

  /// Returns the number that comes next, at most kTooLarge, or `absent` if there is none.
  long TakeNumber(long absent) {
    if (rest_.empty() || !IsDigit(rest_[0])) {
      return absent;
    }
    long number = 0;
    while (!rest_.empty() && IsDigit(rest_[0])) {
      number = std::min(number * 10 + (rest_[0] - '0'), kTooLarge);
      rest_.remove_prefix(1);
    }
    return number;
  }

  static bool IsKnown(const Piece& piece) {
    if (piece.conversion == 's') {
      return piece.modifier.empty();
    }
    static constexpr std::string_view kModifiers[] = {"",  "hh", "h", "l", "ll",
                                                      "q", "L",  "j", "z", "t"};
    return IsOneOf(piece.conversion, "diouxXc") &&
           std::find(std::begin(kModifiers), std::end(kModifiers), piece.modifier) !=
               std::end(kModifiers);
  }

  std::string_view rest_;
  int plainCount_ = 0;
  int positionalCount_ = 0;
};

/// Prints one value, piece by piece.
class PrintfFormat::Printer {
 public:
  /// Appends to `text`, up to a size of `limit` bytes.
  Printer(const Argument& argument, std::size_t limit, std::string& text)
      : argument_(argument),
        textSize_(argument.text == nullptr ? 0 : static_cast<long>(std::strlen(argument.text))),
        limit_(limit),
        text_(text),
        errno_(errno) {}

  /// Appends the piece. Returns 0 or an errno value.
  int Print(const Piece& piece) {
    text_.append(piece.literal, 0, Room());
    if (piece.conversion == 0) {
      return 0;
    }
    const std::string format = MakeFormat(piece);
    const int length = PrintPiece(scratch_, sizeof scratch_, format.c_str(), piece);
    if (length < 0) {
      return errno;
    }
    const std::size_t size = std::min(static_cast<std::size_t>(length), Room());
    const std::size_t place = text_.size();
    if (size < sizeof scratch_) {
      text_.append(scratch_, size);
      return 0;
    }
    text_.resize(place + size + 1);
    PrintPiece(&text_[place], size + 1, format.c_str(), piece);
    text_.resize(place + size);
    return 0;
  }

 private:
  std::size_t Room() const { return limit_ - text_.size(); }

  /// Returns the format of the conversion, with width and precision reduced to what the remaining
  /// room can show. If the body (the printed argument without the spaces around it) is shortened,
  /// the number of spaces before it stays the same.
  std::string MakeFormat(const Piece& piece) const {
    const long visible = static_cast<long>(Room() + 1 + kSlack);
    const long body = FindBodySize(piece);
    long width = piece.width;
    long precision = piece.precision;
    if (body > visible) {
      width = width < 0 ? width : std::max(width - (body - visible), 0L);
      precision = visible;
    }
    std::string format = "%" + piece.flags;
    if (width >= 0) {
      format += std::to_string(std::min(width, 2 * visible));
    }
    if (precision >= 0) {
      format += "." + std::to_string(std::min(precision, visible));
    }
    return format + piece.modifier + piece.conversion;
  }

  /// Returns the minimum size of the body in bytes, 0 or less if it is not known.
  long FindBodySize(const Piece& piece) const {
    if (piece.conversion == 's') {
      return piece.precision < 0 ? textSize_ : std::min(textSize_, piece.precision);
    }
    return IsOneOf(piece.conversion, "diouxX") ? piece.precision : 0;
  }

  int PrintPiece(char* buffer, std::size_t size, const char* format, const Piece& piece) const {
    errno = errno_;  // "%m" prints the error that was current when printing began.
    switch (piece.conversion) {
      case 'm':
        return PrintTo(buffer, size, format);
      case 's':
        return PrintTo(buffer, size, format, argument_.text);
      case 'c':
        return PrintCharacter(buffer, size, format, piece.modifier, argument_.number);
      case 'd':
      case 'i':
        return PrintSigned(buffer, size, format, piece.modifier, argument_.number);
      default:
        return PrintUnsigned(buffer, size, format, piece.modifier, argument_.number);
    }
  }

  const Argument argument_;
  const long textSize_;
  const std::size_t limit_;
  std::string& text_;
  const int errno_;
  char scratch_[128];
};

PrintfFormat::PrintfFormat(const std::string& format) : size_(format.size()) {
  isValid_ = Parser(format.c_str()).Parse(pieces_);
}

int PrintfFormat::Print(const MetaObj::MetaObject& value, std::string& text) const {
  text.clear();
  const std::string plain = value.ToString();
  Argument argument;
  if (const auto* number = ViewAs<MetaObj::MetaInt>(&value)) {
    argument.number = number->GetValue();
  } else if (const auto* boolean = ViewAs<MetaObj::MetaBool>(&value)) {
    argument.number = boolean->GetValue() ? 1 : 0;
  } else if (const auto* string = ViewAs<MetaObj::MetaString>(&value)) {
    argument.text = string->GetValue().c_str();
  } else {
    return 0;
  }
  if (!Fits(argument.text != nullptr)) {
    return EINVAL;
  }
  if (HasOverflow()) {
    return EOVERFLOW;
  }
  Printer printer(argument, size_ + plain.size() + kSlack, text);
  for (const Piece& piece : pieces_) {
    if (const int error = printer.Print(piece); error != 0) {
      return error;
    }
  }
  text.resize(std::min(text.find('\0'), text.size()));
  return 0;
}

bool PrintfFormat::Fits(bool isText) const {
  return isValid_ && std::all_of(pieces_.begin(), pieces_.end(), [isText](const Piece& piece) {
           return piece.conversion == 0 || piece.conversion == 'm' ||
                  (piece.conversion == 's') == isText;
         });
}

bool PrintfFormat::HasOverflow() const {
  return std::any_of(pieces_.begin(), pieces_.end(), [](const Piece& piece) {
    return std::max(piece.width, piece.precision) >= kTooLarge;
  });
}

}  // namespace Kestrel::AutoCli
