// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/PrettyCell.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "vexil/formats/TextBuffer.h"
#include "vexil/formats/ValuePrinter.h"
#include "vexil/formats/Values.h"

namespace Kestrel::Formats {

namespace {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

// In lower case, like all words below.
constexpr char kSizeNames[][6] = {"size", "bytes"};
constexpr char kStateNames[][11] = {"state",  "status",     "severity", "health",
                                    "result", "level name", "priority"};
constexpr char kGoodStates[][12] = {"active",  "connected", "enabled", "established", "good",
                                    "healthy", "ok",        "online",  "passed",      "reachable",
                                    "running", "success",   "up"};
constexpr char kWarningStates[][16] = {"degraded", "half-configured", "half-installed", "stale",
                                       "warn",     "warning"};
constexpr char kBadStates[][12] = {
    "alert",     "bad",       "crit",    "critical", "dead",    "down",      "emerg",
    "emergency", "err",       "error",   "failed",   "failure", "fatal",     "faulty",
    "missing",   "no answer", "offline", "timeout",  "unclean", "unhealthy", "unreachable"};

char Lower(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

bool IsSame(std::string_view text, std::string_view lower) {
  return std::equal(text.begin(), text.end(), lower.begin(), lower.end(),
                    [](char left, char right) { return Lower(left) == right; });
}

bool EndsWith(std::string_view text, std::string_view lower) {
  return text.size() >= lower.size() && IsSame(text.substr(text.size() - lower.size()), lower);
}

template <std::size_t Count, std::size_t Size>
bool Contains(const char (&words)[Count][Size], std::string_view text) {
  return std::any_of(std::begin(words), std::end(words),
                     [text](std::string_view word) { return IsSame(text, word); });
}

template <std::size_t Count, std::size_t Size>
bool EndsWithAny(std::string_view name, const char (&words)[Count][Size]) {
  return std::any_of(std::begin(words), std::end(words),
                     [name](std::string_view word) { return EndsWith(name, word); });
}

/// Returns `bytes` in tenths of a unit, which is 1024 to the power of `exponent`, rounded to the
/// nearest. Divides first, so that nothing overflows.
std::uint64_t TenthsOf(std::uint64_t bytes, unsigned exponent) {
  const std::uint64_t unit = std::uint64_t{1} << 10 * exponent;
  return bytes / unit * 10 + (bytes % unit * 10 + unit / 2) / unit;
}

/// Formats a size as in "512 B" or "1.5 KiB", like the commands of the host plug-in.
std::string SizeText(long size) {
  constexpr const char* kUnits[] = {" B", " KiB", " MiB", " GiB", " TiB", " PiB", " EiB"};
  const auto number = static_cast<std::uint64_t>(size);
  const std::string sign = size < 0 ? "-" : "";
  const std::uint64_t bytes = size < 0 ? ~number + 1 : number;
  if (bytes < 1024) {
    return sign + std::to_string(bytes) + kUnits[0];
  }
  unsigned exponent = 1;
  while (exponent + 1 < std::size(kUnits) && TenthsOf(bytes, exponent) >= 10240) {
    ++exponent;
  }
  const std::uint64_t tenths = TenthsOf(bytes, exponent);
  return sign + std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + kUnits[exponent];
}

std::string_view WordFor(bool value) { return value ? "true" : "false"; }

std::string_view JoinElements(const MetaList& list, std::string& storage) {
  std::string text;
  const char* before = "";
  for (const Value& element : list.GetObjects()) {
    text += before;
    text += CellText(*element, {}, false, storage);
    before = ", ";
  }
  storage = std::move(text);
  return storage;
}

/// Values on one line, for ValuePrinter.
class ShortSyntax {
 public:
  static std::string FieldPrefix(const std::string& name, bool isFirst, StructPlace /*place*/) {
    return (isFirst ? "" : ", ") + name + ": ";
  }

  explicit ShortSyntax(TextBuffer& out) : out_(out) {}

  TextBuffer& Out() { return out_; }

  char* Bool(std::string_view before, bool value, char* place) {
    return PutPiece(WordFor(value), PutPiece(before, place));
  }
  char* Int(std::string_view before, long value, char* place) {
    return PutPiece(Decimal{value}, PutPiece(before, place));
  }
  char* String(std::string_view before, const std::string& value, char* place) {
    return value.size() <= kMaxShort ? PutPiece(value, PutPiece(before, place)) : nullptr;
  }
  void OtherString(std::string_view before, const std::string& value) {
    out_.AppendAll(before, value);
  }

  void BeginStruct(std::string_view before, const MetaStruct& /*structure*/, bool /*isEmpty*/) {
    out_.AppendAll(before, '{');
  }
  void EndStruct(bool /*isEmpty*/, long /*level*/) { out_.Append('}'); }

  void BeginList(std::string_view before, const MetaList& /*list*/, bool /*isEmpty*/) {
    out_.AppendAll(before, '[');
  }
  void BeginElement(bool isFirst, long /*level*/) { out_.Append(isFirst ? "" : ", "); }
  void EndList(bool /*isEmpty*/, long /*level*/) { out_.Append(']'); }

 private:
  TextBuffer& out_;
};

}  // namespace

bool IsNested(const MetaObject& value) {
  const MetaType kind = KindOf(value);
  return kind == MetaType::Struct ||
         (kind == MetaType::List &&
          static_cast<const MetaList&>(value).GetListType() == MetaType::Struct);
}

std::string_view CellText(const MetaObject& value, const std::string& name, bool isHuman,
                          std::string& storage) {
  switch (KindOf(value)) {
    case MetaType::Int: {
      const long number = static_cast<const MetaInt&>(value).GetValue();
      const bool isSize = isHuman && EndsWithAny(name, kSizeNames);
      storage = isSize ? SizeText(number) : std::to_string(number);
      return storage;
    }
    case MetaType::Bool:
      return WordFor(static_cast<const MetaBool&>(value).GetValue());
    case MetaType::String:
      return static_cast<const MetaString&>(value).GetValue();
    default:
      return JoinElements(static_cast<const MetaList&>(value), storage);
  }
}

Style CellStyle(const MetaObject& value, const std::string& name) {
  const MetaType kind = KindOf(value);
  if (kind == MetaType::Int || kind == MetaType::Bool) {
    return kind == MetaType::Int ? Style::Integer : Style::Boolean;
  }
  if (kind != MetaType::String || !EndsWithAny(name, kStateNames)) {
    return Style::Plain;
  }
  const std::string& word = static_cast<const MetaString&>(value).GetValue();
  return Contains(kBadStates, word)       ? Style::Bad
         : Contains(kWarningStates, word) ? Style::Warning
         : Contains(kGoodStates, word)    ? Style::Good
                                          : Style::Plain;
}

std::string ShortText(const MetaObject& value) {
  TextBuffer text;
  ShortSyntax syntax(text);
  ValuePrinter<ShortSyntax>(syntax).PrintValue(value);
  return text.ToString();
}

}  // namespace Kestrel::Formats
