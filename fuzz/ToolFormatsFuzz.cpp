// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: the name of one of the tool's formatters; a width; format parameters and a value, see
// TypedValue.h.
//
// A formatter prints a value or adds messages, never both. JSON is valid, all lines of cells have
// as many cells as the header, the tool reads value-xml back, yaml contains no control characters,
// and no line of pretty is wider than the screen or acts on the terminal.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>

#include "FuzzInput.h"
#include "Property.h"
#include "TypedValue.h"
#include "Usage.h"
#include "kestrel/autocli/XmlUtil.h"
#include "kestrel/callspec/Output.h"
#include "vexil/formats/DisplayText.h"
#include "vexil/formats/FormatsPlugin.h"
#include "vexil/formats/Utf8.h"

namespace Kestrel::Fuzz {
namespace {

using AutoCli::Formatter;

// Wider screens only cost time.
constexpr int kMaxWidth = 500;

bool IsControl(char32_t code) {
  return (code < 0x20 && code != '\n') || (code >= 0x7f && code < 0xa0) || code == 0x2028 ||
         code == 0x2029;
}

// Whether the character acts on a terminal: control characters, and those that change the direction
// of the text.
bool ActsOnTerminal(char32_t code) {
  return IsControl(code) || (code >= 0x202a && code <= 0x202e) ||
         (code >= 0x2066 && code <= 0x2069);
}

// Whether the text is valid UTF-8 without such characters.
bool IsFreeOf(bool (*isSuch)(char32_t), std::string_view text) {
  while (!text.empty()) {
    const Formats::Character character = Formats::FirstCharacter(text);
    if (character.size == 0 || isSuch(character.code)) {
      return false;
    }
    text.remove_prefix(character.size);
  }
  return true;
}

template <typename Check>
void ForEachLine(const std::string& text, const Check& check) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    check(line);
  }
}

void RequireNdjson(const std::string& text) {
  ForEachLine(text, [](const std::string& line) {
    Require(nlohmann::json::accept(line), "each line of ndjson is JSON");
  });
}

// Requires that each line has the same number of cells.
void RequireCells(const std::string& text, char separator) {
  std::size_t cells = 1;
  std::size_t expected = 0;
  bool inQuotes = false;
  for (const char byte : text) {
    inQuotes = inQuotes != (byte == '"' && separator == ',');
    cells += !inQuotes && byte == separator ? 1 : 0;
    if (!inQuotes && byte == '\n') {
      expected = expected == 0 ? cells : expected;
      Require(cells == expected, "all lines have the same number of cells");
      cells = 1;
    }
  }
  Require(!inQuotes, "all quotes are closed");
}

void RequireFits(const std::string& text, std::size_t width) {
  Require(IsFreeOf(ActsOnTerminal, text), "nothing acts on the terminal");
  ForEachLine(text, [width](const std::string& line) {
    Require(width == 0 || Formats::MeasureText(line).max <= width, "a line fits the screen");
  });
}

void RequireFormat(const std::string& name, const std::string& text, std::size_t width) {
  if (name == "ndjson") {
    RequireNdjson(text);
  } else if (name == "json-utf8") {
    Require(nlohmann::json::accept(text), "json-utf8 is JSON");
  } else if (name == "csv" || name == "tsv") {
    RequireCells(text, name == "csv" ? ',' : '\t');
  } else if (name == "yaml") {
    Require(IsFreeOf(IsControl, text), "yaml contains no control characters");
  } else if (name == "value-xml") {
    Require(AutoCli::XmlUtil_ParseXmlOutput(text) != nullptr, "value-xml is read back");
  } else {
    RequireFits(text, width);
  }
}

void PrintAndCheck(Formatter& formatter, const Value& value, AutoCli::FormatParameters params,
                   int width, std::size_t inputSize) {
  const auto output = CallSpec::Output::New();
  output->SetRootObject(value);
  AutoCli::DisplayContext display;
  display.width = static_cast<std::uint16_t>(width);
  std::ostringstream out;
  const Usage usage(inputSize);
  formatter.Format(output, params, display, out);
  const std::string text = out.str();
  usage.Check(text.size());
  Require(!output->HasError() || text.empty(), "there is no output with messages");
  Require(text.size() <= kMaxOutputOfFormatter, "the size of the output is bounded");
  const bool isColored = params.GetParameter("color") == "always";
  if (!output->HasError() && !isColored) {
    RequireFormat(formatter.GetName(), text, static_cast<std::size_t>(width));
  }
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  if (size > kMaxInputOfFormatter) {
    return 0;
  }
  static Kestrel::Formats::FormatsPlugin plugin;
  FuzzInput input(data, size);
  const std::string name = input.TakeText();
  const int width = input.TakeNumber(0, kMaxWidth);
  const Kestrel::AutoCli::FormatParameters params = TakeParameters(input);
  const Value value = TakeValue(input);
  const auto formatter = plugin.GetFormatter(name);
  if (value != nullptr && formatter != nullptr) {
    PrintAndCheck(*formatter, value, params, width, size);
  }
  return 0;
}
