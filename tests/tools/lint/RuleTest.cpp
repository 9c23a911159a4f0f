// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "tools/lint/Lint.h"
#include "tools/lint/Output.h"
#include "tools/lint/Rules.h"

namespace Kestrel::Lint {
namespace {

/// A file that breaks one rule in one place. Its name begins with that of the rule.
struct BadFile {
  const char* name;
  std::size_t line;
  std::size_t column;
};

void PrintTo(const BadFile& file, std::ostream* out) { *out << file.name; }

std::string RuleOf(const BadFile& file) {
  const std::string name = file.name;
  return name.substr(0, name.find('.'));
}

const std::vector<BadFile>& GetBadFiles() {
  static const std::vector<BadFile> files = {
      {"attribute-missing.xml", 10, 5},
      {"attribute-unknown.xml", 22, 9},
      {"changed-quotes.xml", 42, 65},
      {"changed-value.xml", 42, 74},
      {"constraint-everything.xml", 19, 13},
      {"constraint-invalid.xml", 18, 11},
      {"constraint-nothing.xml", 25, 13},
      {"constraint-type.xml", 18, 11},
      {"content-cut.xml", 42, 16},
      {"description-marker.xml", 23, 11},
      {"description-missing.xml", 10, 5},
      {"document-type.xml", 1, 1},
      {"element-missing.xml", 10, 5},
      {"element-twice.xml", 12, 7},
      {"element-unexpected.xml", 13, 9},
      {"element-unknown.xml", 18, 11},
      {"encoding.xml", 1, 1},
      {"execute-keyword.xml", 42, 7},
      {"execute-missing.xml", 42, 7},
      {"field-empty.xml", 34, 13},
      {"fields-unknown.xml", 39, 9},
      {"file-suffix.descriptor", 1, 1},
      {"flag-required.xml", 22, 9},
      {"format-parameter-unknown.xml", 39, 9},
      {"formatter-missing.xml", 37, 7},
      {"formatter-shape.xml", 36, 9},
      {"formatter-unknown.xml", 38, 9},
      {"marker-kind.xml", 42, 65},
      {"marker-malformed.xml", 42, 65},
      {"marker-misspelt.xml", 42, 65},
      {"marker-nesting.xml", 42, 55},
      {"marker-outside-if.xml", 42, 35},
      {"marker-place.xml", 42, 44},
      {"marker-program.xml", 42, 34},
      {"marker-unclosed.xml", 42, 65},
      {"marker-unknown.xml", 42, 86},
      {"meta-data-key.xml", 13, 9},
      {"meta-data-parameter.xml", 13, 9},
      {"meta-data-twice.xml", 14, 9},
      {"meta-data-value.xml", 13, 9},
      {"namespace-incomplete.xml", 5, 5},
      {"not-well-formed.xml", 42, 83},
      {"number-cut.xml", 19, 13},
      {"parameter-duplicate.xml", 28, 9},
      {"parameter-name.xml", 22, 9},
      {"parameter-required.xml", 22, 9},
      {"parameter-secret.xml", 16, 9},
      {"parameter-short-name.xml", 22, 9},
      {"parameter-type.xml", 22, 9},
      {"parameter-untypable.xml", 16, 9},
      {"parameter-unused.xml", 22, 9},
      {"path-duplicate.xml", 17, 5},
      {"path-name.xml", 10, 5},
      {"path-undeclared.xml", 10, 5},
      {"regex-exponential.xml", 25, 13},
      {"regex-invalid.xml", 25, 13},
      {"regex-space.xml", 25, 13},
      {"script-missing.xml", 42, 7},
      {"script-not-executable.xml", 42, 7},
      {"script-relative.xml", 42, 7},
      {"secret-on-command-line.xml", 42, 65},
      {"shape-invalid.xml", 33, 32},
      {"shape-missing.xml", 29, 7},
      {"suppression-reason.xml", 13, 9},
      {"suppression-unknown.xml", 13, 9},
      {"suppression-unused.xml", 13, 9},
      {"text-ignored.xml", 16, 9},
      {"unsafe-command.xml", 42, 66},
      {"unsafe-option.xml", 42, 58},
      {"unsafe-word.xml", 42, 64},
      {"version.xml", 3, 3},
  };
  return files;
}

class BadFileTest : public ::testing::TestWithParam<BadFile> {};

TEST_P(BadFileTest, HasOneFindingAtItsPlace) {
  const BadFile& file = GetParam();
  const std::string path = std::string(KESTREL_RULE_DATA_DIR) + "/" + file.name;
  const LintResult result = LintFiles({path}, {});
  ASSERT_EQ(result.findings.size(), 1U) << WriteText(result.findings);
  EXPECT_EQ(result.findings[0].rule->id, RuleOf(file));
  EXPECT_EQ(result.findings[0].position.line, file.line);
  EXPECT_EQ(result.findings[0].position.column, file.column);
}

TEST_P(BadFileTest, HasNoFindingOnceTheRuleIsSuppressed) {
  const BadFile& file = GetParam();
  const std::string path = std::string(KESTREL_RULE_DATA_DIR) + "/" + file.name;
  EXPECT_THAT(LintFiles({path}, {RuleOf(file)}).findings, ::testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Rules, BadFileTest, ::testing::ValuesIn(GetBadFiles()),
                         [](const auto& tested) {
                           std::string name = RuleOf(tested.param);
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

// These rules are about shared objects, or about files that have another finding too. Their tests
// are in MistakeTest.cpp and LintTest.cpp.
const std::set<std::string>& GetRulesWithoutFile() {
  static const std::set<std::string> rules = {
      "example-invalid",   "object-crash", "object-declaration", "object-entry-point",
      "object-exception",  "object-hang",  "object-refused",     "object-symbol",
      "parameter-misread", "refused"};
  return rules;
}

TEST(RulesTest, EveryRuleHasABadFileOrAnotherTest) {
  std::set<std::string> tried = GetRulesWithoutFile();
  for (const BadFile& file : GetBadFiles()) {
    tried.insert(RuleOf(file));
  }
  std::set<std::string> rules;
  for (const Rule& rule : GetRules()) {
    rules.insert(rule.id);
  }
  EXPECT_EQ(tried, rules);
}

TEST(RulesTest, AreInOrderAndExplained) {
  const std::vector<Rule>& rules = GetRules();
  const auto isBefore = [](const Rule& left, const Rule& right) {
    return std::string(left.id) < right.id;
  };
  EXPECT_TRUE(std::is_sorted(rules.begin(), rules.end(), isBefore));
  for (const Rule& rule : rules) {
    EXPECT_GT(std::string(rule.explanation).size(), 40U) << rule.id;
    EXPECT_EQ(FindRule(rule.id), &rule);
  }
  EXPECT_EQ(FindRule("no-such-rule"), nullptr);
}

}  // namespace
}  // namespace Kestrel::Lint
