// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Output.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Kestrel::Lint {
namespace {

using nlohmann::json;

std::vector<Finding> Sample() {
  return {{"a b.xml", {3, 7}, FindRule("version"), "say \"x\"; write\ny"},
          {"\xFF.xml", {1, 1}, FindRule("script-relative"), "it moves; stop it"}};
}

TEST(OutputTest, WritesALineForEachFinding) {
  EXPECT_EQ(WriteText(Sample()),
            "a b.xml:3:7: error: version: say \"x\"; write\\x0ay\n"
            "\xFF.xml:1:1: note: script-relative: it moves; stop it\n");
}

TEST(OutputTest, WritesAnObjectWithTheFindings) {
  const json value = json::parse(WriteJson(Sample()));
  ASSERT_EQ(value["findings"].size(), 2U);
  EXPECT_EQ(value["findings"][0], json({{"file", "a b.xml"},
                                        {"line", 3},
                                        {"column", 7},
                                        {"severity", "error"},
                                        {"rule", "version"},
                                        {"message", "say \"x\"; write\ny"}}));
  EXPECT_EQ(json::parse(WriteJson({})), json({{"findings", json::array()}}));
}

TEST(OutputTest, WritesALogWithAllRules) {
  const json log = json::parse(WriteSarif(Sample()));
  EXPECT_EQ(log["version"], "2.1.0");
  const json& run = log["runs"][0];
  EXPECT_EQ(run["tool"]["driver"]["rules"].size(), GetRules().size());
  const json& result = run["results"][0];
  EXPECT_EQ(result["level"], "error");
  EXPECT_EQ(run["tool"]["driver"]["rules"][result["ruleIndex"].get<std::size_t>()]["id"],
            "version");
  const json& place = result["locations"][0]["physicalLocation"];
  EXPECT_EQ(place["artifactLocation"]["uri"], "a%20b.xml");
  EXPECT_EQ(place["region"]["startLine"], 3);
  EXPECT_EQ(place["region"]["startColumn"], 7);
}

}  // namespace
}  // namespace Kestrel::Lint
