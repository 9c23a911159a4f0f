// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/OptionParser.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "support/Random.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {

namespace {

using CallSpec::InputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using Kestrel::Testing::ScopedInput;
using Kestrel::Testing::StreamCapture;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::ThrowsMessage;

using Pairs = std::vector<std::pair<std::string, std::string>>;
using Tokens = std::vector<std::string>;

OptionParser Parse(Tokens tokens) {
  OptionParser parser;
  parser.ParseVector(std::move(tokens));
  return parser;
}

OptionParser ParseLine(const std::string& line) {
  OptionParser parser;
  EXPECT_FALSE(parser.ParseString(line)) << line;
  return parser;
}

// Makes a declaration: a string "device" (-d), a secret "password" (-p), a flag "force" (-f) and a
// string "help" (-h).
std::shared_ptr<InputSpec> MakeSpec() {
  auto spec = InputSpec::New();
  const auto device = ParameterSpec::New("device", ParameterType::String);
  device->SetShortName("d");
  const auto password = ParameterSpec::New("password", ParameterType::String);
  password->SetShortName("p");
  password->SetSecret(true);
  const auto force = ParameterSpec::New("force", ParameterType::Flag);
  force->SetShortName("f");
  const auto help = ParameterSpec::New("help", ParameterType::String);
  help->SetShortName("h");
  for (const auto& parameter : {device, password, force, help}) {
    spec->AddParameter(parameter);
  }
  return spec;
}

// The initial state and the argument vector.

TEST(OptionParserTest, StartsEmptyAndIsCalledVexil) {
  OptionParser parser;
  EXPECT_EQ("vexil", parser.GetDispatcher());
  EXPECT_THAT(parser.GetCommandPath(), IsEmpty());
  EXPECT_THAT(parser.GetNamespaces(), IsEmpty());
  EXPECT_THAT(parser.GetDispatcherParameters(), IsEmpty());
  EXPECT_THAT(parser.GetCommandParameters(), IsEmpty());
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, TheConstructorSetsTheDispatcherName) {
  EXPECT_EQ("tool", OptionParser("tool").GetDispatcher());
}

TEST(OptionParserTest, IsNeverMarkedAsParsed) {
  OptionParser parser;
  EXPECT_FALSE(parser.IsParsed());
  parser.ParseVector({"ns", "cmd", "--level", "3"});
  parser.ProcessCommandArguments();
  EXPECT_FALSE(parser.IsParsed());
}

TEST(OptionParserTest, ParseArgvSplitsAWholeCommandLine) {
  const char* const argv[] = {"/usr/bin/tool", "--formatter", "xml", "ns1", "ns2",
                              "cmd",           "--aa=1",      "-b",  "2",   "--cc"};
  OptionParser parser;
  parser.ParseArgv(10, argv);
  EXPECT_EQ("/usr/bin/tool", parser.GetDispatcher());
  EXPECT_THAT(parser.GetDispatcherParameters(), ElementsAre(Pair("formatter", "xml")));
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns1", "ns2", "cmd"));
  EXPECT_THAT(parser.GetCommandParameters(),
              ElementsAre(Pair("aa", "1"), Pair("b", "2"), Pair("cc", "")));
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, ParametersAfterThePathBelongToTheCommand) {
  const char* const argv[] = {"tool", "ns1", "ns2", "cmd", "--aa=1", "-b", "2", "--cc"};
  OptionParser parser;
  parser.ParseArgv(8, argv);
  EXPECT_THAT(parser.GetDispatcherParameters(), IsEmpty());
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns1", "ns2", "cmd"));
  EXPECT_THAT(parser.GetCommandParameters(),
              ElementsAre(Pair("aa", "1"), Pair("b", "2"), Pair("cc", "")));
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, NamesOfOneLetterAfterTwoDashesAreWords) {
  OptionParser parser = Parse({"ns1", "ns2", "cmd", "--a=1", "-b", "2", "--c"});
  EXPECT_THAT(parser.GetDispatcherParameters(), IsEmpty());
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns1", "ns2", "cmd", "--a=1"));
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("b", "2")));
  EXPECT_THAT(parser.GetParseErrors(),
              ElementsAre("Found Extra non-parameter arguments at the end of input: '--c' "));
}

TEST(OptionParserTest, ParseArgvOfTheNameAloneParsesNothing) {
  const char* const argv[] = {"tool", nullptr};
  OptionParser parser;
  parser.ParseArgv(1, argv);
  EXPECT_EQ("tool", parser.GetDispatcher());
  EXPECT_THAT(parser.GetCommandPath(), IsEmpty());
}

