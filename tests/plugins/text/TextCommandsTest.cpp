// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugins/support/CommandCall.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands below "text".
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;

TEST(TextCommandsTest, CountsText) {
  // Values in the standard input are not escaped.
  const std::string line = "a  $(b) 'c' \"d\" \\ \xC3\xA4 }";
  EXPECT_EQ(CallStruct("text count", {{"line", line}, {"line", "e"}}),
            Row({{"Lines", "2"}, {"Words", "8"}, {"Bytes", std::to_string(line.size() + 3)}}));
}

TEST(TextCommandsTest, HashesPasswords) {
  const std::string password = "a $(b) 'c' \"\\ \xC3\xA4";
  const ScopedTempDir folder;
  const std::string path = folder.Write("password", password + "\n");
  EXPECT_EQ(CallText("text hash", {{"password", password}, {"salt", "ab./"}}) + "\n",
            Witness("openssl passwd -6 -salt ab./ -stdin <'" + path + "'"));
}

TEST(TextCommandsTest, HashesWithARandomSalt) {
  const std::string first = CallText("text hash", {{"password", "x"}});
  EXPECT_THAT(first, ::testing::MatchesRegex("\\$6\\$[A-Za-z0-9./]+\\$[A-Za-z0-9./]{86}"));
  EXPECT_NE(CallText("text hash", {{"password", "x"}}), first);
}

TEST(TextCommandsTest, RefusesAPasswordThatWouldBeCut) {
  EXPECT_THAT(CallErrors("text hash", {{"password", "a\nb"}}),
              ElementsAre("A password has one line"));
  EXPECT_THAT(CallErrors("text hash", {{"password", std::string(257, 'x')}}),
              ElementsAre("The password is longer than 256 bytes"));
  EXPECT_THAT(CallErrors("text hash", {{"password", "\n"}}), ElementsAre("The password is empty"));
}

}  // namespace
}  // namespace Kestrel::Testing
