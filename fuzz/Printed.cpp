// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "Printed.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <sstream>
#include <string_view>
#include <vector>

#include "Property.h"
#include "kestrel/autocli/JsonFormatter.h"
#include "kestrel/autocli/XmlFormatter.h"
#include "kestrel/autocli/XmlUtil.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Fuzz {
namespace {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

template <typename Kind>
const Kind& As(const MetaObject& value) {
  const auto* const kind = dynamic_cast<const Kind*>(&value);
  Require(kind != nullptr, "the class of a value matches its kind");
  return *kind;
}

// Whether `claim` holds for a value and for every value in it.
template <typename Claim>
bool HoldsForAll(const MetaObject& value, Claim claim) {
  if (!claim(value)) {
    return false;
  }
  if (value.GetType() == MetaType::List) {
    const auto& elements = As<MetaList>(value).GetObjects();
    return std::all_of(elements.begin(), elements.end(),
                       [&](const Value& element) { return HoldsForAll(*element, claim); });
  }
  if (value.GetType() == MetaType::Struct) {
    const auto& structure = As<MetaStruct>(value);
    const std::vector<std::string> names = structure.GetFieldNames();
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
      return HoldsForAll(*structure.GetField(name), claim);
    });
  }
  return true;
}

// Whether `claim` holds for every field name, if the value is a structure; otherwise true.
template <typename Claim>
bool HoldsForFieldNames(const MetaObject& value, Claim claim) {
  if (value.GetType() != MetaType::Struct) {
    return true;
  }
  const std::vector<std::string> names = As<MetaStruct>(value).GetFieldNames();
  return std::all_of(names.begin(), names.end(), claim);
}

// Parses json and compares it with the expected value on the way.
class JsonCheck {
 public:
  explicit JsonCheck(std::string_view text) : rest_(text) {}

  void ReadDocument(const MetaObject& value) {
    Read(value);
    SkipSpace();
    Require(rest_.empty(), "a json document ends after its value");
  }

 private:
  void Read(const MetaObject& value) {
    switch (value.GetType()) {
      case MetaType::Bool:
        return Expect(As<MetaBool>(value).GetValue() ? "true" : "false");
      case MetaType::Int:
        return ReadInt(As<MetaInt>(value).GetValue());
      case MetaType::String:
        return ReadString(As<MetaString>(value).GetValue());
      case MetaType::Struct:
        return ReadStruct(As<MetaStruct>(value));
      case MetaType::List:
        return ReadList(As<MetaList>(value));
    }
  }

  void ReadStruct(const MetaStruct& structure) {
    Expect("{");
    bool isFirst = true;
    for (const std::string& name : structure.GetFieldNames()) {
      Expect(isFirst ? "" : ",");
      Expect("\"" + name + "\"");
      Expect(":");
      Read(*structure.GetField(name));
      isFirst = false;
    }
    Expect("}");
  }

  void ReadList(const MetaList& list) {
    Expect("[");
    bool isFirst = true;
    for (const Value& element : list.GetObjects()) {
      Expect(isFirst ? "" : ",");
      Read(*element);
      isFirst = false;
    }
    Expect("]");
  }

  void ReadInt(long expected) {
    SkipSpace();
    const std::size_t size = std::min(rest_.find_first_not_of("-0123456789"), rest_.size());
    const std::string digits(rest_.substr(0, size));
    rest_.remove_prefix(size);
    Require(!digits.empty() && std::strtol(digits.c_str(), nullptr, 10) == expected,
            "an integer reads back from json");
  }

  void ReadString(const std::string& expected) {
    Expect("\"");
    std::string text;
    while (!rest_.empty() && rest_.front() != '"') {
      text += TakeCharacter();
    }
    Expect("\"");
    RequireEqual(text, expected, "a string reads back from json");
  }

  char Take() {
    Require(!rest_.empty(), "a json string is closed");
    const char c = rest_.front();
    rest_.remove_prefix(1);
    return c;
  }

  char TakeCharacter() {
    const char c = Take();
    Require(c >= ' ' && c <= '~', "json is printable ASCII");
    if (c != '\\') {
      return c;
    }
    constexpr std::string_view kLetters = "\"\\/btnfr";
    constexpr std::string_view kMeanings = "\"\\/\b\t\n\f\r";
    const char letter = Take();
    if (letter == 'u') {
      return TakeByte();
    }
    const std::size_t found = kLetters.find(letter);
    Require(found != std::string_view::npos, "json has only the escapes of its grammar");
    return kMeanings[found];
  }