TEST(OptionParserTest, ParseArgvWithoutArgumentsKeepsTheName) {
  const char* const nothing[] = {nullptr};
  OptionParser parser("tool");
  parser.ParseArgv(0, nothing);
  EXPECT_EQ("tool", parser.GetDispatcher());
  parser.ParseArgv(0, nullptr);
  EXPECT_EQ("tool", parser.GetDispatcher());
  parser.ParseArgv(1, nothing);
  EXPECT_EQ("tool", parser.GetDispatcher());
}

TEST(OptionParserTest, ParseArgvStopsAtANullArgument) {
  const char* const argv[] = {"tool", "ns", nullptr, "cmd"};
  OptionParser parser;
  parser.ParseArgv(4, argv);
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns"));
}

TEST(OptionParserTest, ParseVectorKeepsTheDispatchersName) {
  OptionParser parser("tool");
  parser.ParseVector({"ns", "cmd"});
  EXPECT_EQ("tool", parser.GetDispatcher());
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns", "cmd"));
}

TEST(OptionParserTest, ParseStackReadsFromTheTop) {
  std::stack<std::string> tokens({"3", "--level", "cmd", "ns"});
  OptionParser parser;
  parser.ParseStack(tokens);
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns", "cmd"));
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("level", "3")));
}

TEST(OptionParserTest, ParseStackOfNothingChangesNothing) {
  OptionParser parser = Parse({"--debug", "x", "ns", "cmd", "--level", "3"});
  parser.ParseStack({});
  EXPECT_THAT(parser.GetDispatcherParameters(), ElementsAre(Pair("debug", "x")));
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns", "cmd"));
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("level", "3")));
}

// Options and words.

struct TokenCase {
  const char* name;
  std::string token;
  bool isOption;
};

class OptionParserTokenTest : public ::testing::TestWithParam<TokenCase> {};

TEST_P(OptionParserTokenTest, IsRecognised) {
  EXPECT_EQ(GetParam().isOption, OptionParser().IsParameter(GetParam().token));
}

INSTANTIATE_TEST_SUITE_P(
    Words, OptionParserTokenTest,
    ::testing::Values(
        TokenCase{"Empty", "", false}, TokenCase{"Bare", "word", false},
        TokenCase{"LoneDash", "-", false}, TokenCase{"TwoDashes", "--", false},
        TokenCase{"ThreeDashes", "---", false}, TokenCase{"DashDigit", "-1", false},
        TokenCase{"DashTwoLetters", "-ab", false}, TokenCase{"DashWord", "-name", false},
        TokenCase{"DashWithin", "a-name", false}, TokenCase{"ShortWithValue", "-a=1", false},
        TokenCase{"LongOfOneLetter", "--x", false},
        TokenCase{"LongOfOneLetterWithValue", "--x=1", false},
        TokenCase{"EmptyValue", "--name=", false}, TokenCase{"LongFromADigit", "--1name", false},
        TokenCase{"Underscore", "--my_name", false},
        TokenCase{"TrailingLineEnd", "--name\n", false},
        TokenCase{"ShortTrailingLineEnd", "-a\n", false},
        TokenCase{"NotAscii", "--n\xc3\xa4me", false}, TokenCase{"ShortNotAscii", "-\xe4", false},
        TokenCase{"EmbeddedNul", std::string("--na\0me", 7), false}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Options, OptionParserTokenTest,
    ::testing::Values(TokenCase{"Short", "-a", true}, TokenCase{"ShortCapital", "-Z", true},
                      TokenCase{"Long", "--name", true}, TokenCase{"TwoLetters", "--ab", true},
                      TokenCase{"LetterAndDigit", "--a1", true},
                      TokenCase{"LetterAndDash", "--a-", true},
                      TokenCase{"Capitals", "--NAME", true}, TokenCase{"Value", "--name=v", true},
                      TokenCase{"ValueIsEquals", "--name==", true},
                      TokenCase{"ValueIsALineEnd", "--name=\n", true},
                      TokenCase{"ValueIsNul", std::string("--name=\0", 8), true},
                      TokenCase{"ValueNotAscii", "--name=\xff", true}),
    [](const auto& row) { return row.param.name; });

TEST(OptionParserTest, ParseParameterReturnsTheNameOfAShortOption) {
  OptionParser parser;
  std::string name = "old";
  std::string value = "old";
  EXPECT_FALSE(parser.ParseParameter("-v", name, value));
  EXPECT_EQ("v", name);
  EXPECT_EQ("", value);
}

TEST(OptionParserTest, ParseParameterReturnsTheNameOfALongOption) {
  OptionParser parser;
  std::string name;
  std::string value = "old";
  EXPECT_FALSE(parser.ParseParameter("--dry-run", name, value));
  EXPECT_EQ("dry-run", name);
  EXPECT_EQ("", value);
}

TEST(OptionParserTest, ParseParameterSplitsAtTheFirstEqualsSign) {
  OptionParser parser;
  std::string name;
  std::string value;
  EXPECT_TRUE(parser.ParseParameter("--where=a = b\nc", name, value));
  EXPECT_EQ("where", name);
  EXPECT_EQ("a = b\nc", value);
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, ParseParameterReportsAWord) {
  OptionParser parser;
  std::string name = "old name";
  std::string value = "old value";
  EXPECT_FALSE(parser.ParseParameter("--x", name, value));
  EXPECT_EQ("old name", name);
  EXPECT_EQ("old value", value);
  EXPECT_THAT(parser.GetParseErrors(),
              ElementsAre("Attempt to parse option failed.  Input was : --x"));
}

// The three stages.

TEST(OptionParserTest, AnOptionBeforeThePathTakesTheFirstWord) {
  OptionParser parser = Parse({"--debug", "ns", "cmd"});
  EXPECT_THAT(parser.GetDispatcherParameters(), ElementsAre(Pair("debug", "ns")));
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("cmd"));
}

