// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/InternetSockets.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <linux/inet_diag.h>
#include <linux/sock_diag.h>
#include <netinet/tcp.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>

#include "plugins/host/network/NetlinkMessages.h"
#include "plugins/host/support/Namespaces.h"
#include "support/ForbiddenCalls.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using Testing::AddressBytes;
using Testing::Attribute;
using Testing::Bytes;
using Testing::Forbid;
using ::testing::IsEmpty;
using Testing::Message;
using ::testing::ThrowsMessage;

// An attribute that a half-open connection lacks, because it is not yet a socket that can be shut
// down.
const std::string kOfSocket = Attribute(INET_DIAG_SHUTDOWN, std::string(1, '\0'));

inet_diag_msg Fixed(unsigned char state, const std::string& local, unsigned short port) {
  inet_diag_msg fixed = {};
  const std::string bytes = AddressBytes(local);
  fixed.idiag_family = bytes.size() == 4 ? AF_INET : AF_INET6;
  fixed.idiag_state = state;
  bytes.copy(reinterpret_cast<char*>(fixed.id.idiag_src), bytes.size());
  fixed.id.idiag_sport = htons(port);
  return fixed;
}

std::string SocketMessage(const inet_diag_msg& fixed) {
  return Message(SOCK_DIAG_BY_FAMILY, Bytes(fixed) + kOfSocket);
}

std::string HalfOpenMessage(const inet_diag_msg& fixed) {
  return Message(SOCK_DIAG_BY_FAMILY, Bytes(fixed) + Attribute(INET_DIAG_MARK, "mark"));
}

std::string ListenerMessage(const std::string& local, unsigned short port, unsigned user) {
  inet_diag_msg fixed = Fixed(TCP_LISTEN, local, port);
  fixed.idiag_uid = user;
  return SocketMessage(fixed);
}

Socket OnlySocket(const std::string& answer, const std::string& protocol = "tcp") {
  const auto sockets = ParseInternetDiagnosis(answer, protocol);
  EXPECT_EQ(sockets.size(), 1u);
  return sockets.empty() ? Socket() : sockets.front();
}

TEST(InternetDiagnosisTest, ReadsEveryField) {
  inet_diag_msg fixed = Fixed(TCP_ESTABLISHED, "192.0.2.5", 49153);
  fixed.id.idiag_dst[0] = inet_addr("198.51.100.9");
  fixed.id.idiag_dport = htons(443);
  fixed.idiag_rqueue = 11;
  fixed.idiag_wqueue = 4294967295;
  fixed.idiag_uid = 4294967294;
  fixed.idiag_inode = 4294967293;
  const Socket socket = OnlySocket(SocketMessage(fixed));
  EXPECT_EQ(socket.protocol, "tcp");
  EXPECT_EQ(socket.type, "stream");
  EXPECT_EQ(socket.state, "established");
  EXPECT_EQ(socket.family, 4);
  EXPECT_EQ(socket.local.ToString(), "192.0.2.5:49153");
  EXPECT_EQ(socket.remote.ToString(), "198.51.100.9:443");
  EXPECT_EQ(socket.receiveQueue, 11);
  EXPECT_EQ(socket.sendQueue, 4294967295);
  EXPECT_EQ(socket.userId, 4294967294);
  EXPECT_EQ(socket.inode, 4294967293);
}

TEST(InternetDiagnosisTest, ReadsAddressesOfVersion6) {
  inet_diag_msg fixed = Fixed(TCP_CLOSE, "fe80::1", 53);
  fixed.id.idiag_if = 3;
  AddressBytes("::ffff:192.0.2.1").copy(reinterpret_cast<char*>(fixed.id.idiag_dst), 16);
  const Socket socket = OnlySocket(SocketMessage(fixed), "udp");
  EXPECT_EQ(socket.protocol, "udp");
  EXPECT_EQ(socket.type, "datagram");
  EXPECT_EQ(socket.state, "unconnected");
  EXPECT_EQ(socket.family, 6);
  EXPECT_EQ(socket.local.ToString(), "[fe80::1]:53");
  EXPECT_EQ(socket.remote.ToString(), "[::ffff:192.0.2.1]:*");
}

TEST(InternetDiagnosisTest, TheSendQueueOfAListenerIsEmpty) {
  inet_diag_msg fixed = Fixed(TCP_LISTEN, "127.0.0.1", 22);
  fixed.idiag_rqueue = 2;
  fixed.idiag_wqueue = 128;
  const Socket socket = OnlySocket(SocketMessage(fixed));
  EXPECT_EQ(socket.state, "listen");
  EXPECT_EQ(socket.receiveQueue, 2);
  EXPECT_EQ(socket.sendQueue, 0);
}

