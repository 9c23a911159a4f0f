// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/SocketTables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Kestrel::Host {
namespace {

using ::testing::IsEmpty;

constexpr const char* kHeader =
    "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout "
    "inode\n";
constexpr const char* kListener =
    "   0: 0100007F:0016 00000000:0000 0A 00000000:00000003 00:00000000 00000000  1000        0 "
    "12345 1 0000000000000000 100 0 0 10 0\n";
constexpr const char* kConnection =
    "  11: 050200C0:C001 090200C0:01BB 01 0000000A:0000000B 02:000A7214 00000000     0        0 "
    "777 2 0000000000000000 20 4 30 10 -1\n";

TEST(SocketTablesTest, ReadsInternetSockets) {
  const auto sockets =
      ParseInternetSockets(std::string(kHeader) + kListener + kConnection, "tcp", 4);
  ASSERT_EQ(sockets.size(), 2u);
  EXPECT_EQ(sockets[0].protocol, "tcp");
  EXPECT_EQ(sockets[0].type, "stream");
  EXPECT_EQ(sockets[0].family, 4);
  EXPECT_EQ(sockets[0].state, "listen");
  EXPECT_EQ(sockets[0].local.ToString(), "127.0.0.1:22");
  EXPECT_EQ(sockets[0].remote.ToString(), "0.0.0.0:*");
  EXPECT_EQ(sockets[0].receiveQueue, 3);
  EXPECT_EQ(sockets[0].userId, 1000);
  EXPECT_EQ(sockets[0].inode, 12345);
  EXPECT_EQ(sockets[1].state, "established");
  EXPECT_EQ(sockets[1].local.address, "192.0.2.5");
  EXPECT_EQ(sockets[1].local.port, 49153);
  EXPECT_EQ(sockets[1].remote.address, "192.0.2.9");
  EXPECT_EQ(sockets[1].remote.port, 443);
  EXPECT_EQ(sockets[1].sendQueue, 10);
  EXPECT_EQ(sockets[1].receiveQueue, 11);
}

TEST(SocketTablesTest, ReadsInternetSocketsOfVersion6) {
  const auto sockets = ParseInternetSockets(
      "   0: 00000000000000000000000001000000:0035 B80D0120000000000000000002000000:0000 07 "
      "00000000:00000000 00:00000000 00000000     0        0 9 2 0 0\n",
      "udp", 6);
  ASSERT_EQ(sockets.size(), 1u);
  EXPECT_EQ(sockets[0].type, "datagram");
  EXPECT_EQ(sockets[0].state, "unconnected");
  EXPECT_EQ(sockets[0].local.ToString(), "[::1]:53");
  EXPECT_EQ(sockets[0].remote.ToString(), "[2001:db8::2]:*");
}

TEST(SocketTablesTest, StatesHaveNames) {
  const std::vector<std::string> names = {
      "unknown",    "established", "syn-sent",     "syn-received", "fin-wait-1",
      "fin-wait-2", "time-wait",   "closed",       "close-wait",   "last-ack",
      "listen",     "closing",     "syn-received", "unknown"};
  const std::string digits = "0123456789ABCD";
  for (std::size_t state = 0; state < names.size(); ++state) {
    std::string line = kListener;
    line.replace(line.find(" 0A "), 4, std::string(" 0") + digits[state] + " ");
    EXPECT_EQ(ParseInternetSockets(line, "tcp", 4).at(0).state, names[state]);
  }
}

TEST(SocketTablesTest, EveryShorterLineIsReadWithoutHarm) {
  const std::string line = kListener;
  const std::size_t needed = line.find("12345") + 1;
  for (std::size_t size = 0; size < line.size(); ++size) {
    const std::string part(line, 0, size);
    EXPECT_EQ(ParseInternetSockets(part, "tcp", 4).size(), size >= needed ? 1u : 0u) << size;
  }
}

struct DamageCase {
  const char* name;
  const char* from;
  const char* to;
};

class DamagedSocketTest : public ::testing::TestWithParam<DamageCase> {};

TEST_P(DamagedSocketTest, IsSkipped) {
  std::string line = kListener;
  line.replace(line.find(GetParam().from), std::string(GetParam().from).size(), GetParam().to);
  EXPECT_THAT(ParseInternetSockets(line, "tcp", 4), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Damages, DamagedSocketTest,
    ::testing::Values(DamageCase{"AddressTooShort", "0100007F:0016", "0100007:0016"},
                      DamageCase{"AddressNoNumber", "0100007F:0016", "010000xF:0016"},
                      DamageCase{"NoColon", "0100007F:0016", "0100007F0016"},
                      DamageCase{"PortNoNumber", "0100007F:0016", "0100007F:zz"},
                      DamageCase{"RemoteEnd", "00000000:0000", "0:0"},
                      DamageCase{"State", " 0A ", " zz "},
                      DamageCase{"Queues", "00000000:00000003", "0000000000000003"},
                      DamageCase{"SendQueue", "00000000:00000003", "x:00000003"},
                      DamageCase{"ReceiveQueue", "00000000:00000003", "00000000:x"},
                      DamageCase{"User", " 1000 ", " root "}, DamageCase{"Inode", "12345", "1x"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(SocketTablesTest, EmptyTablesContainNothing) {
  EXPECT_THAT(ParseInternetSockets("", "tcp", 4), IsEmpty());
  EXPECT_THAT(ParseInternetSockets(kHeader, "tcp", 4), IsEmpty());
}

struct EndpointCase {
  const char* name;
  const char* address;
  long port;
  const char* text;
};

const EndpointCase kEndpoints[] = {
    {"None", "", 80, ""},
    {"Ipv4", "192.0.2.1", 80, "192.0.2.1:80"},
    {"Ipv4AnyPort", "0.0.0.0", 0, "0.0.0.0:*"},
    {"Ipv6", "2001:db8::1", 443, "[2001:db8::1]:443"},
    {"Ipv6AnyPort", "::", 0, "[::]:*"},
    {"Ipv4InIpv6", "::ffff:192.0.2.1", 22, "[::ffff:192.0.2.1]:22"},
    {"LargestPort", "127.0.0.1", 65535, "127.0.0.1:65535"},
};

class SocketEndpointTest : public ::testing::TestWithParam<EndpointCase> {};

TEST_P(SocketEndpointTest, IsWritten) {
  const SocketEndpoint endpoint = {GetParam().address, GetParam().port};
  EXPECT_EQ(endpoint.ToString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Endpoints, SocketEndpointTest, ::testing::ValuesIn(kEndpoints),
                         [](const auto& test) { return test.param.name; });

TEST(SocketTablesTest, AQueueTooLargeForALongAffectsOnlyItsLine) {
  std::string line = kListener;
  line.replace(line.find("00000000:00000003"), 17, "FFFFFFFFFFFFFFFF:0");
  EXPECT_THAT(ParseInternetSockets(line, "tcp", 4), IsEmpty());
  EXPECT_EQ(ParseInternetSockets(line + kConnection, "tcp", 4).size(), 1u);
}

TEST(SocketTablesTest, ALastLineNeedsNoLineFeed) {
  std::string line = kListener;
  line.pop_back();
  EXPECT_EQ(ParseInternetSockets(line, "tcp", 4).size(), 1u);
}

}  // namespace
}  // namespace Kestrel::Host
