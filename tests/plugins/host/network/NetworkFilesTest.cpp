// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugins/host/network/MadeUpEtc.h"
#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/Rows.h"
#include "support/Witness.h"

// The commands that read files which the administrator edits: `network dns list` and
// `network port list`.
namespace Kestrel::Testing {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr const char* kDns = "network dns list";
constexpr const char* kPorts = "network port list";

// ---- network dns list

TEST(NetworkDnsListTest, HasTheServersOfThisMachine) {
  const auto servers =
      WitnessLines("awk '$1 == \"nameserver\" { print $2 }' /etc/resolv.conf 2>/dev/null || :");
  std::vector<std::string> listed;
  for (const Row& row : CallRows(kDns, {{"kind", "server"}})) {
    if (row.at("Source") == "/etc/resolv.conf") {
      listed.push_back(row.at("Value"));
    }
  }
  EXPECT_EQ(listed, servers);
}

TEST(NetworkDnsListTest, PrintsATable) {
  const Files files = {{"resolv.conf",
                        "nameserver 192.0.2.53\n"
                        "nameserver 10.0.0.300\n"
                        "nameserver 10.0.0.1\n"
                        "search example.org a\x1b[2Jb\n"
                        "options edns0 timeout:2\n"}};
  const std::string refusal = RunWithEtc(files, [] {
    EXPECT_EQ(Print(kDns, {}, 80),
              "Kind    Value        Used   Source\n"
              "------  -----------  -----  ------\n"
              "server  192.0.2.53   true   /etc/resolv.conf\n"
              "server  10.0.0.300   false  /etc/resolv.conf\n"
              "server  10.0.0.1     true   /etc/resolv.conf\n"
              "search  example.org  true   /etc/resolv.conf\n"
              "search  a\\x1b[2Jb    true   /etc/resolv.conf\n"
              "option  edns0        true   /etc/resolv.conf\n"
              "option  timeout:2    true   /etc/resolv.conf\n");
    EXPECT_THAT(CallColumn(kDns, "Position", {{"kind", "option"}}), ElementsAre("1", "2"));
    EXPECT_THAT(CallColumn(kDns, "Value", {{"kind", "SEARCH"}, {"k", "Option"}}), SizeIs(4));
    EXPECT_THAT(CallRows(kDns, {{"kind", "sortlist"}}), IsEmpty());
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkDnsListTest, AMachineWithoutSettingsUsesItselfAsServer) {
  const std::string refusal = RunWithEtc({}, [] {
    EXPECT_THAT(CallRows(kDns), ElementsAre(Row({{"Kind", "server"},
                                                 {"Value", "127.0.0.1"},
                                                 {"Position", "1"},
                                                 {"Used", "true"},
                                                 {"Source", "default"}})));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

// ---- network port list

TEST(NetworkPortListTest, AgreesWithGetent) {
  std::vector<std::string> witness;
  for (const std::string& line : WitnessLines("getent services")) {
    witness.push_back(Joined(WordsIn(line)));
  }
  std::vector<std::string> listed;
  for (const Row& row : CallRows(kPorts)) {
    const std::string aliases = row.at("Aliases").empty() ? "" : ", " + row.at("Aliases");
    listed.push_back(row.at("Service") + ", " + row.at("Port") + "/" + row.at("Protocol") +
                     aliases);
  }
  EXPECT_THAT(witness, Not(IsEmpty()));
  EXPECT_EQ(listed, witness);
}

const Files kServices = {{"services",
                          "ssh 22/tcp\n"
                          "domain 53/tcp\n"
                          "domain 53/udp\n"
                          "http 80/tcp www web # the web\n"
                          "https 443/tcp\n"
                          "https 443/udp\n"
                          "lab 4000/sctp l\x1b[2Jb\n"}};

struct PortCase {
  const char* name;
  Parameters parameters;
  std::vector<std::string> services;  // with their protocols
};

const PortCase kPortCases[] = {
    {"Everything",
     {},
     {"ssh/tcp", "domain/tcp", "domain/udp", "http/tcp", "https/tcp", "https/udp", "lab/sctp"}},
    {"Port", {{"port", "53"}}, {"domain/tcp", "domain/udp"}},
    {"Ports", {{"port", "22"}, {"P", "+080"}}, {"ssh/tcp", "http/tcp"}},
    {"PortWithoutService", {{"port", "65535"}}, {}},
    {"Protocol", {{"protocol", "sctp"}}, {"lab/sctp"}},
    {"ProtocolInUpperCase", {{"protocol", "UDP"}}, {"domain/udp", "https/udp"}},
    {"Name", {{"name", "http"}}, {"http/tcp"}},
    {"Alias", {{"name", "www"}}, {"http/tcp"}},
    {"Pattern", {{"name", "http*"}}, {"http/tcp", "https/tcp", "https/udp"}},
    {"PatternOfAnAlias", {{"n", "we*"}}, {"http/tcp"}},
    {"UnknownName", {{"name", "HTTP"}}, {}},
    {"Together", {{"name", "*s"}, {"protocol", "udp"}, {"port", "443"}}, {"https/udp"}},
};

class PortFilterTest : public ::testing::TestWithParam<PortCase> {};

TEST_P(PortFilterTest, ListsTheSelectedServices) {
  const std::string refusal = RunWithEtc(kServices, [] {
    std::vector<std::string> services;
    for (const Row& row : CallRows(kPorts, GetParam().parameters)) {
      services.push_back(row.at("Service") + "/" + row.at("Protocol"));
    }
    EXPECT_EQ(services, GetParam().services);
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

INSTANTIATE_TEST_SUITE_P(Filters, PortFilterTest, ::testing::ValuesIn(kPortCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(NetworkPortListTest, PrintsATable) {
  const std::string refusal = RunWithEtc(kServices, [] {
    EXPECT_EQ(Print(kPorts, {{"name", "http*"}, {"name", "lab"}}, 80),
              "Port  Protocol  Service  Aliases\n"
              "----  --------  -------  -------\n"
              "  80  tcp       http     www, web\n"
              " 443  tcp       https    \n"
              " 443  udp       https    \n"
              "4000  sctp      lab      l\\x1b[2Jb\n");
    EXPECT_THAT(CallErrors(kPorts, {{"protocol", "icmp"}}),
                ElementsAre("There is no such protocol: 'icmp'; --protocol is one of: sctp, tcp, "
                            "udp"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkPortListTest, ReportsThatTheFileIsMissing) {
  const std::string refusal = RunWithEtc({}, [] {
    EXPECT_THAT(CallErrors(kPorts),
                ElementsAre("Unable to read /etc/services: No such file or directory"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(NetworkPortListTest, NamesThePortsOfThisMachineAsGetentDoes) {
  for (const char* const port : {"22/tcp", "53/tcp", "53/udp"}) {
    const std::string text = port;
    const std::string service = Witness("getent services " + text + " | awk '{ print $1 }'");
    ASSERT_NE(service, "") << "The host does not name port " << port;
    EXPECT_THAT(
        CallColumn(kPorts, "Service", {{"port", text.substr(0, 2)}, {"protocol", text.substr(3)}}),
        AllOf(SizeIs(1), Each(service.substr(0, service.size() - 1))));
  }
}

}  // namespace
}  // namespace Kestrel::Testing
