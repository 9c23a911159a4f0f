// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/UnixSockets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "plugins/host/network/NetlinkMessages.h"

namespace Kestrel::Host {
namespace {

using Testing::Attribute;
using Testing::Bytes;
using ::testing::IsEmpty;
using Testing::Message;

constexpr std::uint16_t kUid = 7;

std::string SocketMessage(std::uint32_t inode, unsigned char type, unsigned char state,
                          const std::string& attributes) {
  unix_diag_msg fixed = {};
  fixed.udiag_family = AF_UNIX;
  fixed.udiag_type = type;
  fixed.udiag_state = state;
  fixed.udiag_ino = inode;
  return Message(SOCK_DIAG_BY_FAMILY, Bytes(fixed) + attributes);
}

Socket OnlySocket(const std::string& answer) {
  const auto sockets = ParseUnixSockets(answer);
  EXPECT_EQ(sockets.size(), 1u);
  return sockets.empty() ? Socket() : sockets.front();
}

TEST(UnixSocketsTest, ReadsEveryAttribute) {
  unix_diag_rqlen queues = {};
  queues.udiag_rqueue = 3;
  queues.udiag_wqueue = 4096;
  const Socket socket = OnlySocket(SocketMessage(4294967295, SOCK_STREAM, TCP_LISTEN,
                                                 Attribute(UNIX_DIAG_NAME, "/run/one two") +
                                                     Attribute(UNIX_DIAG_RQLEN, Bytes(queues)) +
                                                     Attribute(kUid, Bytes(std::uint32_t{1000}))));
  EXPECT_EQ(socket.protocol, "unix");
  EXPECT_EQ(socket.type, "stream");
  EXPECT_EQ(socket.state, "listen");
  EXPECT_EQ(socket.family, 0);
  EXPECT_EQ(socket.path, "/run/one two");
  EXPECT_EQ(socket.remotePath, "");
  EXPECT_EQ(socket.receiveQueue, 3);
  EXPECT_EQ(socket.sendQueue, 4096);
  EXPECT_EQ(socket.userId, 1000);
  EXPECT_EQ(socket.inode, 4294967295);
}

TEST(UnixSocketsTest, ASocketMayHaveNoAttributes) {
  const Socket socket = OnlySocket(SocketMessage(7, SOCK_DGRAM, TCP_CLOSE, ""));
  EXPECT_EQ(socket.path, "");
  EXPECT_EQ(socket.receiveQueue, 0);
  EXPECT_EQ(socket.sendQueue, 0);
  EXPECT_EQ(socket.userId, -1);
}

struct NameCase {
  const char* name;
  std::string bytes;
  std::string path;
};

class UnixSocketNameTest : public ::testing::TestWithParam<NameCase> {};

TEST_P(UnixSocketNameTest, IsOneString) {
  const auto sockets = ParseUnixSockets(
      SocketMessage(1, SOCK_STREAM, TCP_LISTEN, Attribute(UNIX_DIAG_NAME, GetParam().bytes)) +
      SocketMessage(2, SOCK_STREAM, TCP_LISTEN, ""));
  ASSERT_EQ(sockets.size(), 2u) << "no name adds a row";
  EXPECT_EQ(sockets[0].path, GetParam().path);
  EXPECT_EQ(sockets[1].path, "");
}

const NameCase kNames[] = {
    {"File", "/run/x", "/run/x"},
    {"FileWithItsEnd", std::string("/run/x\0", 7), "/run/x"},
    {"AbstractName", std::string("\0hidden", 7), "@hidden"},
    {"AbstractNameWithNuls", std::string("\0a\0b\0", 5), std::string("@a\0b\0", 5)},
    {"EmptyAbstractName", std::string("\0", 1), "@"},
    {"NoName", "", ""},
    {"LineOfAnotherSocket",
     "/x\n0000000000000000: 00000002 00000000 00010000 0001 01 11 /run/forged",
     "/x\n0000000000000000: 00000002 00000000 00010000 0001 01 11 /run/forged"},
    {"ControlCharacters", "/a\x1b[2J\xff", "/a\x1b[2J\xff"},
};
INSTANTIATE_TEST_SUITE_P(Names, UnixSocketNameTest, ::testing::ValuesIn(kNames),
                         [](const auto& row) { return std::string(row.param.name); });

struct NumberCase {
  const char* text;
  unsigned char number;
};

class UnixSocketTypeTest : public ::testing::TestWithParam<NumberCase> {};

TEST_P(UnixSocketTypeTest, IsNamed) {
  EXPECT_EQ(OnlySocket(SocketMessage(1, GetParam().number, TCP_CLOSE, "")).type, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Types, UnixSocketTypeTest,
                         ::testing::Values(NumberCase{"stream", 1}, NumberCase{"datagram", 2},
                                           NumberCase{"seqpacket", 5}, NumberCase{"0", 0},
                                           NumberCase{"255", 255}),
                         [](const auto& row) { return std::string("Is_") + row.param.text; });

class UnixSocketStateTest : public ::testing::TestWithParam<NumberCase> {};

TEST_P(UnixSocketStateTest, IsNamed) {
  EXPECT_EQ(OnlySocket(SocketMessage(1, SOCK_STREAM, GetParam().number, "")).state,
            GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(States, UnixSocketStateTest,
                         ::testing::Values(NumberCase{"connected", 1}, NumberCase{"unconnected", 7},
                                           NumberCase{"listen", 10}, NumberCase{"2", 2},
                                           NumberCase{"255", 255}),
                         [](const auto& row) { return std::string("Is_") + row.param.text; });

std::string Peer(std::uint32_t inode) { return Attribute(UNIX_DIAG_PEER, Bytes(inode)); }

TEST(UnixSocketsTest, TheOtherEndIsNamedWhereverItIsInTheAnswer) {
  const std::string name = Attribute(UNIX_DIAG_NAME, "/run/server");
  const auto sockets =
      ParseUnixSockets(SocketMessage(11, SOCK_STREAM, TCP_ESTABLISHED, Peer(12)) +
                       SocketMessage(12, SOCK_STREAM, TCP_ESTABLISHED, name + Peer(11)) +
                       SocketMessage(13, SOCK_STREAM, TCP_ESTABLISHED, Peer(99)));
  ASSERT_EQ(sockets.size(), 3u);
  EXPECT_EQ(sockets[0].path, "");
  EXPECT_EQ(sockets[0].remotePath, "/run/server");
  EXPECT_EQ(sockets[1].path, "/run/server");
  EXPECT_EQ(sockets[1].remotePath, "");
  EXPECT_EQ(sockets[2].remotePath, "") << "the other end has gone";
}

TEST(UnixSocketsTest, OtherMessagesAreSkipped) {
  unix_diag_msg other = {};
  other.udiag_family = AF_INET;
  EXPECT_THAT(
      ParseUnixSockets(Message(SOCK_DIAG_BY_FAMILY, Bytes(other)) +
                       Message(SOCK_DIAG_BY_FAMILY, "short") + Message(1, std::string(64, '\1'))),
      IsEmpty());
  EXPECT_THAT(ParseUnixSockets(""), IsEmpty());
}

TEST(UnixSocketsTest, EveryShorterAnswerIsReadWithoutHarm) {
  const std::string answer = SocketMessage(
      1, SOCK_STREAM, TCP_LISTEN,
      Attribute(UNIX_DIAG_NAME, "/run/x") + Peer(2) + Attribute(UNIX_DIAG_RQLEN, "1"));
  for (std::size_t size = 0; size <= answer.size(); ++size) {
    // A copy, so that a sanitizer detects a read beyond its end.
    const std::string part(answer, 0, size);
    EXPECT_EQ(ParseUnixSockets(part).size(), size == answer.size() ? 1u : 0u) << size;
  }
}

TEST(UnixSocketsTest, FindsASocketOfThisProcess) {
  int pair[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair), 0);
  struct stat status = {};
  ASSERT_EQ(::fstat(pair[0], &status), 0);
  long found = 0;
  for (const Socket& socket : ReadUnixSockets()) {
    if (socket.inode == static_cast<long>(status.st_ino)) {
      ++found;
      EXPECT_EQ(socket.type, "seqpacket");
      EXPECT_EQ(socket.state, "connected");
    }
  }
  EXPECT_EQ(found, 1);
  ::close(pair[0]);
  ::close(pair[1]);
}

}  // namespace
}  // namespace Kestrel::Host
