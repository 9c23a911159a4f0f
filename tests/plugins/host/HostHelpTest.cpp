// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "plugins/host/support/HostRun.h"
#include "support/Golden.h"
#include "support/Witness.h"

// The help pages of all commands on a screen of 80 columns.
namespace Kestrel::Testing {
namespace {

using ::testing::Each;
using ::testing::Le;

class HostHelpTest : public ::testing::TestWithParam<const char*> {
 protected:
  // Returns the path with `separator` between its words.
  static std::string Path(const char* path, const char* separator) {
    std::string joined;
    for (const std::string& word : WordsIn(path)) {
      joined += (joined.empty() ? "" : separator) + word;
    }
    return joined;
  }

  static VexilResult Help() {
    std::vector<std::string> arguments = WordsIn(GetParam());
    arguments.emplace_back("--help");
    return HostRun(arguments).Run();
  }
};

TEST_P(HostHelpTest, PrintsTheRecordedPage) {
  const VexilResult result = Help();
  EXPECT_THAT(result.out, MatchesGolden("host/" + Path(GetParam(), "-") + "-help"));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

// The lines of the examples may be longer than the screen, because they are not wrapped.
TEST_P(HostHelpTest, FitsTheScreenUpToItsExamples) {
  std::string page = Help().out;
  ASSERT_NE(page.find("Examples: "), std::string::npos);
  page.erase(page.find("Examples: "));
  std::vector<std::size_t> lengths;
  for (std::size_t start = 0; start < page.size(); start = page.find('\n', start) + 1) {
    lengths.push_back(page.find('\n', start) - start);
  }
  EXPECT_THAT(lengths, Each(Le(80u)));
}

std::string NameOf(const ::testing::TestParamInfo<const char*>& row) {
  std::string name = row.param;
  name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
  return name;
}

INSTANTIATE_TEST_SUITE_P(
    Commands, HostHelpTest,
    ::testing::Values(
        "system account groups", "system account list", "system clock get", "system cpu count",
        "system cpu list", "system cpu usage list", "system crontab list", "system device list",
        "system load get", "system memory get", "system module check", "system module list",
        "system parameter get", "system parameter list", "system parameter set",
        "system process list", "system process signal", "system session list", "system timer list",
        "system uptime get", "system version get", "storage device counter list",
        "storage device list", "storage filesystem list", "storage mount list",
        "storage usage list", "network address list", "network connection list",
        "network counter list", "network dns list", "network port list", "network interface get",
        "network interface list", "network neighbor list", "network route list", "log kernel list",
        "log list", "package check", "package files", "package get", "package list",
        "package upgradable list", "service disable", "service enable", "service get",
        "service list", "service restart", "service start", "service stop"),
    NameOf);

#ifdef KESTREL_HOST_HAS_ALL_COMMANDS
INSTANTIATE_TEST_SUITE_P(CommandsThatNeedLibraries, HostHelpTest,
                         ::testing::Values("file checksum", "file members"), NameOf);
#endif

}  // namespace
}  // namespace Kestrel::Testing
