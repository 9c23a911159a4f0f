// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/DebianVersion.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace Kestrel::Host {
namespace {

// Versions from the oldest to the newest; those on one line are equal.
const std::vector<std::vector<std::string>> kOrder = {
    {"~~"},
    {"~"},
    {"", "0", "0-0", "0:0", "000"},
    {"0a"},
    {"0+"},
    {"1~rc1-1"},
    {"1~rc2-1"},
    {"1", "1-0", "0:1", "01"},
    {"1-0+deb1"},
    {"1-1~bpo1"},
    {"1-1"},
    {"1-1+b1"},
    {"1-1+b2"},
    {"1-1+b10"},
    {"1-2"},
    {"1-10"},
    {"1a"},
    {"1b"},
    {"1+b"},
    {"1.0"},
    {"1.0-1-1"},
    {"1.0.1"},
    {"1.2"},
    {"1.10"},
    {"2"},
    {"99999999999999999999998"},
    {"99999999999999999999999", "0099999999999999999999999"},
    {"1:0"},
    {"1:0.1"},
    {"2:0"},
    {"10:0"},
};

int Sign(int number) { return number < 0 ? -1 : (number > 0 ? 1 : 0); }

TEST(CompareVersionsTest, OrdersEachPair) {
  for (std::size_t left = 0; left < kOrder.size(); ++left) {
    for (std::size_t right = 0; right < kOrder.size(); ++right) {
      for (const std::string& one : kOrder[left]) {
        for (const std::string& two : kOrder[right]) {
          const int expected = left < right ? -1 : (left > right ? 1 : 0);
          EXPECT_EQ(Sign(CompareVersions(one, two)), expected) << one << " and " << two;
        }
      }
    }
  }
}

bool IsNewerForDpkg(const std::string& one, const std::string& two) {
  const std::string command = "dpkg --compare-versions '" + one + "' gt '" + two + "'";
  return std::system(command.c_str()) == 0;
}

TEST(CompareVersionsTest, AgreesWithDpkg) {
  if (std::system("command -v dpkg >/dev/null 2>&1") != 0) {
    GTEST_SKIP() << "there is no dpkg to compare with";
  }
  // dpkg accepts only a digit at the start of a version.
  std::vector<std::string> versions;
  for (const std::vector<std::string>& same : kOrder) {
    if (!same.front().empty() && same.front()[0] != '~') {
      versions.push_back(same.front());
    }
  }
  for (std::size_t index = 1; index < versions.size(); ++index) {
    EXPECT_TRUE(IsNewerForDpkg(versions[index], versions[index - 1])) << versions[index];
    EXPECT_FALSE(IsNewerForDpkg(versions[index - 1], versions[index])) << versions[index];
  }
}

}  // namespace
}  // namespace Kestrel::Host
