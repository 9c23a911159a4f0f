// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "autocli/formatters/results/Formatters.h"
#include "autocli/formatters/results/ResultValues.h"
#include "support/Golden.h"

namespace Kestrel::Testing {
namespace {

using Case = std::tuple<std::string, std::string>;  // a formatter and a group of values

class ResultFormatsTest : public ::testing::TestWithParam<Case> {};

/// Prints all values of a group, each after a line with its name.
std::string PrintGroup(const std::string& formatterName, const std::string& groupName) {
  const auto formatter = MakeFormatter(formatterName);
  std::string text;
  for (const ResultValue& value : MakeResultGroup(groupName).values) {
    const Printed printed = PrintResult(*formatter, value);
    text += "=== " + value.name + "\n" + printed.text;
    if (!printed.thrown.empty()) {
      text += "=== throws: " + printed.thrown + "\n";
    }
  }
  return text;
}

TEST_P(ResultFormatsTest, MatchesTheGoldenFile) {
  const auto& [formatter, group] = GetParam();
  EXPECT_THAT(PrintGroup(formatter, group), MatchesGolden(formatter + "/results-" + group));
}

std::string NameOf(const ::testing::TestParamInfo<Case>& named) {
  return std::get<0>(named.param) + "_" + std::get<1>(named.param);
}

INSTANTIATE_TEST_SUITE_P(All, ResultFormatsTest,
                         ::testing::Combine(::testing::ValuesIn(ResultFormatterNames()),
                                            ::testing::ValuesIn(ResultGroupNames())),
                         NameOf);

}  // namespace
}  // namespace Kestrel::Testing
