// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Properties of all output of the format "pretty", tested with random results at several widths.

#include <wchar.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

#include "vexil/formats/DisplayFixture.h"
#include "vexil/formats/DisplayText.h"
#include "vexil/formats/FormatsFixture.h"
#include "vexil/formats/RandomResult.h"
#include "vexil/formats/Utf8.h"

namespace Kestrel::Formats {
namespace {

// The escape sequences that the format prints.
constexpr std::string_view kSequences[] = {"\x1b[0m",  "\x1b[1m",  "\x1b[7m",
                                           "\x1b[27m", "\x1b[31m", "\x1b[32m",
                                           "\x1b[33m", "\x1b[35m", "\x1b[36m"};

std::size_t SizeOfSequence(std::string_view text) {
  for (const std::string_view sequence : kSequences) {
    if (text.substr(0, sequence.size()) == sequence) {
      return sequence.size();
    }
  }
  return 0;
}

bool ActsOnText(char32_t code) {
  return code < 0x20 || (code >= 0x7f && code < 0xa0) || code == 0x61c || code == 0x200e ||
         code == 0x200f || (code >= 0x2028 && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
}

/// Returns the number of columns that a character fills by itself, according to the system or, if
/// the system does not know the character, to `WidthClassOf`.
std::size_t ColumnsOf(char32_t code) {
  const int columns = wcwidth(static_cast<wchar_t>(code));
  return columns >= 0 ? static_cast<std::size_t>(columns)
                      : static_cast<std::size_t>(WidthClassOf(code));
}

/// Returns the number of columns that a line fills, without the escape sequences that the format
/// prints. At the first text that must not be in the line, fails the test and stops counting.
std::size_t CheckLine(std::string_view line) {
  std::size_t columns = 0;
  while (!line.empty()) {
    if (const std::size_t size = SizeOfSequence(line); size != 0) {
      line.remove_prefix(size);
      continue;
    }
    const Character character = FirstCharacter(line);
    if (character.size == 0 || ActsOnText(character.code)) {
      ADD_FAILURE() << "This is not allowed: " << ShownText(line.substr(0, 8));
      return columns;
    }
    columns += ColumnsOf(character.code);
    line.remove_prefix(character.size);
  }
  return columns;
}

void CheckText(const std::string& text, std::size_t width) {
  ASSERT_FALSE(text.empty());
  ASSERT_EQ(text.back(), '\n');
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    ASSERT_LE(CheckLine(line), width) << ShownText(line);
    ASSERT_TRUE(line.empty() || line.back() != ' ') << ShownText(line);
  }
}

std::string PrintFor(const std::shared_ptr<MetaObject>& root, AutoCli::FormatParameters params,
                     const char* color, std::size_t width) {
  params.SetParameter("color", color);
  AutoCli::DisplayContext display;
  display.width = static_cast<std::uint16_t>(width);
  std::ostringstream out;
  const auto output = Testing::MakeOutput(root);
  ExactFormatter(kPrettyFormat).Format(output, params, display, out);
  EXPECT_EQ(output->HasError(), out.str().empty());
  return out.str();
}

std::string WithoutSequences(std::string_view text) {
  std::string plain;
  while (!text.empty()) {
    const std::size_t size = SizeOfSequence(text);
    plain += size == 0 ? text.substr(0, 1) : std::string_view();
    text.remove_prefix(std::max<std::size_t>(size, 1));
  }
  return plain;
}

TEST(PrettyPropertyTest, NoLineIsWiderThanTheScreenOrActsOnIt) {
  const Utf8Locale locale;
  constexpr std::size_t kWidths[] = {40, 80, 200, 1, 2, 3, 7, 11, 12, 13, 24, 33, 60};
  for (std::uint64_t seed = 0; seed < 1500 && !HasFailure(); ++seed) {
    RandomResult random(seed);
    const auto root = random.Make();
    const AutoCli::FormatParameters params = random.MakeParameters(*root);
    const std::size_t width = kWidths[seed % std::size(kWidths)];
    SCOPED_TRACE("seed " + std::to_string(seed) + ", width " + std::to_string(width));
    const std::string plain = PrintFor(root, params, "never", width);
    if (plain.empty()) {
      continue;  // the parameters are wrong
    }
    CheckText(plain, width);
    EXPECT_EQ(plain.find('\x1b'), std::string::npos);
    const std::string colored = PrintFor(root, params, "always", width);
    CheckText(colored, width);
    EXPECT_EQ(WithoutSequences(colored), plain);
  }
}

}  // namespace
}  // namespace Kestrel::Formats