TEST(InternetDiagnosisTest, AnUnknownStateIsNamedUnknown) {
  EXPECT_EQ(OnlySocket(SocketMessage(Fixed(200, "::1", 1))).state, "unknown");
}

struct HalfOpenCase {
  const char* name;
  const char* local;
  std::string listeners;
  long user;
};

class HalfOpenTest : public ::testing::TestWithParam<HalfOpenCase> {};

TEST_P(HalfOpenTest, BelongsToTheUserOfTheListeningSocket) {
  const std::string halfOpen = HalfOpenMessage(Fixed(TCP_SYN_RECV, GetParam().local, 80));
  EXPECT_EQ(ParseInternetDiagnosis(halfOpen + GetParam().listeners, "tcp").front().userId,
            GetParam().user);
  EXPECT_EQ(ParseInternetDiagnosis(GetParam().listeners + halfOpen, "tcp").back().userId,
            GetParam().user);
}

const HalfOpenCase kHalfOpenCases[] = {
    {"NoListener", "192.0.2.1", "", -1},
    {"OtherPort", "192.0.2.1", ListenerMessage("192.0.2.1", 81, 7), -1},
    {"OtherAddress", "192.0.2.1", ListenerMessage("192.0.2.2", 80, 7), -1},
    {"SameAddress", "192.0.2.1", ListenerMessage("192.0.2.1", 80, 7), 7},
    {"AnyAddress", "192.0.2.1", ListenerMessage("0.0.0.0", 80, 7), 7},
    {"SameAddressFirst", "192.0.2.1",
     ListenerMessage("0.0.0.0", 80, 7) + ListenerMessage("192.0.2.1", 80, 8), 8},
    {"Version6", "2001:db8::1", ListenerMessage("::", 80, 7), 7},
    {"Mapped", "::ffff:192.0.2.1", ListenerMessage("::", 80, 7), 7},
    {"AnyMappedFirst", "::ffff:192.0.2.1",
     ListenerMessage("::", 80, 7) + ListenerMessage("::ffff:0.0.0.0", 80, 8), 8},
    {"NotMapped", "2001:db8::1", ListenerMessage("::ffff:0.0.0.0", 80, 7), -1},
};

INSTANTIATE_TEST_SUITE_P(Listeners, HalfOpenTest, ::testing::ValuesIn(kHalfOpenCases),
                         [](const auto& test) { return test.param.name; });

TEST(InternetDiagnosisTest, ASocketInTheHalfOpenStateKeepsItsUser) {
  inet_diag_msg fixed = Fixed(TCP_SYN_RECV, "192.0.2.1", 80);
  fixed.idiag_uid = 9;
  EXPECT_EQ(ParseInternetDiagnosis(ListenerMessage("0.0.0.0", 80, 7) + SocketMessage(fixed), "tcp")
                .back()
                .userId,
            9);
}

TEST(InternetDiagnosisTest, IncompleteMessagesAreReadWithoutHarm) {
  const std::string bytes = ListenerMessage("127.0.0.1", 22, 1);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    // A copy, so that a sanitizer detects a read beyond its end.
    EXPECT_THAT(ParseInternetDiagnosis(std::string(bytes, 0, size), "tcp"), IsEmpty()) << size;
  }
  const std::string fixed = Bytes(Fixed(TCP_LISTEN, "127.0.0.1", 22));
  for (std::size_t size = 0; size <= fixed.size(); ++size) {
    EXPECT_EQ(
        ParseInternetDiagnosis(Message(SOCK_DIAG_BY_FAMILY, fixed.substr(0, size)), "tcp").size(),
        size == fixed.size() ? 1u : 0u)
        << size;
  }
}

TEST(InternetDiagnosisTest, OtherMessagesAreIgnored) {
  inet_diag_msg fixed = Fixed(TCP_LISTEN, "127.0.0.1", 22);
  EXPECT_THAT(ParseInternetDiagnosis(Message(16, Bytes(fixed)), "tcp"), IsEmpty());
  fixed.idiag_family = AF_UNIX;
  EXPECT_THAT(ParseInternetDiagnosis(SocketMessage(fixed), "tcp"), IsEmpty());
  EXPECT_THAT(ParseInternetDiagnosis("", "tcp"), IsEmpty());
}

