// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/SanitizedText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string_view>

namespace Kestrel::Host {
namespace {

TEST(SanitizedTextTest, MakesOutsideTextSafeToPrint) {
  EXPECT_EQ(SanitizedText("plain \xc3\xa9")->GetValue(), "plain \xc3\xa9");
  EXPECT_EQ(SanitizedText("a\nb\x1b[2J\x7f\t")->GetValue(), "a\\x0ab\\x1b[2J\\x7f\\x09");
  EXPECT_EQ(SanitizedText("\xc2\x9b")->GetValue(), "\\xc2\\x9b") << "a terminal's command in UTF-8";
  EXPECT_EQ(SanitizedText("\xc2\xa0")->GetValue(), "\xc2\xa0");
  EXPECT_EQ(SanitizedText("bad \xff\xc3")->GetValue(), "bad \\xff\\xc3");
  EXPECT_EQ(SanitizedText(std::string_view("a\0b", 3))->GetValue(), "a\\x00b");
  EXPECT_EQ(SanitizedText("")->GetValue(), "");
}

TEST(SanitizedTextTest, KeepsLinesAndTabsWhereATextHasThem) {
  EXPECT_EQ(SanitizedLines("a\tb\nc\r\x1b")->GetValue(), "a\tb\nc\\x0d\\x1b");
}

}  // namespace
}  // namespace Kestrel::Host
