// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugins/support/CommandCall.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The command "system password hash".
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

TEST(PasswordCommandsTest, HashesPasswords) {
  const std::string password = "a $(b) 'c' \"\\ \xC3\xA4";
  const ScopedTempDir folder;
  const std::string path = folder.Write("password", password + "\n");
  EXPECT_EQ(CallText("system password hash", {{"password", password}, {"salt", "ab./"}}) + "\n",
            Witness("openssl passwd -6 -salt ab./ -stdin <'" + path + "'"));
}

TEST(PasswordCommandsTest, HashesWithARandomSalt) {
  const std::string first = CallText("system password hash", {{"password", "x"}});
  EXPECT_THAT(first, ::testing::MatchesRegex("\\$6\\$[A-Za-z0-9./]+\\$[A-Za-z0-9./]{86}"));
  EXPECT_NE(CallText("system password hash", {{"password", "x"}}), first);
}

TEST(PasswordCommandsTest, RefusesAPasswordThatIsEmptyOrTooLongOrHasTwoLines) {
  EXPECT_THAT(CallErrors("system password hash", {{"password", "a\nb"}}),
              ElementsAre("A password has one line"));
  EXPECT_THAT(CallErrors("system password hash", {{"password", std::string(257, 'x')}}),
              ElementsAre("The password is longer than 256 bytes"));
  EXPECT_THAT(CallErrors("system password hash", {{"password", "\n"}}),
              ElementsAre("The password is empty"));
}

TEST(PasswordCommandsTest, ThePasswordIsInNoCommandLine) {
  const ScopedTempDir tools;
  const std::string lines = tools.GetPath("lines");
  Witness("cd '" + tools.GetPath() + "' && { echo '#!/bin/sh'; echo 'cat /proc/[0-9]*/cmdline >" +
          lines + " 2>/dev/null; exec /usr/bin/openssl \"$@\"'; } >openssl && chmod +x openssl");
  const ScopedEnvironment path("PATH", tools.GetPath() + ":/usr/bin:/bin");
  // One of the command lines may quote this file, so the password is not in the file in one piece.
  const std::string password = std::string("visible-") + "to-nobody";
  EXPECT_THAT(CallText("system password hash", {{"password", password}}), StartsWith("$6$"));
  const std::string seen = tools.Read("lines");
  EXPECT_THAT(seen, HasSubstr("hash-password.sh")) << "the command lines were seen";
  EXPECT_THAT(seen, Not(HasSubstr(password)));
}

}  // namespace
}  // namespace Kestrel::Testing
