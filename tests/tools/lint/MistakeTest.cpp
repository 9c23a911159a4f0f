// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The mistakes that authors made while they wrote plug-ins: each has exactly one finding.

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/ScopedTempDir.h"
#include "tools/lint/Lint.h"
#include "tools/lint/Output.h"

namespace Kestrel::Lint {
namespace {

using Testing::ScopedTempDir;

/// A mistake in a shared object. The file is named after the mistake.
struct ObjectMistake {
  const char* name;
  const char* rule;
};

void PrintTo(const ObjectMistake& mistake, std::ostream* out) { *out << mistake.name; }

constexpr ObjectMistake kObjectMistakes[] = {
    {"BadParameterName", "object-declaration"},
    {"BadPath", "object-refused"},
    {"BrokenExpression", "regex-invalid"},
    {"ConstraintOfAnotherType", "object-declaration"},
    {"CrashAtStart", "object-crash"},
    {"EntryPointOfAnotherName", "object-entry-point"},
    {"EntryPointWithoutHeader", "object-entry-point"},
    {"ForeignException", "object-exception"},
    {"IntegerFromString", "parameter-misread"},
    {"LoopAtStart", "object-hang"},
    {"MisspeltColumn", "fields-unknown"},
    {"MisspeltEntryPoint", "object-entry-point"},
    {"MisspeltFormatter", "formatter-unknown"},
    {"NoShape", "shape-missing"},
    {"ParameterTwice", "object-declaration"},
    {"PathTwice", "path-duplicate"},
    {"RefusedExample", "example-invalid"},
    {"SecretInteger", "object-declaration"},
    {"SharedInputSpec", "object-declaration"},
    {"TableOfOneStructure", "formatter-shape"},
    {"UndefinedFunction", "object-symbol"},
};

std::string ObjectPath(const std::string& name) {
  return std::string(KESTREL_MISTAKE_DIR) + "/" + name + ".so";
}

class ObjectMistakeTest : public ::testing::TestWithParam<ObjectMistake> {};

TEST_P(ObjectMistakeTest, HasOneFinding) {
  const LintResult result = LintFiles({ObjectPath(GetParam().name)}, {});
  ASSERT_EQ(result.findings.size(), 1U) << WriteText(result.findings);
  EXPECT_STREQ(result.findings[0].rule->id, GetParam().rule) << WriteText(result.findings);
}

INSTANTIATE_TEST_SUITE_P(Mistakes, ObjectMistakeTest, ::testing::ValuesIn(kObjectMistakes),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(MistakeTest, AnObjectWithoutAMistakeHasNoFinding) {
  const LintResult result = LintFiles({ObjectPath("NoMistake")}, {});
  EXPECT_TRUE(result.findings.empty()) << WriteText(result.findings);
}

/// A mistake in a descriptor: a string in disks.xml, what is written instead, and the finding.
struct DescriptorMistake {
  const char* name;
  std::string right;
  std::string wrong;
  const char* rule;
  std::size_t line;
  std::size_t column;
};

void PrintTo(const DescriptorMistake& mistake, std::ostream* out) { *out << mistake.name; }

const std::vector<DescriptorMistake>& GetDescriptorMistakes() {
  static const std::vector<DescriptorMistake> mistakes = {
      {"AmpersandInTheTemplate", "list-disks ", "list-disks 2>&1 ", "not-well-formed", 61, 30},
      {"AttributeMisspelt", "shortname=", "shortName=", "attribute-unknown", 17, 9},
      {"BraceMissing", "'$val{kind}'", "'$val{kind'", "marker-malformed", 61, 35},
      {"ColumnMisspelt", "Name,Size<", "Name,Sise<", "fields-unknown", 58, 9},
      {"CommentInTheTemplate", "</execute>", "<!-- all --></execute>", "content-cut", 61, 16},
      {"ConstraintMisspelt",
       "<constraint type=\"range\">\n            <range min=\"1\" max=\"900\"/>\n          "
       "</constraint>",
       "<constrain type=\"range\">\n            <range min=\"1\" max=\"900\"/>\n          "
       "</constrain>",
       "element-unknown", 34, 11},
      {"ConstraintOfAnotherType", "least\" type=\"int\"", "least\" type=\"string\"",
       "constraint-type", 34, 11},
      {"DescriptionMissing", "          <description>The least size, %ENUM%.</description>\n", "",
       "element-missing", 32, 9},
      {"ExpressionBroken", "<regex>[a-z]+<", "<regex>[a-z+<", "regex-invalid", 20, 13},
      {"ExpressionExponential", "<regex>[a-z]+<", "<regex>([a-z]+)+<", "regex-exponential", 20, 13},
      {"FormatterForAnotherShape", "<list type=\"structure\">", "", "formatter-shape", 57, 9},
      {"FormatterMisspelt", "table<", "tabel<", "formatter-unknown", 57, 9},
      {"KindOfValueMisspelt", "<int/>", "<integer/>", "shape-invalid", 52, 32},
      {"ListForASingleValue", "$multilist{name,--name,false}}", " --name='$val{name}'}",
       "marker-kind", 61, 112},
      {"ListOutsideIf", "$if{name,$multilist{name,--name,false}}", "$multilist{name,--name,false}",
       "marker-outside-if", 61, 94},
      {"MarkerMisspelt", "$val{kind}", "$vla{kind}", "marker-misspelt", 61, 35},
      {"MetaDataMisspelt", "\"changes\"", "\"change\"", "meta-data-key", 13, 9},
      {"NamespaceUndeclared", "namespace path=\"disk\"", "namespace path=\"disks\"",
       "path-undeclared", 10, 5},
      {"PathWithTwoCapitals", "command path=\"disk.list\"", "command path=\"disk.listALL\"",
       "path-name", 10, 5},
      {"QuotesMissing", "'$val{least}'", "$val{least}", "unsafe-word", 61, 65},
      {"RequiredMisspelt", "kind\" type=\"string\" required=\"true\"",
       "kind\" type=\"string\" required=\"yes\"", "parameter-required", 23, 9},
      {"SecretOnTheCommandLine", "list-disks ", "list-disks --key='$val{key}' ",
       "secret-on-command-line", 61, 34},
      {"TypeMisspelt", "least\" type=\"int\"", "least\" type=\"integer\"", "parameter-type", 32, 9},
      {"UnitsOfNoField", "units:Disk.Size", "units:Disk.size", "fields-unknown", 59, 9},
      {"VersionUnknown", "1.0.0", "1.0", "version", 3, 3},
  };
  return mistakes;
}

std::string ReadDisks() {
  std::ifstream in(std::string(KESTREL_LINT_DATA_DIR) + "/disks.xml");
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class DescriptorMistakeTest : public ::testing::TestWithParam<DescriptorMistake> {};

TEST_P(DescriptorMistakeTest, HasOneFinding) {
  const DescriptorMistake& mistake = GetParam();
  std::string text = ReadDisks();
  const std::size_t at = text.find(mistake.right);
  ASSERT_NE(at, std::string::npos);
  text.replace(at, mistake.right.size(), mistake.wrong);
  if (std::string(mistake.name) == "FormatterForAnotherShape") {
    text.erase(text.find("</list>"), std::string("</list>").size());
  }
  const ScopedTempDir folder;
  const LintResult result = LintFiles({folder.Write("disks.xml", text)}, {});
  ASSERT_EQ(result.findings.size(), 1U) << WriteText(result.findings);
  EXPECT_STREQ(result.findings[0].rule->id, mistake.rule) << WriteText(result.findings);
  EXPECT_EQ(result.findings[0].position.line, mistake.line) << WriteText(result.findings);
  EXPECT_EQ(result.findings[0].position.column, mistake.column) << WriteText(result.findings);
}

INSTANTIATE_TEST_SUITE_P(Mistakes, DescriptorMistakeTest,
                         ::testing::ValuesIn(GetDescriptorMistakes()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST(MistakeTest, ADescriptorWithoutAMistakeHasNoFinding) {
  const LintResult result = LintFiles({std::string(KESTREL_LINT_DATA_DIR) + "/disks.xml"}, {});
  EXPECT_TRUE(result.findings.empty()) << WriteText(result.findings);
}

}  // namespace
}  // namespace Kestrel::Lint
