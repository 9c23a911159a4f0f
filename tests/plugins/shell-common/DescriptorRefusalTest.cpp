// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugins/support/CommandCall.h"

// Calls with a missing or invalid parameter of a shipped descriptor, each rejected with one
// message.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;

struct Refusal {
  const char* name;
  const char* command;
  Parameters parameters;
  std::string message;
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.name; }

std::string Regex(const std::string& parameter, const std::string& regex) {
  return "Invalid data constraint for parameter '" + parameter +
         "'. Value does not match the expected regular expression (" + regex + ")";
}

std::string Range(const std::string& parameter, const std::string& range) {
  return "Invalid data constraint for parameter '" + parameter +
         "'. Expected integer in the range " + range;
}

std::string OneOf(const std::string& parameter, const std::string& rest) {
  return "Invalid data constraint for parameter '" + parameter +
         "'. Expected a single value from the set " + rest;
}

class DescriptorRefusalTest : public ::testing::TestWithParam<Refusal> {};

TEST_P(DescriptorRefusalTest, IsReported) {
  EXPECT_THAT(CallErrors(GetParam().command, GetParam().parameters),
              ElementsAre(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(Values, DescriptorRefusalTest,
                         ::testing::Values(Refusal{"Count",
                                                   "network address check",
                                                   {{"address", "a"}, {"count", "21"}},
                                                   Range("count", "1-20")},
                                           Refusal{"Family",
                                                   "network address check",
                                                   {{"address", "a"}, {"family", "5"}},
                                                   OneOf("family", "[4, 6]")},
                                           Refusal{"Salt",
                                                   "system password hash",
                                                   {{"password", "x"}, {"salt", "a$b"}},
                                                   Regex("salt", "[A-Za-z0-9./]{1,16}")},
                                           Refusal{"NoPassword",
                                                   "system password hash",
                                                   {},
                                                   "Missing required parameter --password"}),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace Kestrel::Testing
