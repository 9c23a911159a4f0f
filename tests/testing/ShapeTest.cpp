// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/testing/Shape.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kestrel/testing/GoogleTest.h"
#include "testing/SamplePlugin.h"

namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Words kLine = {"sample", "show", "--text=x"};

TEST(ShapeTest, AcceptsTheDeclaredResultAndAHelpPage) {
  const TestTool tool(MakePlugin(ReturnText, [](SampleCommand& command) {
    command.SetDefaultOutputParameter("fields:Sample", "Text");
    command.SetDefaultOutputParameter("fields", "Text,Text");
  }));
  EXPECT_TRUE(Passes(CheckShape(tool.Run(kLine))));
  EXPECT_TRUE(Passes(CheckShape(tool.Run({"sample", "show", "--help"}))));
}

// Returns the problems with a list of fields, for a result with the fields "Text" and "Inner". The
// value of "Inner" is a structure that has a field "Text" too.
std::vector<std::string> ProblemsWithFields(const char* formatter, const char* fields) {
  const auto result = SampleCommand::MakeResult("Sample", "");
  result->SetField("Inner", SampleCommand::MakeResult("Part", ""));
  SampleCommand command(ReturnText);
  command.SetResult(result);
  command.SetDefaultOutputFormatter(formatter);
  command.SetDefaultOutputParameter("fields:Sample", fields);
  return CheckFields(command).GetProblems();
}

TEST(ShapeTest, FindsTheFieldsThatTheFormatterFinds) {
  EXPECT_THAT(ProblemsWithFields("simple", "Text,Inner"), IsEmpty());
  EXPECT_THAT(ProblemsWithFields("table", " Text , Inner.Text"), IsEmpty());
  for (const char* fields : {"Text, Inner", "Inner.Text", "Text,,Inner", "Text, ,Inner"}) {
    EXPECT_THAT(ProblemsWithFields("simple", fields), SizeIs(1)) << fields;
  }
  for (const char* fields : {"Text,,Inner", "Text, ,Inner", "Text.Text", "Inner.Size", "."}) {
    EXPECT_THAT(ProblemsWithFields("table", fields), SizeIs(1)) << fields;
  }
}

TEST(ShapeTest, ReportsMessages) {
  const auto plugin = MakePlugin(
      [](const std::string&, CallSpec::Output& output) { output.AddErrorMessage("no fuel"); });
  EXPECT_THAT(CheckShape(Testing::Run(plugin, kLine)).GetProblems(),
              ElementsAre("it reports: no fuel"));
}

TEST(ShapeTest, ReportsATypeNameThatIsNotDeclared) {
  const auto plugin = MakePlugin([](const std::string& text, CallSpec::Output& output) {
    output.SetRootObject(SampleCommand::MakeResult("Other", text));
  });
  EXPECT_THAT(CheckShape(Testing::Run(plugin, kLine)).GetProblems(),
              ElementsAre("the result is not as declared: Type names do not match."));
}

TEST(ShapeTest, ReportsAFieldOfTheFormatThatDoesNotExist) {
  const auto plugin = MakePlugin(ReturnText, [](SampleCommand& command) {
    command.SetDefaultOutputParameter("fields:Sample", "Text,Size");
    command.SetDefaultOutputParameter("fields:Other", "Text");
  });
  EXPECT_THAT(CheckShape(Testing::Run(plugin, kLine)).GetProblems(),
              ElementsAre("the declaration: the format parameter fields:Other names the field "
                          "'Text', which the declared result does not have",
                          "the declaration: the format parameter fields:Sample names the field "
                          "'Size', which the declared result does not have"));
}

TEST(ShapeTest, ReportsALineWithoutACommand) {
  EXPECT_FALSE(CheckShape(Testing::Run(MakePlugin(ReturnText), {"sample"})));
}

TEST(GoogleTestAdapterTest, ShowsTheProblems) {
  Verdict verdict;
  EXPECT_TRUE(Passes(verdict));
  verdict.Add("one");
  verdict.Add("two");
  EXPECT_STREQ(Passes(verdict).message(), "one\ntwo\n");
}

}  // namespace
}  // namespace Kestrel::Testing
