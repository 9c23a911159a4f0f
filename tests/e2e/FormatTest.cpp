// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "e2e/Plugins.h"
#include "support/PseudoTerminal.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

const char* const kTable =
    "Number  Text\n"
    "------  ----\n"
    "     1  the text of a row\n";

const char* const kTableOfWidth20 =
    "Number  Text\n"
    "------  ----\n"
    "     1  the text of \n"
    "        a row\n";

VexilRun TryRow(std::vector<std::string> options) {
  return Try({"try", "rows", "-c", "1"}, std::move(options));
}

TEST(FormatTest, ACommandUsesItsDefaultFormatter) {
  const VexilResult result = TryRow({}).Run();
  EXPECT_EQ(kTable, result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(FormatTest, TheUserChoosesAnotherFormatterAndItsParameters) {
  const VexilResult result =
      TryRow({"--formatter", "table", "--format-param", "fields=Text,Number", "--format-param",
              "units:Row.Text=(so far)", "--format-param=show-header=false"})
          .Run();
  EXPECT_EQ("the text of a row (so far)       1  \n", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(FormatTest, AnUnknownFormatterIsAnError) {
  const VexilResult result = TryRow({"--formatter=nosuch"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Errors: \nUnable to find requested formatter: nosuch\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(FormatTest, NdjsonCsvTsvAndYamlPrintARow) {
  for (const auto& [formatter, expected] :
       {std::pair("ndjson", "{\"Number\":1,\"Text\":\"the text of a row\"}\n"),
        std::pair("csv", "Number,Text\r\n1,the text of a row\r\n"),
        std::pair("tsv", "Number\tText\n1\tthe text of a row\n"),
        std::pair("yaml", "- Number: 1\n  Text: the text of a row\n")}) {
    const VexilResult result = TryRow({"--formatter", formatter}).Run();
    EXPECT_EQ(expected, result.out);
    EXPECT_EQ("", result.err);
    EXPECT_EQ(0, result.status);
  }
}

TEST(FormatTest, NdjsonReportsMistakesAndPrintsNothing) {
  const VexilResult result =
      TryRow({"--formatter", "ndjson", "--format-param", "fields=Text,Nope", "--format-param",
              "wrap-last=true", "--format-param", "limit=some", "--format-param", "colour=red"})
          .Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ(
      "Errors: \nUnknown format parameter: colour\n"
      "The value of limit is not a whole number: some\nUnknown field: Nope\n",
      result.err);
  EXPECT_EQ(1, result.status);
}

TEST(FormatTest, FormattersOfTheToolWorkInAStreamAndForAHelpPage) {
  const VexilResult stream = VexilRun({"--plugin", TestPluginPath("TryPlugin"), "--input", "STDIN"})
                                 .WithInput(
                                     "--formatter tsv --format-param limit=x try rows -c 1\n"
                                     "--formatter tsv try rows -c 1\n")
                                 .Run();
  EXPECT_EQ("Number\tText\n1\tthe text of a row\n", stream.out);
  EXPECT_EQ("Errors: \nThe value of limit is not a whole number: x\n", stream.err);
  EXPECT_EQ(0, stream.status);
  const VexilResult page =
      Try({"try", "rows", "--help"}, {"--formatter", "ndjson", "--format-param", "fields=Path"})
          .Run();
  EXPECT_EQ("{\"Path\":\"try rows\"}\n", page.out);
  EXPECT_EQ(0, page.status);
}

TEST(FormatTest, TheListingsFormatterIsUnknownToUsers) {
  const VexilResult result = TryRow({"--formatter", "clihelp"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Errors: \nUnable to find requested formatter: clihelp\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(FormatTest, ATableOfAStringIsAnError) {
  const VexilResult result = Try({"try", "say", "-t", "x"}, {"--formatter=table"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ(
      "Errors: \n"
      "Error: Unexpected type for output, formatter, table, expected a List of structs\n",
      result.err);
  EXPECT_EQ(1, result.status);
}

TEST(FormatTest, EveryMistakeInTheOptionsIsReported) {
  const VexilResult result =
      TryRow({"--colour=red", "--formatter=table", "--formatter=simple", "--format-param==x",
              "--format-param", "x", "--format-param", "a_b=c"})
          .Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ(
      "Errors: \n"
      "Unknown dispatcher parameter: colour\n"
      "Only one --formatter option can be passed to a command\n"
      "Unable to read format parameter =x\n"
      "Unable to read format parameter x\n"
      "Unable to read format parameter a_b=c\n",
      result.err);
  EXPECT_EQ(1, result.status);
}

TEST(FormatTest, TheFormatterOptionNeedsAName) {
  const VexilResult result = TryRow({"--formatter", "--screen-width=0"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Errors: \n--formatter requires the name of the formatter to use for this command\n",
            result.err);
  EXPECT_EQ(1, result.status);
}

struct WidthCase {
  const char* name;
  const char* text;
  bool wrapsAt20;
};

class FormatWidthTest : public ::testing::TestWithParam<WidthCase> {};

TEST_P(FormatWidthTest, IsReadAsANumber) {
  const VexilResult result = TryRow({"--screen-width", GetParam().text}).Run();
  EXPECT_EQ(GetParam().wrapsAt20 ? kTableOfWidth20 : kTable, result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

INSTANTIATE_TEST_SUITE_P(
    Widths, FormatWidthTest,
    ::testing::Values(WidthCase{"Decimal", "20", true}, WidthCase{"Hexadecimal", "0x14", true},
                      WidthCase{"Octal", "024", true}, WidthCase{"Wide", "0x50", false},
                      WidthCase{"TooNarrowForTheHeader", "010", false},
                      WidthCase{"Negative", "-20", false}, WidthCase{"TooWide", "20000", false},
                      WidthCase{"Word", "narrow", false}),
    [](const auto& row) { return row.param.name; });

TEST(FormatTest, AWidthOfZeroMeansTheWidthOfTheTerminal) {
  for (const auto& [option, expected] :
       {std::pair("--screen-width=0",
                  "Number  Text\r\n------  ----\r\n     1  the text of \r\n        a row\r\n"),
        std::pair("--screen-width=80",
                  "Number  Text\r\n------  ----\r\n     1  the text of a row\r\n")}) {
    PseudoTerminal terminal;
    terminal.SetSize(20, 5);
    const VexilRun run = TryRow({option});
    terminal.Start([&run]() -> int { run.Exec(); });
    EXPECT_EQ(0, terminal.WaitForEnd());
    EXPECT_EQ(expected, terminal.ReadRest());
  }
}

TEST(FormatTest, PrettyBreaksNothingIfTheWidthIsUnknown) {
  const VexilResult result = TryRow({"--formatter=pretty"}).Run();
  EXPECT_EQ("Number  Text\n     1  the text of a row\n", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(FormatTest, OutputThatAPluginWritesDirectlyKeepsItsPlace) {
  const VexilResult result = Try({"try", "write"}).Run();
  EXPECT_EQ("written by the plug-in\nand printed\nanswered\n", result.out);
  EXPECT_EQ(0, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing
