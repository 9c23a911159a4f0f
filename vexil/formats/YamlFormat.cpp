// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/formats/EscapedText.h"
#include "vexil/formats/ExactFormat.h"
#include "vexil/formats/TextBuffer.h"
#include "vexil/formats/ValuePrinter.h"

// The format "yaml": YAML 1.2 in block style. The fields of a structure and the elements of a list
// are on separate lines, indented by two spaces for each level; elements begin with "- ". Empty
// structures and lists are {} and []. A string has no quotes only if every reader, including
// readers of YAML 1.1, then reads the same string; otherwise it is in double quotes.

namespace Kestrel::Formats {

namespace {

constexpr std::size_t kIndentStep = 2;

// A longer name must be written as "? name" on a line before the value.
constexpr std::size_t kMaxSimpleKey = 1000;

// For characters that are not ASCII: those that YAML does not allow unescaped, and those that some
// readers treat as line ends or discard.
constexpr bool IsEscaped(char32_t character) {
  return character < 0xa0 || character == 0x2028 || character == 0x2029 || character == 0xfeff ||
         character == 0xfffe || character == 0xffff;
}

constexpr bool IsSpace(char32_t character) {
  return character == 0xa0 || character == 0x1680 || (character >= 0x2000 && character <= 0x200f) ||
         character == 0x202f || character == 0x205f || character == 0x3000;
}

constexpr int IsIn(int byte, signed char first, signed char last) {
  return byte >= first && byte <= last ? 1 : 0;
}

// Compares each byte with the range. Adds a number first, so that `last` becomes the largest number
// of a signed byte and any larger byte becomes negative. Then one comparison is enough.
inline ByteVector IsIn(ByteVector bytes, signed char first, signed char last) {
  using UnsignedBytes = unsigned char __attribute__((vector_size(16)));
  const auto moved =
      reinterpret_cast<UnsignedBytes>(bytes) + static_cast<unsigned char>(0x7f - last);
  return reinterpret_cast<ByteVector>(moved) > static_cast<signed char>(0x7e - last + first);
}

// Stops at all bytes that require quotes, and at others, because this takes fewer comparisons.
struct Ordinary {
  template <typename Bytes>
  static constexpr auto Stops(Bytes bytes) {
    return (IsIn(bytes | 0x20, 'a', 'z') | IsIn(bytes, '-', '9') | (bytes == '_') |
            (bytes == ' ')) == 0;
  }
};

// Stops at bytes that require quotes, and at those that are not ASCII.
struct Plain {
  template <typename Bytes>
  static constexpr auto Stops(Bytes bytes) {
    const auto isPlain = IsIn(bytes | 0x20, 'a', 'z') | IsIn(bytes, '(', '9') | (bytes == '_') |
                         (bytes == ' ') | (bytes == '@') | (bytes == '%');
    return (isPlain == 0) | (bytes == '*') | (bytes == ',');
  }
  static bool IsCopied(char32_t character) { return !IsEscaped(character) && !IsSpace(character); }
};

struct Quoted {
  template <typename Bytes>
  static constexpr auto Stops(Bytes bytes) {
    return (bytes < 0x20) | (bytes == '"') | (bytes == '\\') | (bytes == 0x7f);
  }
  static bool IsCopied(char32_t character) { return !IsEscaped(character); }

  static void Replace(char32_t character, TextBuffer& out) {
    constexpr std::string_view kPlain = "\"\\\n\r\t";
    constexpr std::string_view kLetters = "\"\\nrt";
    const std::size_t found =
        character < 0x80 ? kPlain.find(static_cast<char>(character)) : std::string_view::npos;
    if (found != std::string_view::npos) {
      return out.AppendAll('\\', kLetters[found]);
    }
    AppendNumber(character, out);
  }

 private:
  // All escaped characters are below U+10000.
  static void AppendNumber(char32_t character, TextBuffer& out) {
    out.Append(character < 0x100 ? "\\x" : "\\u");
    for (unsigned shift = character < 0x100 ? 8 : 16; shift > 0;) {
      shift -= 4;
      out.Append(kLowerDigits[character >> shift & 0xfU]);
    }
  }
};

// Words that some readers interpret as a boolean or null, in any combination of upper and lower
// case.
[[gnu::noinline]] bool IsReserved(std::string_view text) {
  static constexpr char kWords[][6] = {"true", "false", "null", "yes", "no", "on", "off", "y", "n"};
  return std::any_of(std::begin(kWords), std::end(kWords), [text](std::string_view word) {
    return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                      [](char left, char right) { return (left | 0x20) == right; });
  });
}

constexpr std::size_t kMaxReserved = 5;

// Excludes numbers, dates and all characters that have a special meaning at the beginning.
bool CanBegin(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_' ||
         byte == '/' || static_cast<unsigned char>(byte) >= 0x80;
}

// Whether no quotes are required if all bytes are plain.
inline bool CanBePlain(std::string_view text) {
  return !text.empty() && CanBegin(text.front()) && text.back() != ' ' &&
         (text.size() > kMaxReserved || !IsReserved(text));
}

class YamlSyntax {
 public:
  static std::string FieldPrefix(const std::string& name, bool isFirst, StructPlace place) {
    TextBuffer key;
    YamlSyntax(key).OtherString("", name);
    const std::string indent(kIndentStep * static_cast<std::size_t>(place.level), ' ');
    // The first field of an element follows the dash.
    const bool continuesLine = isFirst && (place.isElement || place.level == 0);
    const std::string begin = continuesLine ? "" : "\n" + indent;
    const std::string text = key.ToString();
    return text.size() > kMaxSimpleKey ? begin + "? " + text + "\n" + indent + ": "
                                       : begin + text + ": ";
  }

  explicit YamlSyntax(TextBuffer& out) : out_(out) {}

  TextBuffer& Out() { return out_; }

  char* Bool(std::string_view before, bool value, char* place) {
    place = PutPiece(before, place);
    return value ? PutPiece("true", place) : PutPiece("false", place);
  }
  char* Int(std::string_view before, long value, char* place) {
    return PutPiece(Decimal{value}, PutPiece(before, place));
  }
  char* String(std::string_view before, const std::string& value, char* place) {
    char* const begin = PutPiece(before, place);
    const bool isPut =
        value.size() <= kMaxShort && CanBePlain(value) && CopyOrdinary<Ordinary>(value, begin);
    return isPut ? begin + value.size() : nullptr;
  }
  void OtherString(std::string_view before, const std::string& value) {
    if (CanBePlain(value) && CountCopied<Plain>(value) == value.size()) {
      return out_.AppendAll(before, value);
    }
    QuotedString(before, value);
  }

  void BeginStruct(std::string_view before, const MetaObj::MetaStruct& /*structure*/,
                   bool isEmpty) {
    Begin(before, isEmpty, "{}");
  }
  void EndStruct(bool /*isEmpty*/, long /*level*/) {}

  void BeginList(std::string_view before, const MetaObj::MetaList& /*list*/, bool isEmpty) {
    Begin(before, isEmpty, "[]");
  }
  void BeginElement(bool isFirst, long level) {
    if (isFirst && level == 0) {
      return out_.Append("- ");
    }
    out_.AppendAll('\n', Spaces{kIndentStep * static_cast<std::size_t>(level)},
                   std::string_view("- "));
  }
  void EndList(bool /*isEmpty*/, long /*level*/) {}

 private:
  void QuotedString(std::string_view before, const std::string& value) {
    if (!AnyStop<Quoted>(value)) {
      return out_.AppendAll(before, '"', value, '"');
    }
    out_.AppendAll(before, '"');
    AppendEscaped<Quoted>(value, out_);
    out_.Append('"');
  }

  void Begin(std::string_view before, bool isEmpty, std::string_view emptyText) {
    out_.Append(before);
    if (isEmpty) {
      out_.Append(emptyText);
    } else if (!before.empty()) {
      out_.RemoveLast();  // the space after the colon: the value begins on the next line
    }
  }

  TextBuffer& out_;
};

void Print(const Selection& selection, const FormatOptions& /*options*/, TextBuffer& out) {
  YamlSyntax syntax(out);
  ValuePrinter<YamlSyntax>(syntax).PrintResult(selection);
  out.Append('\n');
}

}  // namespace

const ExactFormat kYamlFormat = {"yaml", "Print YAML 1.2 in block style.", true, {}, Print};

}  // namespace Kestrel::Formats
