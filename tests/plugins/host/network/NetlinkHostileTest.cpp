// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <sys/socket.h>

#include <cstdint>
#include <random>
#include <string>

#include "plugins/host/network/InternetSockets.h"
#include "plugins/host/network/NetlinkMessages.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkRoutes.h"
#include "plugins/host/network/UnixSockets.h"

// Messages that no kernel sends. The parsers must read them safely, and no message may result in
// more than one entry.
namespace Kestrel::Host {
namespace {

using Testing::Attribute;
using Testing::Bytes;
using Testing::Message;

constexpr int kAnswers = 300;

// Calls every parser, and returns the total number of entries found.
std::size_t ParseAll(const std::string& answer) {
  return ParseLinks(answer).size() + ParseAddresses(answer).size() + ParseRoutes(answer).size() +
         ParseNeighbors(answer).size() + ParseUnixSockets(answer).size() +
         ParseInternetDiagnosis(answer, "tcp").size();
}

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  std::size_t Below(std::size_t limit) { return engine_() % limit; }

  std::string Text(std::size_t size) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
      byte = static_cast<char>(engine_() & 0xff);
    }
    return bytes;
  }

 private:
  std::minstd_rand engine_;
};

constexpr std::uint16_t kTypes[] = {RTM_NEWLINK, RTM_NEWADDR, RTM_NEWROUTE, RTM_NEWNEIGH,
                                    SOCK_DIAG_BY_FAMILY};

TEST(NetlinkHostileTest, RandomBytesYieldAtMostOneEntryPerHeaderThatFits) {
  Random random(1);
  for (int answer = 0; answer < kAnswers; ++answer) {
    const std::string bytes = random.Text(random.Below(200));
    EXPECT_LE(ParseAll(bytes), bytes.size() / sizeof(nlmsghdr)) << answer;
  }
}

TEST(NetlinkHostileTest, AMessageOfAnyContentIsOneEntryAtMost) {
  Random random(2);
  for (int answer = 0; answer < kAnswers; ++answer) {
    const std::uint16_t type = kTypes[random.Below(std::size(kTypes))];
    EXPECT_LE(ParseAll(Message(type, random.Text(random.Below(120)))), 1u) << answer;
  }
}

TEST(NetlinkHostileTest, AttributesOfAnyContentDoNotRemoveTheEntry) {
  Random random(3);
  for (int answer = 0; answer < kAnswers; ++answer) {
    std::string attributes;
    for (std::size_t count = random.Below(6); count > 0; --count) {
      attributes +=
          Attribute(static_cast<std::uint16_t>(random.Below(64)), random.Text(random.Below(40)));
    }
    rtmsg fixed = {};
    fixed.rtm_family = answer % 2 == 0 ? AF_INET : AF_INET6;
    EXPECT_EQ(ParseRoutes(Message(RTM_NEWROUTE, Bytes(fixed) + attributes)).size(), 1u) << answer;
    EXPECT_EQ(ParseLinks(Message(RTM_NEWLINK, Bytes(ifinfomsg()) + attributes)).size(), 1u)
        << answer;
  }
}

TEST(NetlinkHostileTest, AnAttributeWithAWrongLengthEndsTheList) {
  for (const std::uint16_t claimed : {0, 1, 3, 9, 255, 65535}) {
    nlattr header = {};
    header.nla_len = claimed;
    header.nla_type = UNIX_DIAG_NAME;
    unix_diag_msg fixed = {};
    fixed.udiag_family = AF_UNIX;
    fixed.udiag_ino = 5;
    const auto sockets = ParseUnixSockets(
        Message(SOCK_DIAG_BY_FAMILY, Bytes(fixed) + Bytes(header) + std::string("name")));
    ASSERT_EQ(sockets.size(), 1u) << claimed;
    EXPECT_EQ(sockets[0].path, "") << claimed;
    EXPECT_EQ(sockets[0].inode, 5) << claimed;
  }
}

TEST(NetlinkHostileTest, AMessageWithAWrongLengthEndsTheAnswer) {
  const std::string first = Message(RTM_NEWLINK, Bytes(ifinfomsg()));
  for (const std::uint32_t claimed : {0u, 1u, 15u, 1000u, 0xffffffffu}) {
    nlmsghdr header = {};
    header.nlmsg_len = claimed;
    header.nlmsg_type = RTM_NEWLINK;
    const std::string second = Bytes(header) + Bytes(ifinfomsg());
    EXPECT_EQ(ParseLinks(first + second + first).size(), 1u) << claimed;
  }
}

// An address has 4 or 16 bytes.
TEST(NetlinkHostileTest, AnAddressOfAnotherLengthIsIgnored) {
  for (std::size_t size = 0; size < 40; ++size) {
    rtmsg fixed = {};
    fixed.rtm_family = AF_INET6;
    fixed.rtm_dst_len = 8;
    const auto routes = ParseRoutes(
        Message(RTM_NEWROUTE, Bytes(fixed) + Attribute(RTA_PREFSRC, std::string(size, '\x20'))));
    ASSERT_EQ(routes.size(), 1u);
    EXPECT_EQ(routes[0].source.empty(), size != 4 && size != 16) << size;
  }
}

TEST(NetlinkHostileTest, AStringEndsAtItsFirstNul) {
  const auto links = ParseLinks(Message(
      RTM_NEWLINK, Bytes(ifinfomsg()) + Attribute(IFLA_IFNAME, std::string("eth0\0forged", 11))));
  ASSERT_EQ(links.size(), 1u);
  EXPECT_EQ(links[0].name, "eth0");
}

TEST(NetlinkHostileTest, UsesTheLastOfTwoAttributesOfAType) {
  const auto links =
      ParseLinks(Message(RTM_NEWLINK, Bytes(ifinfomsg()) + Attribute(IFLA_IFNAME, "first") +
                                          Attribute(IFLA_IFNAME, "last")));
  ASSERT_EQ(links.size(), 1u);
  EXPECT_EQ(links[0].name, "last");
}

}  // namespace
}  // namespace Kestrel::Host
