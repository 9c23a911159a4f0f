// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/ServiceName.h"

#include <gtest/gtest.h>

#include <string>

namespace Kestrel::Host {
namespace {

TEST(ServiceNameTest, LosesTheEndingOfTheUnit) {
  EXPECT_EQ(ServiceName("ssh.service"), "ssh");
  EXPECT_EQ(ServiceName("ssh"), "ssh");
  EXPECT_EQ(ServiceName("getty@tty1.service"), "getty@tty1");
  EXPECT_EQ(ServiceName("getty@.service"), "getty@");
}

TEST(ServiceNameTest, LosesTheEndingOnce) {
  EXPECT_EQ(ServiceName("a.service.service"), "a.service");
}

TEST(ServiceNameTest, KeepsOtherEndings) {
  EXPECT_EQ(ServiceName("dbus.socket"), "dbus.socket");
  EXPECT_EQ(ServiceName("a.Service"), "a.Service");
  EXPECT_EQ(ServiceName("aservice"), "aservice");
  EXPECT_EQ(ServiceName(""), "");
}

TEST(ServiceUnitTest, IsTheSameForBothNames) {
  EXPECT_EQ(ServiceUnit("ssh"), "ssh.service");
  EXPECT_EQ(ServiceUnit("ssh.service"), "ssh.service");
  EXPECT_EQ(ServiceUnit("org.freedesktop.x"), "org.freedesktop.x.service");
}

// If a name could lead to a unit of another kind, a command about a service could affect that unit.
TEST(ServiceUnitTest, IsAlwaysAService) {
  EXPECT_EQ(ServiceUnit("poweroff.target"), "poweroff.target.service");
  EXPECT_EQ(ServiceUnit("dbus.socket"), "dbus.socket.service");
}

TEST(IsServiceNameTest, AcceptsNamesOfUnits) {
  for (const char* const name :
       {"ssh", "ssh.service", "a", "getty@tty1", "systemd-fsck@dev-disk-by\\x2dlabel-UEFI",
        "dbus-org.freedesktop.login1", "user@1000", "1", "A_b:c", "-a"}) {
    EXPECT_TRUE(IsServiceName(name)) << name;
  }
}

// systemctl would treat such a name as a pattern and change several services.
TEST(IsServiceNameTest, RejectsPatterns) {
  for (const char* const name : {"*", "ssh*", "s?h", "[a-z]*", "ssh.*"}) {
    EXPECT_FALSE(IsServiceName(name)) << name;
  }
}

TEST(IsServiceNameTest, RejectsInvalidNames) {
  for (const char* const name :
       {"", ".service", " ", "a b", "a/b", "/etc/passwd", "../ssh", "a\nb", "a;b", "$(reboot)",
        "\x1b[31m", "caf\xc3\xa9", "a=b", "a,b", "a%b"}) {
    EXPECT_FALSE(IsServiceName(name)) << name;
  }
  EXPECT_FALSE(IsServiceName(std::string_view("a\0b", 3)));
}

TEST(IsServiceNameTest, AcceptsTheLongestName) {
  // The name of a unit has at most 255 bytes, including its ending.
  EXPECT_TRUE(IsServiceName(std::string(247, 'a')));
  EXPECT_TRUE(IsServiceName(std::string(247, 'a') + ".service"));
  EXPECT_FALSE(IsServiceName(std::string(248, 'a')));
}

}  // namespace
}  // namespace Kestrel::Host