  char TakeByte() {
    const std::string digits(rest_.substr(0, 4));
    Require(digits.size() == 4 && digits.find_first_not_of("0123456789abcdef") == std::string::npos,
            "a \\u escape has four hexadecimal digits");
    rest_.remove_prefix(4);
    return static_cast<char>(std::strtol(digits.c_str(), nullptr, 16));
  }

  void SkipSpace() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \n"), rest_.size())); }

  void Expect(std::string_view text) {
    SkipSpace();
    RequireEqual(rest_.substr(0, text.size()), text, "json has the structure of its value");
    rest_.remove_prefix(text.size());
  }

  std::string_view rest_;
};

bool IsPlainName(const std::string& name) {
  return name.find_first_of("\"\\") == std::string::npos &&
         std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// Whether a string can be read back from XML unchanged. XML allows three control characters: tab,
// newline and carriage return. Parsers turn a carriage return into a newline, and in an attribute
// they turn tabs and newlines into spaces.
bool IsXmlText(const std::string& text, bool isAttribute) {
  const bool hasControl = std::any_of(text.begin(), text.end(), [isAttribute](char c) {
    const bool isAllowed = !isAttribute && (c == '\t' || c == '\n');
    return static_cast<unsigned char>(c) < ' ' && !isAllowed;
  });
  const bool isUtf8 = MetaString::NewUtf8WithEscapes(std::string(text))->GetValue() == text;
  return !hasControl && isUtf8 && text.find("\xEF\xBF\xBE") == std::string::npos &&
         text.find("\xEF\xBF\xBF") == std::string::npos;
}

bool IsXmlValue(const MetaObject& value) {
  switch (value.GetType()) {
    case MetaType::String:
      return IsXmlText(As<MetaString>(value).GetValue(), false);
    case MetaType::List:
      return As<MetaList>(value).GetListType() != MetaType::List;
    default:
      return HoldsForFieldNames(
          value, [](const std::string& name) { return !name.empty() && IsXmlText(name, true); });
  }
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + 1)) {
    text.replace(at, from.size(), to);
  }
}

// Returns the output of the formatter as a value document, in which the kinds have other names. No
// string in the value matches the replaced words: ">" and the double quote are escaped in strings.
std::string ValueDocument(std::string text) {
  ReplaceAll(text, "boolean>", "bool>");
  ReplaceAll(text, "integer>", "int>");
  ReplaceAll(text, " type=\"boolean\"", " type=\"bool\"");
  ReplaceAll(text, " type=\"integer\"", " type=\"int\"");
  return "<output>" + text + "</output>";
}

std::string PrintXmlValue(const Value& value) {
  std::ostringstream out;
  AutoCli::XmlFormatter().Format(value, out, 0);
  return out.str();
}

}  // namespace

std::string Print(AutoCli::Formatter& formatter, const Value& value,
                  AutoCli::FormatParameters params, int width) {
  const std::shared_ptr<CallSpec::Output> output = CallSpec::Output::New();
  output->SetRootObject(value);
  AutoCli::DisplayContext display;
  display.width = static_cast<std::uint16_t>(width);
  std::ostringstream out;
  formatter.Format(output, params, display, out);
  return out.str();
}

void RequireJsonReadsBack(const Value& value) {
  if (!HoldsForAll(*value,
                   [](const MetaObject& part) { return HoldsForFieldNames(part, IsPlainName); })) {
    return;
  }
  AutoCli::JsonFormatter formatter;
  const std::string text = Print(formatter, value);
  JsonCheck(text).ReadDocument(*value);
}

void RequireXmlReadsBack(const Value& value) {
  if (!HoldsForAll(*value, IsXmlValue)) {
    return;
  }
  const std::string text = PrintXmlValue(value);
  const Value again = AutoCli::XmlUtil_ParseXmlOutput(ValueDocument(text));
  Require(again != nullptr, "a value printed as xml can be read");
  RequireEqual(PrintXmlValue(again), text, "a value reads back from xml");
}

}  // namespace Kestrel::Fuzz
