// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/Netlink.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <linux/inet_diag.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "plugins/host/network/NetlinkMessages.h"
#include "plugins/host/support/Namespaces.h"
#include "support/Sanitizer.h"

namespace Kestrel::Host {
namespace {

using Testing::AddressBytes;
using Testing::Attribute;
using Testing::Bytes;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::Message;
using ::testing::Pair;
using ::testing::ThrowsMessage;

TEST(NetlinkAttributesTest, FindsAttributesByType) {
  const std::string bytes = Attribute(1, Bytes(std::uint32_t{77})) +
                            Attribute(2, std::string_view("name\0", 5)) + Attribute(3, "x");
  const NetlinkAttributes attributes(bytes);
  EXPECT_TRUE(attributes.Has(3));
  EXPECT_FALSE(attributes.Has(4));
  EXPECT_EQ(attributes.GetNumber(1), 77u);
  EXPECT_EQ(attributes.GetString(2), "name");
  EXPECT_EQ(attributes.Get(3), "x");
  EXPECT_EQ(attributes.Get(4), "");
}

TEST(NetlinkAttributesTest, AStringNeedsNoFinalNul) {
  const std::string bytes = Attribute(1, "name");
  EXPECT_EQ(NetlinkAttributes(bytes).GetString(1), "name");
}

TEST(NetlinkAttributesTest, ANumberThatIsTooShortIs0) {
  const std::string bytes = Attribute(1, "abc");
  EXPECT_EQ(NetlinkAttributes(bytes).GetNumber(1), 0u);
}

TEST(NetlinkAttributesTest, UsesTheLastOfSeveralAttributesOfAType) {
  const std::string bytes = Attribute(1, "a") + Attribute(1, "b");
  EXPECT_EQ(NetlinkAttributes(bytes).Get(1), "b");
}

TEST(NetlinkAttributesTest, TheNestingMarkIsNotPartOfTheType) {
  const std::string bytes = Attribute(NLA_F_NESTED | 18, Attribute(1, "veth"));
  EXPECT_EQ(NetlinkAttributes(NetlinkAttributes(bytes).Get(18)).GetString(1), "veth");
}

TEST(NetlinkAttributesTest, IncompleteAttributesAreReadWithoutHarm) {
  const std::string bytes = Attribute(1, "abc") + Attribute(2, Attribute(3, "defgh"));
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    // A copy, so that a sanitizer detects a read beyond its end.
    const std::string part(bytes, 0, size);
    const NetlinkAttributes attributes(part);
    EXPECT_EQ(attributes.Has(1), size >= 7) << size;
    EXPECT_EQ(attributes.Has(2), size >= 8 + 4 + 12) << size;
  }
}

TEST(NetlinkAttributesTest, AnAttributeShorterThanItsHeaderEndsTheList) {
  nlattr header = {};
  header.nla_len = 3;
  header.nla_type = 1;
  const std::string bytes = Bytes(header) + Attribute(2, "b");
  const NetlinkAttributes attributes(bytes);
  EXPECT_FALSE(attributes.Has(1));
  EXPECT_FALSE(attributes.Has(2));
}

std::vector<std::pair<unsigned, std::string>> Messages(const std::string& bytes) {
  std::vector<std::pair<unsigned, std::string>> messages;
  ForEachNetlinkMessage(bytes, [&messages](const NetlinkMessage& message) {
    messages.emplace_back(message.type, message.body);
  });
  return messages;
}

TEST(NetlinkMessageTest, VisitsEveryMessage) {
  EXPECT_THAT(Messages(Message(16, "abcd") + Message(17, "x") + Message(18, "")),
              ElementsAre(Pair(16u, "abcd"), Pair(17u, "x"), Pair(18u, "")));
}

TEST(NetlinkMessageTest, IncompleteMessagesAreReadWithoutHarm) {
  const std::string bytes = Message(16, "abcd") + Message(17, "x");
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    const std::string part(bytes, 0, size);
    EXPECT_EQ(Messages(part).size(), (size >= 20 ? 1u : 0u) + (size >= 37 ? 1u : 0u)) << size;
  }
}

