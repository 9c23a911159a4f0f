// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/KernelLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

TEST(KernelMessageTest, IsParsed) {
  const auto message = ParseKernelMessage("30,12,345678901,-;systemd[1]: a; b\n");
  ASSERT_TRUE(message.has_value());
  EXPECT_EQ(message->level, 6);
  EXPECT_EQ(message->facility, 3);
  EXPECT_EQ(message->microseconds, 345678901);
  EXPECT_EQ(message->text, "systemd[1]: a; b");
}

TEST(KernelMessageTest, OmitsThePropertiesOfItsDevice) {
  const auto message =
      ParseKernelMessage("4,1,0,-,caller=T1;usb 1-1: text\n SUBSYSTEM=usb\n DEVICE=c189:0\n");
  ASSERT_TRUE(message.has_value());
  EXPECT_EQ(message->text, "usb 1-1: text");
}

TEST(KernelMessageTest, EscapesAreDecoded) {
  EXPECT_EQ(ParseKernelMessage("6,1,2,-;a\\x0ab \\x5cx \\xe9 \\xzz \\x1")->text,
            "a\nb \\x \xE9 \\xzz \\x1");
}

TEST(KernelMessageTest, RejectsMessagesOfAnyOtherForm) {
  for (const char* const text : {"", ";", "6;a", "6,1;a", "x,1,2,-;a", "-1,1,2,-;a", "6,1,x,-;a",
                                 "6,1,2,- without a text\n;"}) {
    EXPECT_FALSE(ParseKernelMessage(text).has_value()) << text;
  }
}

TEST(KernelLogTest, HasWordsForFacilities) {
  EXPECT_STREQ(FacilityName(0), "kern");
  EXPECT_STREQ(FacilityName(3), "daemon");
  EXPECT_STREQ(FacilityName(23), "local7");
  EXPECT_STREQ(FacilityName(24), "unknown");
  EXPECT_STREQ(FacilityName(-1), "unknown");
}

TEST(KernelLogTest, AnEmptyLogIsReadWithoutWaiting) {
  const ScopedTempDir folder;
  const std::string pipe = folder.GetPath("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_THAT(ReadKernelLog(pipe), IsEmpty());
}

TEST(KernelLogTest, ReportsTheErrorOfTheSystem) {
  const ScopedTempDir folder;
  ASSERT_EQ(::chmod(folder.GetPath().c_str(), 0755), 0);
  const std::string absent = folder.GetPath("absent");
  EXPECT_THAT(
      [&] { ReadKernelLog(absent); },
      ThrowsMessage<KestrelException>("Unable to read " + absent + ": No such file or directory"));
  const std::string secret = folder.Write("secret", "");
  ASSERT_EQ(::chmod(secret.c_str(), 0), 0);
  const Testing::PlainUser user;
  EXPECT_THAT([&] { ReadKernelLog(secret); },
              ThrowsMessage<KestrelException>(
                  "Unable to read " + secret +
                  ": Permission denied; only root and processes with CAP_SYSLOG may read it"));
}

}  // namespace
}  // namespace Kestrel::Host