TEST(OptionParserTest, AnOptionBeforeAnOptionHasNoValue) {
  OptionParser parser = Parse({"--debug", "-v", "--level=3", "ns"});
  EXPECT_THAT(parser.GetDispatcherParameters(),
              ElementsAre(Pair("debug", ""), Pair("v", ""), Pair("level", "3")));
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns"));
}

TEST(OptionParserTest, AnOptionWithAValueTakesNoWord) {
  OptionParser parser = Parse({"--level=3", "ns", "cmd"});
  EXPECT_THAT(parser.GetDispatcherParameters(), ElementsAre(Pair("level", "3")));
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns", "cmd"));
}

TEST(OptionParserTest, WordsThatLookLikeOptionsBeginThePath) {
  OptionParser parser = Parse({"-ab", "--x", "--name=", "-", "--", "-1", "--level", "3"});
  EXPECT_THAT(parser.GetDispatcherParameters(), IsEmpty());
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("-ab", "--x", "--name=", "-", "--", "-1"));
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("level", "3")));
}

TEST(OptionParserTest, WordsThatLookLikeOptionsAreExtraAfterThePath) {
  OptionParser parser = Parse({"ns", "cmd", "--name", "x", "-ab", "--x", "--name="});
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("name", "x")));
  EXPECT_THAT(
      parser.GetParseErrors(),
      ElementsAre(
          "Found Extra non-parameter arguments at the end of input: '-ab' '--x' '--name=' "));
}

TEST(OptionParserTest, AnExtraWordIsReportedAndTheOptionsBeforeItAreKept) {
  OptionParser parser = Parse({"ns", "cmd", "--name", "x", "y"});
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("name", "x")));
  EXPECT_THAT(parser.GetParseErrors(),
              ElementsAre("Found Extra non-parameter arguments at the end of input: 'y' "));
}

TEST(OptionParserTest, EverythingAfterAnExtraWordIsExtra) {
  OptionParser parser = Parse({"ns", "cmd", "--name", "x", "y", "--level", "3"});
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("name", "x")));
  EXPECT_THAT(
      parser.GetParseErrors(),
      ElementsAre("Found Extra non-parameter arguments at the end of input: 'y' '--level' '3' "));
}

TEST(OptionParserTest, ProcessingASecondTimeFindsNothingToDo) {
  OptionParser parser = Parse({"ns", "cmd", "--name", "x", "y"});
  parser.ProcessCommandArguments();
  parser.ProcessCommandArguments();
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("name", "x")));
  EXPECT_EQ(1u, parser.GetParseErrors().size());
}