TEST(NetlinkMessageTest, AMessageShorterThanItsHeaderEndsTheWalk) {
  nlmsghdr header = {};
  header.nlmsg_len = 4;
  EXPECT_THAT(Messages(Bytes(header) + Message(16, "a")), IsEmpty());
}

TEST(NetlinkMessageTest, ABodyThatIsTooShortIsNotRead) {
  const NetlinkMessage message = {16, "abc"};
  std::uint32_t number = 5;
  EXPECT_FALSE(message.Read(number));
  EXPECT_EQ(number, 5u);
  EXPECT_FALSE(message.GetAttributes(8).Has(0));
}

TEST(NetlinkTest, WritesAddresses) {
  EXPECT_EQ(FormatAddress(AddressBytes("127.0.0.1")), "127.0.0.1");
  EXPECT_EQ(FormatAddress(AddressBytes("255.255.255.255")), "255.255.255.255");
  EXPECT_EQ(FormatAddress(AddressBytes("0.10.99.100")), "0.10.99.100");
  EXPECT_EQ(FormatAddress(AddressBytes("fe80::1")), "fe80::1");
  EXPECT_EQ(FormatAddress(""), "");
  EXPECT_EQ(FormatAddress("abc"), "");
}

TEST(NetlinkTest, WritesLinkAddresses) {
  EXPECT_EQ(FormatLinkAddress(std::string("\x02\xfc\x00\xa0\x0f\xff", 6)), "02:fc:00:a0:0f:ff");
  EXPECT_EQ(FormatLinkAddress(""), "");
}

TEST(NetlinkTest, ConvertsFamiliesToNumbers) {
  EXPECT_EQ(FamilyNumber(AF_INET), 4);
  EXPECT_EQ(FamilyNumber(AF_INET6), 6);
  EXPECT_EQ(FamilyNumber(AF_UNIX), 0);
}

TEST(NetlinkTest, ADumpOfTheKernelContainsItsInterfaces) {
  EXPECT_THAT(Messages(DumpRoutingNetlink(RTM_GETLINK, "network interfaces")),
              ::testing::Contains(Pair(RTM_NEWLINK, ::testing::_)));
}

TEST(NetlinkTest, ARequestThatTheKernelDoesNotKnowIsAnError) {
  // In a network namespace of its own, this process has every permission, so a missing permission
  // cannot be the reason for the error.
  const std::string refusal = Testing::RunInNamespaces(CLONE_NEWNET, [] {
    EXPECT_THAT([] { DumpRoutingNetlink(RTM_MAX | 3, "wishes"); },
                ThrowsMessage<KestrelException>(
                    "Unable to ask the kernel for its wishes: Operation not supported"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

// The kernel accepts the request and reports the failure in the message that ends the dump.
TEST(NetlinkTest, ADumpThatTheKernelCannotStartIsAnError) {
  const std::string refusal = Testing::RunInNamespaces(CLONE_NEWNET, [] {
    inet_diag_req_v2 request = {};
    request.sdiag_family = AF_INET;
    request.sdiag_protocol = IPPROTO_GRE;
    EXPECT_THAT(
        [&] {
          DumpNetlink({NETLINK_SOCK_DIAG, SOCK_DIAG_BY_FAMILY, Bytes(request)}, "tunnels");
        },
        ::testing::Throws<NetlinkError>(
            ::testing::Property(&NetlinkError::GetNumber, ::testing::Eq(ENOENT))));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetlinkTest, WithoutASocketThereIsAnError) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  rlimit limit = {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none = {0, limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_THAT([] { DumpRoutingNetlink(RTM_GETLINK, "network interfaces"); },
              ThrowsMessage<KestrelException>(
                  "Unable to ask the kernel for its network interfaces: Too many open files"));
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

}  // namespace
}  // namespace Kestrel::Host
