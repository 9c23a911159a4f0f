// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/LeadingInteger.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

namespace Kestrel::AutoCli {
namespace {

std::optional<std::int64_t> Read(const std::string& text) {
  std::int64_t value = 0;
  return ReadLeadingInteger(text, value) ? std::optional<std::int64_t>(value) : std::nullopt;
}

// Formatted input from a stream follows the same rule.
std::optional<std::int64_t> ReadFromStream(const std::string& text) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  std::int64_t value = 0;
  return stream >> value ? std::optional<std::int64_t>(value) : std::nullopt;
}

void ExpectEqualOnAllTexts(std::string& text, std::string_view alphabet, std::size_t length) {
  EXPECT_EQ(Read(text), ReadFromStream(text)) << '"' << text << '"';
  if (text.size() == length) {
    return;
  }
  for (const char c : alphabet) {
    text.push_back(c);
    ExpectEqualOnAllTexts(text, alphabet, length);
    text.pop_back();
  }
}

TEST(LeadingIntegerTest, ReadsAllShortStringsAsAStreamDoes) {
  std::string text;
  ExpectEqualOnAllTexts(text, "09-+ ax,.\n", 4);
}

TEST(LeadingIntegerTest, TreatsEachLeadingByteAsAStreamDoes) {
  for (int c = 0; c < 256; ++c) {
    const std::string text = std::string(1, static_cast<char>(c)) + "7";
    EXPECT_EQ(Read(text), ReadFromStream(text)) << c;
  }
}

TEST(LeadingIntegerTest, ReadsLongStringsAsAStreamDoes) {
  for (const char* text :
       {"9223372036854775807", "9223372036854775808", "-9223372036854775808",
        "-9223372036854775809", "+9223372036854775807", "99999999999999999999999999",
        "-99999999999999999999999999x", "00000000000000000000000000000012", "9223372036854775807x",
        "922337203685477580 7", "1e9", "0x7f", "017", "1'000", "1,000"}) {
    EXPECT_EQ(Read(text), ReadFromStream(text)) << text;
  }
}

TEST(LeadingIntegerTest, LeavesTheValueUnchangedIfThereIsNoInteger) {
  std::int64_t value = 5;
  EXPECT_FALSE(ReadLeadingInteger("x", value));
  EXPECT_FALSE(ReadLeadingInteger("99999999999999999999", value));
  EXPECT_FALSE(ReadLeadingInteger("", value));
  EXPECT_EQ(value, 5);
}

}  // namespace
}  // namespace Kestrel::AutoCli