TEST(OptionParserTest, KeepsNamesAsTypedAndEachOfSeveralEqualOptions) {
  OptionParser parser = Parse({"ns", "cmd", "--name=1", "-n", "2", "--name", "3"});
  EXPECT_THAT(parser.GetCommandParameters(),
              ElementsAre(Pair("name", "1"), Pair("n", "2"), Pair("name", "3")));
  EXPECT_THAT(parser.GetCommandParameter("name"), ElementsAre("1", "3"));
  EXPECT_THAT(parser.GetCommandParameter("n"), ElementsAre("2"));
  EXPECT_THAT(parser.GetCommandParameter("Name"), IsEmpty());
}

TEST(OptionParserTest, EachQuestionAboutCommandParametersProcessesThem) {
  const Tokens tokens = {"ns", "cmd", "--name", "x"};
  EXPECT_TRUE(Parse(tokens).HasCommandParameter("name"));
  EXPECT_FALSE(Parse(tokens).HasCommandParameter("x"));
  EXPECT_THAT(Parse(tokens).GetCommandParameter("name"), ElementsAre("x"));
  EXPECT_THAT(Parse(tokens).GetCommandParameters(), ElementsAre(Pair("name", "x")));
}

TEST(OptionParserTest, QuestionsAboutDispatcherOptionsIgnoreCommandParameters) {
  OptionParser parser = Parse({"--plugin=a", "--plugin=b", "-h", "x", "ns", "--name", "y"});
  EXPECT_FALSE(parser.HasDispatcherParameter("help"));
  EXPECT_THAT(parser.GetDispatcherParameter("plugin"), ElementsAre("a", "b"));
  EXPECT_THAT(parser.GetDispatcherParameter("name"), IsEmpty());
  EXPECT_TRUE(parser.HasDispatcherParameter("h"));
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, ParsePathLeavesTheFirstOptionOnTheStack) {
  std::stack<std::string> tokens({"x", "--name", "cmd", "ns"});
  EXPECT_THAT(OptionParser().ParsePath(tokens), ElementsAre("ns", "cmd"));
  EXPECT_EQ(2u, tokens.size());
  EXPECT_EQ("--name", tokens.top());
}

TEST(OptionParserTest, ParseParametersLeavesTheFirstExtraWordOnTheStack) {
  std::stack<std::string> tokens({"z", "y", "x", "--name"});
  EXPECT_THAT(OptionParser().ParseParameters(tokens), ElementsAre(Pair("name", "x")));
  EXPECT_EQ(2u, tokens.size());
  EXPECT_EQ("y", tokens.top());
}

// Declarations.

TEST(OptionParserTest, AParameterWithoutItsValueIsReportedAsTyped) {
  OptionParser parser = Parse({"ns", "cmd", "-d", "--device"});
  parser.SetInputSpec(MakeSpec());
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("d", ""), Pair("device", "")));
  EXPECT_THAT(parser.GetParseErrors(),
              ElementsAre("-d must have value", "--device must have value"));
}

TEST(OptionParserTest, AFlagAndHelpNeedNoValue) {
  OptionParser parser = Parse({"ns", "cmd", "-f", "--force", "-h", "--help"});
  parser.SetInputSpec(MakeSpec());
  EXPECT_THAT(parser.GetCommandParameters(),
              ElementsAre(Pair("f", ""), Pair("force", ""), Pair("h", ""), Pair("help", "")));
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, AFlagTakesTheNextWord) {
  OptionParser parser = Parse({"ns", "cmd", "--force", "yes"});
  parser.SetInputSpec(MakeSpec());
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("force", "yes")));
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, AnUndeclaredParameterMayLackItsValue) {
  OptionParser parser = Parse({"ns", "cmd", "--other", "-o", "--zz"});
  parser.SetInputSpec(MakeSpec());
  EXPECT_THAT(parser.GetCommandParameters(),
              ElementsAre(Pair("other", ""), Pair("o", ""), Pair("zz", "")));
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, WithoutASpecNoMissingValueIsReported) {
  OptionParser parser = Parse({"ns", "cmd", "--device", "--password"});
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("device", ""), Pair("password", "")));
  parser.SetInputSpec(MakeSpec());
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("device", ""), Pair("password", "")));
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, ANullSpecDeclaresNothing) {
  OptionParser parser = Parse({"ns", "cmd", "--device"});
  parser.SetInputSpec(MakeSpec());
  parser.SetInputSpec(nullptr);
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("device", "")));
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, TheDeclarationDoesNotApplyToTheDispatchersOptions) {
  OptionParser parser;
  parser.SetInputSpec(MakeSpec());
  parser.ParseVector({"--device", "--password", "-f"});
  EXPECT_THAT(parser.GetDispatcherParameters(),
              ElementsAre(Pair("device", ""), Pair("password", ""), Pair("f", "")));
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, MissingValuesAreReportedBeforeExtraWords) {
  OptionParser parser = Parse({"ns", "cmd", "--device", "--force", "yes", "y"});
  parser.SetInputSpec(MakeSpec());
  parser.ProcessCommandArguments();
  EXPECT_THAT(parser.GetParseErrors(),
              ElementsAre("--device must have value",
                          "Found Extra non-parameter arguments at the end of input: 'y' "));
}

