// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Lint.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "support/BrokenDescriptors.h"
#include "support/ScopedTempDir.h"
#include "support/TestPlugins.h"
#include "tools/lint/Output.h"

namespace Kestrel::Lint {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::SizeIs;

std::string Descriptor(const std::string& namespaces, const std::string& commands) {
  return "<x><version>1.0.0</version><namespaces>" + namespaces + "</namespaces><commands>" +
         commands + "</commands></x>";
}

std::string NamespaceAt(const std::string& path) {
  return "<namespace path='" + path + "'><description>Words.</description></namespace>";
}

std::string CommandAt(const std::string& path) {
  return "<command path='" + path +
         "'><description>Do it.</description><input-spec/><output-spec><string/></output-spec>"
         "<format-parameters><formatter>simple</formatter></format-parameters>"
         "<execute>do-it</execute></command>";
}

std::vector<std::string> RulesOf(const LintResult& result) {
  std::vector<std::string> rules;
  rules.reserve(result.findings.size());
  for (const Finding& finding : result.findings) {
    rules.emplace_back(finding.rule->id);
  }
  return rules;
}

// Returns the last part of an expected message of the loader, up to the "@" that stands for the
// path of the file.
std::string InnermostCause(const std::string& fault) {
  std::size_t start = 0;
  for (const std::string prefix : {"Error was ", "Error was: "}) {
    const std::size_t at = fault.rfind(prefix);
    start = at == std::string::npos ? start : std::max(start, at + prefix.size());
  }
  return fault.substr(start, fault.find('@', start) - start);
}

TEST(LintTest, QuotesWhatTheLoaderSaysAboutEveryBrokenDescriptor) {
  for (const Testing::BrokenDescriptor& broken : Testing::GetBrokenDescriptors()) {
    const std::string path = Testing::GetBrokenDescriptorFolder() + "/" + broken.name + ".xml";
    const LintResult result = LintFiles({path}, {});
    EXPECT_THAT(WriteText(result.findings), HasSubstr(InnermostCause(broken.fault))) << broken.name;
    EXPECT_EQ(StatusOf(result), 1) << broken.name;
  }
}

TEST(LintTest, ReportsWhatTheLoaderRefusesInAFileThatIsNotExamined) {
  const ScopedTempDir folder;
  const std::string file = folder.Write(
      "a.xml", "<!DOCTYPE x [<!ENTITY v '1.0'>]>\n<x><version>&v;</version><commands/></x>");
  const LintResult result = LintFiles({file}, {});
  EXPECT_THAT(RulesOf(result), ElementsAre("document-type", "refused"));
  EXPECT_EQ(result.findings[1].position.line, 1U);
  EXPECT_THAT(result.findings[1].message, HasSubstr("Unknown vexil extention version."));
}

TEST(LintTest, ReportsTwoFaultsOfOneParameterInOnePass) {
  const std::string path =
      Testing::GetBrokenDescriptorFolder() + "/two-faults-type-and-required.xml";
  EXPECT_THAT(RulesOf(LintFiles({path}, {"formatter-missing"})),
              ElementsAre("parameter-required", "parameter-type"));
}

TEST(LintTest, PutsAllFilesIntoOneTree) {
  const ScopedTempDir folder;
  const std::string first = folder.Write("a.xml", Descriptor(NamespaceAt("one"), ""));
  const std::string second =
      folder.Write("b.xml", Descriptor(NamespaceAt("one.two"), CommandAt("one.two.go")));
  const std::string third = folder.Write("c.xml", Descriptor("", CommandAt("one.two.go")));
  EXPECT_THAT(RulesOf(LintFiles({first, second}, {})), IsEmpty());
  EXPECT_THAT(RulesOf(LintFiles({second, first}, {})),
              ElementsAre("path-undeclared", "path-undeclared"));
  const LintResult all = LintFiles({folder.GetPath()}, {});
  EXPECT_THAT(RulesOf(all), ElementsAre("path-duplicate"));
  EXPECT_THAT(all.findings[0].message, HasSubstr("it is declared in " + second));
  EXPECT_EQ(all.findings[0].file, third);
}

TEST(LintTest, KnowsTheNamespacesOfSharedObjects) {
  const ScopedTempDir folder;
  Testing::CopyTestPlugin("EchoPlugin", folder.GetPath("a.so"));
  const std::string file = folder.Write("b.xml", Descriptor("", CommandAt("echo.again")));
  EXPECT_THAT(RulesOf(LintFiles({file}, {})), ElementsAre("path-undeclared"));
  const LintResult result = LintFiles({folder.GetPath()}, {"description-missing"});
  EXPECT_THAT(result.findings, IsEmpty()) << WriteText(result.findings);
}

TEST(LintTest, ExaminesTheOtherFilesWhenOneCannotBeRead) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("a.xml", "<x/>");
  const LintResult result = LintFiles({folder.GetPath("none.xml"), file}, {});
  ASSERT_THAT(result.unreadable, SizeIs(1));
  EXPECT_THAT(result.unreadable[0], HasSubstr("No such file or directory"));
  EXPECT_FALSE(result.findings.empty());
  EXPECT_EQ(StatusOf(result), 2);
}

TEST(LintTest, ReadsNoDescriptorThatIsTooLarge) {
  const ScopedTempDir folder;
  const std::string file = folder.Write("a.xml", "<x/>");
  std::filesystem::resize_file(file, std::uintmax_t{1} << 31);  // the file needs no space
  const LintResult result = LintFiles({file}, {});
  EXPECT_THAT(result.unreadable,
              ElementsAre("cannot read " + file + ": it is larger than 2147483647 bytes"));
  EXPECT_THAT(result.findings, IsEmpty());
  EXPECT_EQ(StatusOf(result), 2);
}

TEST(LintTest, NotesDoNotChangeTheStatus) {
  const std::string path = std::string(KESTREL_RULE_DATA_DIR) + "/script-relative.xml";
  const LintResult result = LintFiles({path}, {});
  EXPECT_THAT(result.findings, SizeIs(1));
  EXPECT_EQ(StatusOf(result), 0);
}

TEST(LintTest, ExaminesATemplateThatCallsAScript) {
  const ScopedTempDir folder;
  const std::string file = folder.Write(
      "a.xml",
      Descriptor(NamespaceAt("one"),
                 "<command path='one.go'><description>Go.</description><input-spec>"
                 "<parameter name='name' type='int' required='true'><description>A number."
                 "</description></parameter></input-spec><output-spec><string/></output-spec>"
                 "<format-parameters><formatter>simple</formatter></format-parameters>"
                 "<execute>./go --n=$val{name}</execute></command>"));
  EXPECT_THAT(RulesOf(LintFiles({file}, {})),
              ElementsAre("script-relative", "unsafe-option", "unsafe-word"));
}

TEST(LintTest, SuppressesTheRulesInACommentThatStatesAReason) {
  const ScopedTempDir folder;
  const std::string file =
      folder.Write("a.xml", Descriptor(NamespaceAt("one"),
                                       "<!-- vexil-lint disable=description-missing: short -->"
                                       "<command path='one.go'><input-spec/>"
                                       "<output-spec><string/></output-spec>"
                                       "<format-parameters><formatter>simple</formatter>"
                                       "</format-parameters><execute>go</execute></command>"));
  EXPECT_THAT(RulesOf(LintFiles({file}, {})), IsEmpty());
}

}  // namespace
}  // namespace Kestrel::Lint
