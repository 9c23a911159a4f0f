// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/testing/HostileValues.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/testing/CommandRun.h"
#include "kestrel/testing/GoogleTest.h"
#include "support/ScopedTempDir.h"
#include "testing/SamplePlugin.h"

namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::string Descriptor(const std::string& execute, const std::string& changes = "false") {
  return "<vexil-plugin><version>1.0.0</version><namespaces><namespace path='try'>"
         "<description>Trials.</description></namespace></namespaces><commands>"
         "<command path='try.it'><description>Try.</description>"
         "<meta-data><meta-data-entry name='changes'>" +
         changes +
         "</meta-data-entry></meta-data>"
         "<input-spec><parameter name='text' type='string' required='true'>"
         "<description>A text.</description></parameter></input-spec>"
         "<output-spec><int/></output-spec>"
         "<format-parameters><formatter>simple</formatter></format-parameters>"
         "<execute>" +
         execute + "; printf '&lt;o>&lt;int>1&lt;/int>&lt;/o>'</execute></command></commands>" +
         "</vexil-plugin>";
}

TEST(HostileValuesTest, AcceptsACommandThatTreatsThemAsData) {
  EXPECT_TRUE(Passes(RunHostileValues(KESTREL_ECHO_PLUGIN, "echo say")));
  EXPECT_TRUE(Passes(RunHostileValues(MakePlugin(ReturnText), "sample show")));
  const ScopedTempDir folder;
  EXPECT_TRUE(
      Passes(RunHostileValues(folder.Write("good.xml", Descriptor(": '$val{text}'")), "try it")));
}

TEST(HostileValuesTest, ReportsAValueThatRuns) {
  const ScopedTempDir folder;
  const std::string file =
      folder.Write("bad.xml", Descriptor("eval \"echo $val{text}\" &gt;/dev/null 2>&amp;1"));
  EXPECT_THAT(RunHostileValues(file, "try it").ToString(),
              HasSubstr("the value runs as a command of the shell"));
}

TEST(HostileValuesTest, DoesNotRunACommandThatChangesSomething) {
  const ScopedTempDir folder;
  const std::string mark = folder.GetPath("mark");
  const std::string file =
      folder.Write("changes.xml", Descriptor("touch '" + mark + "' '$val{text}'", "true"));
  EXPECT_TRUE(Passes(RunHostileValues(file, "try it")));
  EXPECT_FALSE(std::filesystem::exists(mark));
}

TEST(HostileValuesTest, ReportsAResultOfAnotherShape) {
  const auto plugin = MakePlugin([](const std::string& text, CallSpec::Output& output) {
    if (text == "*") {
      output.SetRootObject(SampleCommand::MakeResult("Star", text));
    } else {
      ReturnText(text, output);
    }
  });
  const Verdict verdict = RunHostileValues(plugin, "sample show");
  EXPECT_THAT(verdict.ToString(), HasSubstr("sample show --text '*': accepted: "));
  EXPECT_THAT(verdict.GetProblems(), ::testing::SizeIs(1));
}

TEST(HostileValuesTest, ReportsACommandThatDoesNotExist) {
  EXPECT_THAT(RunHostileValues(KESTREL_ECHO_PLUGIN, "vexil command list").GetProblems(),
              ElementsAre("the plug-in has no command 'vexil command list'"));
}

TEST(ReplaceTest, ReplacesEverySpellingOfTheParameter) {
  const auto parameter = CallSpec::ParameterSpec::New("text", CallSpec::String);
  parameter->SetShortName("t");
  EXPECT_THAT(
      Replace({"a", "--text", "1", "--other", "2", "-t", "3", "--text=4"}, *parameter, "-v"),
      ElementsAre("a", "--other", "2", "--text=-v"));
  EXPECT_THAT(Replace({"a"}, *parameter, ""), ElementsAre("a", "--text", ""));
}

// Every value reaches the command, even "--help".
TEST(HostileValuesTest, EachValueArrives) {
  std::set<std::string> arrived;
  const auto plugin = MakePlugin([&arrived](const std::string& text, CallSpec::Output& output) {
    arrived.insert(text);
    ReturnText(text, output);
  });
  EXPECT_TRUE(Passes(RunHostileValues(plugin, "sample show")));
  const std::vector<std::string> values = ListHostileValues("x");
  EXPECT_EQ(arrived.size(), values.size());
  EXPECT_EQ(arrived.count("--help"), 1U);
}

}  // namespace
}  // namespace Kestrel::Testing