// Secrets.

TEST(OptionParserTest, ASecretWithoutAValueIsPromptedForOnce) {
  OptionParser parser = Parse({"ns", "cmd", "--password", "--force"});
  parser.SetInputSpec(MakeSpec());
  StreamCapture out(STDOUT_FILENO);
  ScopedInput in("open sesame\nnext line\n");
  EXPECT_THAT(parser.GetCommandParameters(),
              ElementsAre(Pair("password", "open sesame"), Pair("force", "")));
  parser.GetCommandParameters();
  EXPECT_EQ("Enter value for 'password': \n", out.GetText());
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, TheSecretsPromptShowsTheLongNameForAShortOption) {
  OptionParser parser = Parse({"ns", "cmd", "-p"});
  parser.SetInputSpec(MakeSpec());
  StreamCapture out(STDOUT_FILENO);
  ScopedInput in("word\n");
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("p", "word")));
  EXPECT_EQ("Enter value for 'password': \n", out.GetText());
}

TEST(OptionParserTest, ASecretWithAValueIsNotPromptedFor) {
  OptionParser parser = Parse({"ns", "cmd", "--password=x", "--password", "y", "-p", "z"});
  parser.SetInputSpec(MakeSpec());
  StreamCapture out(STDOUT_FILENO);
  ScopedInput in("not read\n");
  EXPECT_THAT(parser.GetCommandParameters(),
              ElementsAre(Pair("password", "x"), Pair("password", "y"), Pair("p", "z")));
  EXPECT_EQ("", out.GetText());
}

TEST(OptionParserTest, ASecretAtTheEndOfInputIsEmptyAndNotAnError) {
  OptionParser parser = Parse({"ns", "cmd", "--password"});
  parser.SetInputSpec(MakeSpec());
  StreamCapture out(STDOUT_FILENO);
  ScopedInput in("");
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("password", "")));
  EXPECT_EQ("Enter value for 'password': \n", out.GetText());
  EXPECT_THAT(parser.GetParseErrors(), IsEmpty());
}

TEST(OptionParserTest, EarlierOutputPrecedesThePrompt) {
  OptionParser parser = Parse({"ns", "cmd", "--password"});
  parser.SetInputSpec(MakeSpec());
  StreamCapture out(STDOUT_FILENO);
  ScopedInput in("x\n");
  std::cout << "before ";
  parser.ProcessCommandArguments();
  EXPECT_EQ("before Enter value for 'password': \n", out.GetText());
}

TEST(OptionParserTest, ThePromptIgnoresTheWidthOfTheStream) {
  OptionParser parser = Parse({"ns", "cmd", "--password"});
  parser.SetInputSpec(MakeSpec());
  StreamCapture out(STDOUT_FILENO);
  ScopedInput in("x\n");
  std::cout.width(60);
  parser.ProcessCommandArguments();
  std::cout.width(0);
  EXPECT_EQ("Enter value for 'password': \n", out.GetText());
}

TEST(OptionParserTest, GetSilentStringReadsOneLineAndWritesNothing) {
  OptionParser parser;
  StreamCapture out(STDOUT_FILENO);
  ScopedInput in("first line\nsecond line");
  EXPECT_EQ("first line", parser.GetSilentString());
  EXPECT_EQ("second line", parser.GetSilentString());
  EXPECT_EQ("", parser.GetSilentString());
  EXPECT_EQ("", out.GetText());
}

TEST(OptionParserTest, GetSilentStringContinuesAfterAnEndOfInput) {
  OptionParser parser;
  {
    ScopedInput in("");
    EXPECT_EQ("", parser.GetSilentString());
    EXPECT_TRUE(std::cin.eof());
  }
  std::cin.setstate(std::ios::eofbit | std::ios::failbit);
  ScopedInput in("more\n");
  EXPECT_EQ("more", parser.GetSilentString());
}

