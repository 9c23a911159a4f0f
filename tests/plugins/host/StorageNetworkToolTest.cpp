// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <algorithm>
#include <string>

#include "plugins/host/HostCall.h"
#include "plugins/host/network/Namespaces.h"
#include "support/Golden.h"
#include "support/VexilRun.h"
#include "support/Witness.h"

// The commands below "storage" and "network" as a person sees them.
namespace Kestrel::Testing {
namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;

VexilRun HostRun(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"--screen-width=80", "--plugin", KESTREL_HOST_PLUGIN});
  return VexilRun(std::move(arguments));
}

std::string FileNameOf(const std::string& path) {
  std::string name = path;
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

class StorageNetworkHelpTest : public ::testing::TestWithParam<const char*> {};

TEST_P(StorageNetworkHelpTest, IsAPage) {
  std::vector<std::string> arguments = WordsIn(GetParam());
  arguments.emplace_back("--help");
  const VexilResult result = HostRun(arguments).Run();
  EXPECT_THAT(result.out, MatchesGolden("host/" + FileNameOf(GetParam()) + "-help"));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

INSTANTIATE_TEST_SUITE_P(Commands, StorageNetworkHelpTest,
                         ::testing::Values("storage device list", "storage filesystem list",
                                           "storage mount list", "network address list",
                                           "network connection list", "network counter list",
                                           "network interface get", "network interface list",
                                           "network neighbor list", "network route list"),
                         [](const auto& row) {
                           std::string name = FileNameOf(row.param);
                           name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
                           return name;
                         });

TEST(StorageNetworkToolTest, ASilentFileSystemDoesNotHoldUpTheTool) {
  const VexilResult result =
      HostRun({"--format-param", "fields:StorageFilesystem=Status,Size,Mount Point", "storage",
               "filesystem", "list", "--timeout", "1"})
          .WithEnvironment("LD_PRELOAD", KESTREL_BLOCKED_STATVFS)
          .WithEnvironment("KESTREL_SILENT_PATHS", "/")
          // The sanitizer would have its own library stand first.
          .WithEnvironment("ASAN_OPTIONS", "verify_asan_link_order=0")
          .Run();
  EXPECT_THAT(result.out, HasSubstr("\nno answer  "));
  EXPECT_THAT(result.out, HasSubstr(" 0 MiB  /\n"));
  EXPECT_THAT(result.out, HasSubstr("\nok         "));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST(StorageNetworkToolTest, AMissingInterfaceIsAnErrorOfTheCall) {
  const VexilResult result =
      HostRun({"network", "interface", "get", "--interface", "no-such0"}).Run();
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err, "Errors: \nThere is no network interface named 'no-such0'\n");
  EXPECT_EQ(result.status, 1);
}

TEST(StorageNetworkToolTest, CollectsAllMistakesOfACall) {
  const VexilResult result = HostRun({"network", "address", "list", "--family", "5", "--scope",
                                      "world", "--prefix-length", "200", "--colour", "red"})
                                 .Run();
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(result.err,
            "Errors: \n"
            "Unknown parameter : colour\n"
            "Invalid data constraint for parameter 'family'. Expected a single value from the set "
            "[4, 6]\n"
            "Invalid data constraint for parameter 'prefix-length'. Expected integer in the range "
            "0-128\n"
            "Invalid data constraint for parameter 'scope'. Expected a single value from the set "
            "[global, site, link, host] got 'world'\n");
  EXPECT_EQ(result.status, 1);
}

// A network that does not change by itself: every interface is down.
void MakeStillNetwork() {
  Witness(
      "set -e;"
      "ip link add inside address 02:00:00:00:00:01 type veth peer name outside"
      "  address 02:00:00:00:00:02;"
      "ip link add bridge0 address 02:00:00:00:00:03 type bridge;"
      "ip link set outside master bridge0;"
      "ip address add 192.0.2.5/24 brd + dev inside;"
      "ip address add 2001:db8:1111:2222:3333:4444:5555:6666/64 dev inside;"
      "ip address add 198.51.100.1 peer 198.51.100.2/32 dev bridge0");
}

// The text with '#' in place of the number behind each of the labels.
std::string WithoutNumbers(std::string text, const std::vector<std::string>& labels) {
  for (const std::string& label : labels) {
    for (std::size_t at = text.find(label); at != std::string::npos; at = text.find(label, at)) {
      at += label.size();
      text.replace(at, text.find('\n', at) - at, "#");
    }
  }
  return text;
}

const Parameters kOurInterfaces = {
    {"interface", "inside"}, {"interface", "outside"}, {"interface", "bridge0"}};

TEST(StorageNetworkToolTest, PrintsInterfacesWithTheirAddressesWrapped) {
  const std::string refusal = RunInOwnNetwork([] {
    MakeStillNetwork();
    EXPECT_THAT(PrintHost("network interface list", kOurInterfaces, 80),
                MatchesGolden("host/network-interface-list"));
    EXPECT_THAT(PrintHost("network counter list", kOurInterfaces, 80),
                MatchesGolden("host/network-counter-list"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageNetworkToolTest, PrintsAnInterfaceWithRecordsWithinIt) {
  const std::string refusal = RunInOwnNetwork([] {
    MakeStillNetwork();
    Witness("ip address delete 2001:db8:1111:2222:3333:4444:5555:6666/64 dev inside");
    // The interface's number and what the kernel itself has sent depend on the kernel.
    const std::string text =
        WithoutNumbers(PrintHost("network interface get", {{"interface", "inside"}}, 80),
                       {"Index       : ", "Bytes  : ", "Dropped: ", "Errors : ", "Packets: "});
    EXPECT_THAT(text, MatchesGolden("host/network-interface-get"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageNetworkToolTest, PrintsAddressesRoutesAndNeighbors) {
  const std::string refusal = RunInOwnNetwork([] {
    MakeStillNetwork();
    Witness(
        "set -e; ip link set inside addrgenmode none; ip link set inside up;"
        "ip route add default via 192.0.2.1 metric 50 src 192.0.2.5;"
        "ip route add blackhole 10.4.0.0/16;"
        "ip neighbor add 192.0.2.77 lladdr 02:00:00:00:00:77 dev inside nud permanent");
    const Parameters family = {{"family", "4"}};
    EXPECT_THAT(PrintHost("network address list", {{"family", "4"}, {"interface", "inside"}}, 80),
                MatchesGolden("host/network-address-list"));
    EXPECT_THAT(PrintHost("network route list", family, 80),
                MatchesGolden("host/network-route-list"));
    EXPECT_THAT(PrintHost("network neighbor list", family, 80),
                MatchesGolden("host/network-neighbor-list"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageNetworkToolTest, PrintsMountsAndFileSystems) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    ASSERT_EQ(::mount("outer", "/mnt", "tmpfs", 0, "size=64k"), 0);
    Witness("mkdir '/mnt/a b'");
    ASSERT_EQ(::mount("inner", "/mnt/a b", "tmpfs", MS_RDONLY, "size=2m"), 0);
    EXPECT_THAT(PrintHost("storage mount list", {{"below", "/mnt"}}, 80),
                MatchesGolden("host/storage-mount-list"));
    const std::string filesystems = PrintHost("storage filesystem list", {{"type", "tmpfs"}}, 80);
    EXPECT_THAT(filesystems, HasSubstr("  ok      /mnt\n"));
    EXPECT_THAT(filesystems, HasSubstr("  ok      /mnt/a b\n"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

// What differs from machine to machine may be wide; nothing that we choose is.
TEST(StorageNetworkToolTest, EveryHelpPageFits80Columns) {
  for (const char* const path : {"storage device list", "network connection list"}) {
    std::vector<std::string> arguments = WordsIn(path);
    arguments.emplace_back("--help");
    std::string page = HostRun(arguments).Run().out;
    page.erase(page.find("Examples: "));
    std::vector<std::size_t> lengths;
    for (std::size_t start = 0; start < page.size(); start = page.find('\n', start) + 1) {
      lengths.push_back(page.find('\n', start) - start);
    }
    EXPECT_THAT(lengths, Each(::testing::Le(80u))) << path;
  }
}

}  // namespace
}  // namespace Kestrel::Testing
