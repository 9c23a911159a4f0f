// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/ServicePorts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>

#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

TEST(ServicePortsTest, ReadsEveryPartOfALine) {
  const auto ports = ParseServicePorts(
      "# services\n"
      "http\t\t80/tcp\t\twww web # the web\n"
      "ssh 22/tcp");
  ASSERT_EQ(ports.size(), 2u);
  EXPECT_EQ(ports[0].port, 80);
  EXPECT_EQ(ports[0].protocol, "tcp");
  EXPECT_EQ(ports[0].service, "http");
  EXPECT_THAT(ports[0].aliases, ElementsAre("www", "web"));
  EXPECT_EQ(ports[1].port, 22);
  EXPECT_EQ(ports[1].service, "ssh");
  EXPECT_THAT(ports[1].aliases, IsEmpty());
}

struct LineCase {
  const char* name;
  const char* line;
  long port;  // -1 if the line is skipped
};

class ServiceLineTest : public ::testing::TestWithParam<LineCase> {};

TEST_P(ServiceLineTest, IsReadOrSkipped) {
  const auto ports = ParseServicePorts(GetParam().line);
  if (GetParam().port < 0) {
    EXPECT_THAT(ports, IsEmpty());
  } else {
    ASSERT_EQ(ports.size(), 1u);
    EXPECT_EQ(ports[0].port, GetParam().port);
  }
}

constexpr LineCase kLines[] = {
    {"Lowest", "x 0/udp", 0},
    {"Highest", "x 65535/udp", 65535},
    {"TooHigh", "x 65536/udp", -1},
    {"FarTooHigh", "x 99999999999999999999/udp", -1},
    {"Negative", "x -1/udp", -1},
    {"SpacesBefore", "  x 7/tcp", 7},
    {"LeadingZeros", "x 007/tcp", 7},
    {"CarriageReturn", "x 7/tcp\r", 7},
    {"Empty", "", -1},
    {"Comment", "#x 7/tcp", -1},
    {"CommentInstead", "x #7/tcp", -1},
    {"NoPort", "x", -1},
    {"NoNumber", "x tcp", -1},
    {"NoSlash", "x 7", -1},
    {"NoProtocol", "x 7/", -1},
    {"NoPortNumber", "x /tcp", -1},
    {"Hexadecimal", "x 0x7/tcp", -1},
    {"DigitsAndMore", "x 7a/tcp", -1},
};
INSTANTIATE_TEST_SUITE_P(Lines, ServiceLineTest, ::testing::ValuesIn(kLines),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ServicePortsTest, ReadsTheFileOfTheMachine) {
  const ScopedTempDir root;
  root.Write("etc/services", "x 7/tcp\n");
  EXPECT_EQ(ReadServicePorts(root.GetPath()).size(), 1u);
  root.Write("etc/services", "");
  EXPECT_THAT(ReadServicePorts(root.GetPath()), IsEmpty());
}

TEST(ServicePortsTest, AMissingFileIsAnError) {
  const ScopedTempDir root;
  EXPECT_THAT([&] { ReadServicePorts(root.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + root.GetPath("etc/services") +
                                              ": No such file or directory"));
}

}  // namespace
}  // namespace Kestrel::Host