TEST(OptionParserTest, AFolderAsStandardInputIsAnError) {
  OptionParser parser;
  ScopedInput in("");
  const int folder = ::open("/", O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(STDIN_FILENO, ::dup2(folder, STDIN_FILENO));
  ::close(folder);
  EXPECT_THAT([&parser] { parser.GetSilentString(); },
              ThrowsMessage<KestrelException>("Unable to read standard input"));
  std::clearerr(stdin);
}

// Lines.

TEST(OptionParserTest, ParseStringSaysWhetherThereWasNothingToParse) {
  OptionParser parser;
  EXPECT_FALSE(parser.ParseString("ns cmd"));
  for (const char* line : {"", " ", "\t \t", "#", "# a comment", "  \t#x y", "\"#\"", "\"\""}) {
    EXPECT_TRUE(parser.ParseString(line)) << line;
  }
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns", "cmd"));
}

TEST(OptionParserTest, ALineKeepsTheDispatchersName) {
  OptionParser parser("tool");
  EXPECT_FALSE(parser.ParseString("ns cmd --level 3"));
  EXPECT_EQ("tool", parser.GetDispatcher());
  EXPECT_THAT(parser.GetCommandPath(), ElementsAre("ns", "cmd"));
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("level", "3")));
}

struct LineCase {
  const char* name;
  std::string line;
  Tokens words;
};

class OptionParserLineTest : public ::testing::TestWithParam<LineCase> {};

TEST_P(OptionParserLineTest, IsSplitIntoItsWords) {
  OptionParser parser;
  EXPECT_EQ(GetParam().words.empty(), parser.ParseString(GetParam().line));
  EXPECT_EQ(GetParam().words,
            Tokens(parser.GetCommandPath().begin(), parser.GetCommandPath().end()));
}