// ---- the tables, which are read where the kernel does not answer

constexpr const char* kListener =
    "   0: 0100007F:0016 00000000:0000 0A 00000000:00000003 00:00000000 00000000  1000        0 "
    "12345 1 0000000000000000 100 0 0 10 0\n";

// Runs `body` where requests by netlink fail with `error`.
void RunWithoutNetlink(int error, const std::function<void()>& body) {
  const std::string refusal = Testing::RunInNamespaces(CLONE_NEWNET, [&] {
    Forbid(SYS_socket, AF_NETLINK, static_cast<unsigned>(error));
    body();
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

class NoDiagnosisTest : public ::testing::TestWithParam<int> {};

TEST_P(NoDiagnosisTest, TheTablesAreRead) {
  RunWithoutNetlink(GetParam(), [] {
    const Testing::ScopedTempDir folder;
    folder.Write("tcp", kListener);
    folder.Write(
        "tcp6",
        "   0: 00000000000000000000000001000000:0035 00000000000000000000000000000000:0000 0A "
        "00000000:00000000 00:00000000 00000000     0        0 9 2 0 0\n");
    folder.Write("udp", kListener);
    const auto sockets = ReadInternetSockets(folder.GetPath(), "tcp", 4);
    ASSERT_EQ(sockets.size(), 1u);
    EXPECT_EQ(sockets[0].family, 4);
    EXPECT_EQ(sockets[0].inode, 12345);
    const auto sockets6 = ReadInternetSockets(folder.GetPath(), "tcp", 6);
    ASSERT_EQ(sockets6.size(), 1u);
    EXPECT_EQ(sockets6[0].family, 6);
    EXPECT_EQ(sockets6[0].inode, 9);
    EXPECT_EQ(ReadInternetSockets(folder.GetPath(), "udp", 4).at(0).protocol, "udp");
  });
}

INSTANTIATE_TEST_SUITE_P(Errors, NoDiagnosisTest,
                         ::testing::Values(ENOENT, EPROTONOSUPPORT, EAFNOSUPPORT, ESOCKTNOSUPPORT,
                                           EOPNOTSUPP, ENOSYS, ECONNREFUSED, EINVAL, EACCES, EPERM),
                         [](const auto& test) { return strerrorname_np(test.param); });

class FailedDiagnosisTest : public ::testing::TestWithParam<int> {};

TEST_P(FailedDiagnosisTest, IsAnErrorAlthoughThereAreTables) {
  RunWithoutNetlink(GetParam(), [] {
    const Testing::ScopedTempDir folder;
    folder.Write("tcp", kListener);
    EXPECT_THAT([&] { ReadInternetSockets(folder.GetPath(), "tcp", 4); },
                ThrowsMessage<KestrelException>(
                    std::string("Unable to ask the kernel for its tcp sockets: ") +
                    std::strerror(GetParam())));
  });
}

INSTANTIATE_TEST_SUITE_P(Errors, FailedDiagnosisTest,
                         ::testing::Values(EMFILE, ENFILE, ENOMEM, ENOBUFS, EIO),
                         [](const auto& test) { return strerrorname_np(test.param); });

TEST(SocketTableFilesTest, AKernelWithoutIpv6HasOneTable) {
  RunWithoutNetlink(EPROTONOSUPPORT, [] {
    const Testing::ScopedTempDir folder;
    folder.Write("tcp", kListener);
    EXPECT_EQ(ReadInternetSockets(folder.GetPath(), "tcp", 4).size(), 1u);
    EXPECT_THAT(ReadInternetSockets(folder.GetPath(), "tcp", 6), IsEmpty());
  });
}

TEST(SocketTableFilesTest, ATableThatCannotBeReadIsAnError) {
  RunWithoutNetlink(EPROTONOSUPPORT, [] {
    const Testing::ScopedTempDir folder;
    folder.MakeDirectory("udp6");
    folder.Write("udp", kListener);
    EXPECT_THAT([&] { ReadInternetSockets(folder.GetPath(), "tcp", 4); },
                ThrowsMessage<KestrelException>("Unable to read " + folder.GetPath("tcp") +
                                                ": No such file or directory"));
    EXPECT_THAT([&] { ReadInternetSockets(folder.GetPath(), "udp", 6); },
                ThrowsMessage<KestrelException>("Unable to read " + folder.GetPath("udp6") +
                                                ": Is a directory"));
  });
}

}  // namespace
}  // namespace Kestrel::Host
