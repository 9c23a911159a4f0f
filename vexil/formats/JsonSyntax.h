// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/formats/EscapedText.h"
#include "vexil/formats/TextBuffer.h"
#include "vexil/formats/ValuePrinter.h"

namespace Kestrel::Formats {

/// How JSON prints strings.
struct JsonRules {
  template <typename Bytes>
  static constexpr auto Stops(Bytes bytes) {
    return (bytes < 0x20) | (bytes == '"') | (bytes == '\\');
  }
  static bool IsCopied(char32_t /*character*/) { return true; }
  static void Replace(char32_t character, TextBuffer& out);
};

/// Appends a string of JSON, in quotes. Throws ValueFault if `text` is not valid UTF-8.
void AppendJsonString(std::string_view text, TextBuffer& out);

/// JSON (RFC 8259) for ValuePrinter: on one line, or with `kIndentStep` spaces for each level.
template <std::size_t kIndentStep>
class JsonSyntax {
 public:
  static std::string FieldPrefix(const std::string& name, bool isFirst, StructPlace place) {
    TextBuffer prefix;
    JsonSyntax(prefix).BeginItem(isFirst, place.level);
    AppendJsonString(name, prefix);
    prefix.Append(kIndentStep == 0 ? ":" : ": ");
    return prefix.ToString();
  }

  explicit JsonSyntax(TextBuffer& out) : out_(out) {}

  TextBuffer& Out() { return out_; }

  char* Bool(std::string_view before, bool value, char* place) {
    place = PutPiece(before, place);
    return value ? PutPiece("true", place) : PutPiece("false", place);
  }
  char* Int(std::string_view before, long value, char* place) {
    return PutPiece(Decimal{value}, PutPiece(before, place));
  }
  char* String(std::string_view before, const std::string& value, char* place) {
    char* const begin = PutPiece('"', PutPiece(before, place));
    const bool isPut = value.size() <= kMaxShort && CopyOrdinary<JsonRules>(value, begin);
    return isPut ? PutPiece('"', begin + value.size()) : nullptr;
  }
  void OtherString(std::string_view before, const std::string& value) {
    out_.Append(before);
    AppendJsonString(value, out_);
  }

  void BeginStruct(std::string_view before, const MetaObj::MetaStruct& /*structure*/,
                   bool /*isEmpty*/) {
    out_.AppendAll(before, '{');
  }
  void EndStruct(bool isEmpty, long level) { Close(isEmpty, level, '}'); }

  void BeginList(std::string_view before, const MetaObj::MetaList& /*list*/, bool /*isEmpty*/) {
    out_.AppendAll(before, '[');
  }
  void BeginElement(bool isFirst, long level) { BeginItem(isFirst, level); }
  void EndList(bool isEmpty, long level) { Close(isEmpty, level, ']'); }

 private:
  /// Begins a field or element of the structure or list at `level`.
  void BeginItem(bool isFirst, long level) {
    if (!isFirst) {
      out_.Append(',');
    }
    BeginLine(level + 1);
  }

  void Close(bool isEmpty, long level, char bracket) {
    if (!isEmpty) {
      BeginLine(level);
    }
    out_.Append(bracket);
  }

  void BeginLine(long level) {
    if (kIndentStep != 0) {
      out_.AppendAll('\n', Spaces{kIndentStep * static_cast<std::size_t>(level)});
    }
  }

  TextBuffer& out_;
};

using JsonLine = JsonSyntax<0>;

}  // namespace Kestrel::Formats