INSTANTIATE_TEST_SUITE_P(
    Spaces, OptionParserLineTest,
    ::testing::Values(LineCase{"Leading", " \t a", {"a"}}, LineCase{"Trailing", "a \t ", {"a"}},
                      LineCase{"Several", "a \t b", {"a", "b"}},
                      LineCase{
                          "OtherWhiteSpaceDoesNotSeparate", "a\rb\vc\fd\ne", {"a\rb\vc\fd\ne"}},
                      LineCase{"Nul", std::string("a\0b c", 5), {std::string("a\0b", 3), "c"}},
                      LineCase{"NotAscii", "\xc3\xa4 \xa0", {"\xc3\xa4", "\xa0"}},
                      LineCase{"LongWords",
                               "abcdefghijklmnop qrstuvwxyzabcdefg",
                               {"abcdefghijklmnop", "qrstuvwxyzabcdefg"}},
                      LineCase{"UpperCaseAndDigits",
                               "AB CD EF GH IJ 12 34 5!",
                               {"AB", "CD", "EF", "GH", "IJ", "12", "34", "5!"}}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(Quotes, OptionParserLineTest,
                         ::testing::Values(LineCase{"AroundSpaces", "\"a b\" c", {"a b", "c"}},
                                           LineCase{"WithinAWord", "a\"b\"c", {"abc"}},
                                           LineCase{"WithinALongWord",
                                                    "abc\"defghijkl mnopqrst\" u",
                                                    {"abcdefghijkl mnopqrst", "u"}},
                                           LineCase{"Unbalanced", "a \"b c ", {"a", "b c "}},
                                           LineCase{"NoEscape", "a\\\"b c", {"a\\b c"}},
                                           LineCase{"EmptyInTheMiddle", "a \"\" b", {"a", "", "b"}},
                                           LineCase{"EmptyAtTheEnd", "a \"\"", {"a"}},
                                           LineCase{"EmptyAndASpaceAtTheEnd", "a \"\" ", {"a", ""}},
                                           LineCase{"EmptyAtTheStart", "\"\" x", {" x"}},
                                           LineCase{"SpaceAtTheStart", "\" a\"", {" a"}},
                                           LineCase{"EmptyAndASpace", "\"\" ", {" "}}),
                         [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(Comments, OptionParserLineTest,
                         ::testing::Values(LineCase{"AtTheStart", "# a b", {}},
                                           LineCase{"AfterSpaces", " \t# a b", {}},
                                           LineCase{"AfterQuotes", "\"\"# a b", {}},
                                           LineCase{"NotWithinAWord", "a#b", {"a#b"}},
                                           LineCase{"NotInASecondWord", "a #b", {"a", "#b"}}),
                         [](const auto& row) { return row.param.name; });

TEST(OptionParserTest, AHashInTheMiddleOfALineIsAnOrdinaryCharacter) {
  OptionParser parser = ParseLine("cmd --name #1");
  EXPECT_THAT(parser.GetCommandParameters(), ElementsAre(Pair("name", "#1")));
}

TEST(OptionParserTest, QuotesJoinWordsIntoOneValue) {
  OptionParser parser = ParseLine("cmd --name \"two words\" --other=a\"b\"c");
  EXPECT_THAT(parser.GetCommandParameters(),
              ElementsAre(Pair("name", "two words"), Pair("other", "abc")));
}

// Splits a line by the rules, byte by byte. This is the model for the parser.
Tokens SplitByTheRules(const std::string& line) {
  const auto withoutQuotes = [&line](std::size_t start, std::size_t end) {
    std::string token;
    for (std::size_t i = start; i < end; ++i) {
      if (line[i] != '"') {
        token += line[i];
      }
    }
    return token;
  };
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  Tokens tokens;
  bool inQuotes = false;
  bool inToken = false;
  std::size_t start = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') {
      inQuotes = !inQuotes;
    } else if (!isBlank(line[i])) {
      if (!inToken && line[i] == '#') {
        return tokens;
      }
      inToken = true;
    } else if (!inToken) {
      ++start;
    } else if (!inQuotes) {
      tokens.push_back(withoutQuotes(start, i));
      while (i + 1 < line.size() && isBlank(line[i + 1])) {
        ++i;
      }
      start = i + 1;
    }
    if (i + 1 == line.size() && !withoutQuotes(start, line.size()).empty()) {
      tokens.push_back(withoutQuotes(start, line.size()));
    }
  }
  return tokens;
}

// Returns the tokens of a line without options.
Tokens SplitByTheParser(const std::string& line) {
  OptionParser parser;
  const bool isEmpty = parser.ParseString(line);
  EXPECT_EQ(isEmpty, parser.GetCommandPath().empty());
  return Tokens(parser.GetCommandPath().begin(), parser.GetCommandPath().end());
}

TEST(OptionParserTest, EveryShortLineIsSplitByTheRules) {
  const std::string alphabet = "a \t\"#";
  std::vector<std::string> lines = {""};
  std::size_t first = 0;
  for (int length = 1; length <= 8; ++length) {
    const std::size_t end = lines.size();
    for (; first < end; ++first) {
      for (const char c : alphabet) {
        lines.push_back(lines[first] + c);
      }
    }
  }
  for (const std::string& line : lines) {
    ASSERT_EQ(SplitByTheRules(line), SplitByTheParser(line)) << '[' << line << ']';
  }
}

// Compares the whole parser with a model that reads the tokens by index.

struct Model {
  Pairs dispatcherParameters;
  Tokens path;
  Pairs commandParameters;
  Tokens errors;
};

bool IsModelOption(const std::string& token) {
  const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  if (token.size() < 2 || token[0] != '-') {
    return false;
  }
  if (token[1] != '-') {
    return token.size() == 2 && letters.find(token[1]) != std::string::npos;
  }
  const std::size_t equals = token.find('=');
  const std::string name = token.substr(2, equals == std::string::npos ? equals : equals - 2);
  return name.size() >= 2 && letters.find(name[0]) != std::string::npos &&
         name.find_first_not_of(letters + "0123456789-") == std::string::npos &&
         (equals == std::string::npos || equals + 1 < token.size());
}

Pairs TakeModelOptions(const Tokens& tokens, std::size_t& i, bool isDeclared, Tokens& errors) {
  Pairs pairs;
  while (i < tokens.size() && IsModelOption(tokens[i])) {
    const std::string token = tokens[i++];
    const std::size_t equals = token.find('=');
    const std::string word = token.substr(0, equals);
    const std::string name = word.substr(word[1] == '-' ? 2 : 1);
    std::string value;
    if (equals != std::string::npos && word[1] == '-') {
      value = token.substr(equals + 1);
    } else if (i < tokens.size() && !IsModelOption(tokens[i])) {
      value = tokens[i++];
    } else if (isDeclared && (name == "d" || name == "device")) {
      errors.push_back(token + " must have value");
    }
    pairs.emplace_back(name, value);
  }
  return pairs;
}

Model MakeModel(const Tokens& tokens) {
  Model model;
  std::size_t i = 0;
  model.dispatcherParameters = TakeModelOptions(tokens, i, false, model.errors);
  while (i < tokens.size() && !IsModelOption(tokens[i])) {
    model.path.push_back(tokens[i++]);
  }
  model.commandParameters = TakeModelOptions(tokens, i, true, model.errors);
  if (i < tokens.size()) {
    std::string message = "Found Extra non-parameter arguments at the end of input: ";
    while (i < tokens.size()) {
      message += "'" + tokens[i++] + "' ";
    }
    model.errors.push_back(message);
  }
  return model;
}

TEST(OptionParserTest, AgreesWithTheModelOnRandomTokens) {
  const Tokens vocabulary = {
      "ns",      "cmd",   "x",    "",      "-",           "--",      "-d",        "-f",
      "-h",      "-ab",   "-1",   "--x",   "--device",    "--force", "--no",      "a=b",
      "--no==",  "--no=", "-d=1", "--x=1", "--force=yes", "-\n",     "two words", "--device=a b",
      "--he\nlp"};
  Testing::Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const auto spec = MakeSpec();
  for (int rounds = Testing::Rounds(20000, 2000000); rounds > 0; --rounds) {
    Tokens tokens(random.Below(12));
    for (std::string& token : tokens) {
      token = random.Pick(vocabulary);
    }
    const Model model = MakeModel(tokens);
    OptionParser parser = Parse(tokens);
    parser.SetInputSpec(spec);
    ASSERT_EQ(model.dispatcherParameters, parser.GetDispatcherParameters());
    ASSERT_EQ(model.path, Tokens(parser.GetNamespaces().begin(), parser.GetNamespaces().end()));
    ASSERT_EQ(model.commandParameters, parser.GetCommandParameters());
    ASSERT_EQ(model.errors, parser.GetParseErrors());
  }
}

// The dump.

TEST(OptionParserTest, ToStringDumpsAnEmptyParser) {
  EXPECT_EQ(
      "Parsed: 0\n"
      "Dispatcher: vexil\n"
      "Errors: \n"
      "Path: \n"
      "Dispatch Params: \n"
      "Command Params: \n",
      OptionParser().ToString());
}

TEST(OptionParserTest, ErrorsThatToStringFindsAppearInTheNextDump) {
  OptionParser parser = Parse({"-v", "--level=3", "ns", "cmd", "--device", "-f", "x", "y"});
  parser.SetInputSpec(MakeSpec());
  const std::string rest =
      "\nPath: 'ns''cmd'"
      "\nDispatch Params: "
      "\n   --v = ''"
      "\n   --level = '3'"
      "\nCommand Params: "
      "\n   --device = ''"
      "\n   --f = 'x'"
      "\n";
  EXPECT_EQ("Parsed: 0\nDispatcher: vexil\nErrors: " + rest, parser.ToString());
  EXPECT_EQ(
      "Parsed: 0\nDispatcher: vexil\nErrors: "
      "\n   --device must have value"
      "\n   Found Extra non-parameter arguments at the end of input: 'y' " +
          rest,
      parser.ToString());
}

// Hostile sizes.

TEST(OptionParserTest, ALineOfTenMegabytesIsSplit) {
  std::string line = "cmd --name " + std::string(5000000, 'x') + " --other y";
  for (int i = 0; i < 1250000; ++i) {
    line += " \"\"z";
  }
  OptionParser parser = ParseLine(line);
  const auto& parameters = parser.GetCommandParameters();
  EXPECT_EQ(std::string(5000000, 'x'), parameters.at(0).second);
  EXPECT_THAT(parameters.at(1), Pair("other", "y"));
  ASSERT_EQ(1u, parser.GetParseErrors().size());
  const std::string start = "Found Extra non-parameter arguments at the end of input: 'z' 'z' ";
  EXPECT_EQ(start, parser.GetParseErrors()[0].substr(0, start.size()));
  EXPECT_EQ(start.size() - 8 + 4 * 1250000, parser.GetParseErrors()[0].size());
}

TEST(OptionParserTest, AHundredThousandTokensAreParsed) {
  Tokens tokens = {"cmd"};
  for (int i = 0; i < 50000; ++i) {
    tokens.push_back("--name");
    tokens.push_back(std::to_string(i));
  }
  OptionParser parser = Parse(tokens);
  const std::vector<std::string> values = parser.GetCommandParameter("name");
  ASSERT_EQ(50000u, values.size());
  EXPECT_EQ("49999", values.back());
}

}  // namespace

}  // namespace Kestrel::AutoCli
