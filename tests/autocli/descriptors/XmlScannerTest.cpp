// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/XmlScanner.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "autocli/text/Utf8.h"

namespace Kestrel::AutoCli {
namespace {

/// Keeps the last text, and the value of the last attribute of the last start tag.
class LastText final : public XmlEvents {
 public:
  void StartElement(std::string_view /*name*/, const XmlAttributes& attributes) override {
    value = attributes.empty() ? "" : attributes.back().value;
  }
  void EndElement() override {}
  void Text(std::string_view newText) override { text = newText; }
  void CData(std::string_view newText) override { text = newText; }
  void Comment(std::string_view /*text*/) override {}

  std::string text;
  std::string value;
};

bool IsOrdinary(const std::string& document) {
  LastText events;
  return ScanXml(document, events);
}

std::string Encoded(char32_t code) {
  std::string text;
  AppendCharacter(code, text);
  return text;
}

std::string InElement(const std::string& content) { return "<o>" + content + "</o>"; }

TEST(XmlScannerTest, ReadsTheFirstAndTheLastCharacterOfEachRange) {
  for (const char32_t code :
       {0x20u, 0x7Fu, 0x80u, 0x7FFu, 0x800u, 0xD7FFu, 0xE000u, 0xFFFDu, 0x10000u, 0x10FFFFu}) {
    const std::string character = Encoded(code);
    for (const std::string& form : {character, "&#" + std::to_string(code) + ";"}) {
      LastText events;
      EXPECT_TRUE(ScanXml("<o a='" + form + "'>" + form + "</o>", events)) << form;
      EXPECT_EQ(events.text, character);
      EXPECT_EQ(events.value, character);
    }
  }
}

TEST(XmlScannerTest, LeavesCharactersOutsideTheRangesToTheParser) {
  for (const char32_t code : {0x1Fu, 0xD800u, 0xDFFFu, 0xFFFEu, 0xFFFFu, 0x110000u}) {
    EXPECT_FALSE(IsOrdinary(InElement(Encoded(code)))) << code;
    EXPECT_FALSE(IsOrdinary(InElement("&#" + std::to_string(code) + ";"))) << code;
  }
}

TEST(XmlScannerTest, LeavesValuesWithoutQuotesToTheParser) {
  EXPECT_TRUE(IsOrdinary("<o a='x' b=\"y\"/>"));
  for (const char quote : {'x', '&', '<'}) {
    EXPECT_FALSE(IsOrdinary(std::string("<o a=") + quote + "y" + quote + "/>")) << quote;
  }
}

TEST(XmlScannerTest, ReadsAPieceOfAtMostFiveMillionBytes) {
  const std::string most(5000000, 'x');
  EXPECT_TRUE(IsOrdinary(InElement(most)));
  EXPECT_FALSE(IsOrdinary(InElement(most + "x")));
  const std::string reference = "&lt;" + most.substr(4);
  EXPECT_TRUE(IsOrdinary(InElement(reference)));
  EXPECT_FALSE(IsOrdinary(InElement(reference + "x")));
  EXPECT_TRUE(IsOrdinary(InElement("<!--" + most + "-->")));
  EXPECT_FALSE(IsOrdinary(InElement("<!--" + most + "x-->")));
}

TEST(XmlScannerTest, ReadsDifferentNamesOfAtMostFourMillionBytesInTotal) {
  std::string document = "<o>";
  for (int i = 0; i < 400; ++i) {
    const std::string number = std::to_string(1000 + i);
    document += "<n" + number + std::string(i == 0 ? 9994 : 9995, 'x') + "/>";
  }
  EXPECT_TRUE(IsOrdinary(document + "<o/></o>"));
  EXPECT_FALSE(IsOrdinary(document + "<p/></o>"));
}

}  // namespace
}  // namespace Kestrel::AutoCli
