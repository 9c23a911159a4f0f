// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/ExtensionCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdarg>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/autocli/Util.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "support/DescribeValue.h"
#include "support/SampleCommands.h"
#include "support/ScopedEnvironment.h"
#include "support/StreamCapture.h"

namespace {

std::string lastLogEntry;

/// Stores the priority, the format and the only argument.
void StoreLogEntry(int priority, const char* format, std::va_list& arguments) {
  lastLogEntry = std::to_string(priority) + " " + format + " " + va_arg(arguments, const char*);
}

}  // namespace

/// Replaces the function of the C library, also for calls from the library under test.
[[gnu::visibility("default")]] void syslog(int priority, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  StoreLogEntry(priority, format, arguments);
  va_end(arguments);
}

/// The same, for a library that is compiled with _FORTIFY_SOURCE.
[[gnu::visibility("default")]] void CheckedSyslog(int priority, int flag, const char* format,
                                                  ...) asm("__syslog_chk");

void CheckedSyslog(int priority, int /*flag*/, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  StoreLogEntry(priority, format, arguments);
  va_end(arguments);
}

namespace Kestrel::AutoCli {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::ThrowsMessage;

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using MetaObj::MetaInt;
using MetaObj::MetaString;
using Testing::DescribeValue;
using Testing::ScopedEnvironment;
using Testing::StreamCapture;

constexpr const char* kNoData = "Got no data from process.\nCommand \"";
constexpr const char* kExited = "\"\n\xD0\xB5xited with error code: ";

std::string NoData(const std::string& commandLine, int number) {
  return kNoData + commandLine + kExited + std::to_string(number);
}

/// Makes a command with the parameters aa, bb and val (strings), number (an integer), flag (a
/// flag), items and others (lists of strings).
std::shared_ptr<ExtensionCommand> MakeCommand(const std::string& commandTemplate,
                                              const std::string& stdinTemplate = "") {
  auto spec = InputSpec::New();
  for (const char* name : {"aa", "bb", "val"}) {
    spec->AddParameter(ParameterSpec::New(name, ParameterType::String));
  }
  spec->AddParameter(ParameterSpec::New("number", ParameterType::Int));
  spec->AddParameter(ParameterSpec::New("flag", ParameterType::Flag));
  spec->AddParameter(ParameterSpec::New("items", ParameterType::StringList));
  spec->AddParameter(ParameterSpec::New("others", ParameterType::StringList));
  auto command = ExtensionCommand::New();
  command->SetInputSpec(spec);
  auto output = OutputSpec::New();
  output->SetRootObject(MetaString::New());
  command->SetOutputSpec(output);
  command->SetExecuteCommand(commandTemplate);
  command->SetStdin(stdinTemplate);
  return command;
}

using Values = std::vector<std::pair<const char*, std::string>>;

std::shared_ptr<Input> MakeInput(ExtensionCommand& command, const Values& values) {
  auto input = Input::New();
  input->SetInputSpec(command.GetInputSpecInternal());
  for (const auto& [name, value] : values) {
    input->AddParameter(name, value);
  }
  return input;
}

std::string Substitute(const std::string& text, const Values& values) {
  const auto command = MakeCommand(text);
  return command->SubstituteInput(MakeInput(*command, values), false);
}

std::string SubstituteStdin(const std::string& text, const Values& values) {
  const auto command = MakeCommand("", text);
  return command->SubstituteInput(MakeInput(*command, values), true);
}

std::shared_ptr<Output> Execute(const std::string& commandTemplate, const Values& values = {},
                                const std::string& stdinTemplate = "") {
  const auto command = MakeCommand(commandTemplate, stdinTemplate);
  auto output = Output::New();
  command->ExecuteInternal(MakeInput(*command, values), output);
  return output;
}

TEST(ExtensionCommandTest, ReturnsTheSpecificationsThatWereSet) {
  const auto command = ExtensionCommand::New();
  const auto input = InputSpec::New();
  const auto output = OutputSpec::New();
  command->SetInputSpec(input);
  command->SetOutputSpec(output);
  EXPECT_EQ(command->GetInputSpecInternal(), input);
  EXPECT_EQ(command->GetOutputSpecInternal(), output);
}

TEST(ExtensionCommandTest, ThrowsForSpecificationsThatWereNeverSet) {
  const auto command = ExtensionCommand::New();
  EXPECT_THAT([&] { command->GetInputSpecInternal(); },
              ThrowsMessage<KestrelException>("Request for NULL InputSpec.  Extension command is "
                                              "incomplete and will not work"));
  EXPECT_THAT([&] { command->GetOutputSpecInternal(); },
              ThrowsMessage<KestrelException>("Request for NULL OutputSpec.  Extension command is "
                                              "incomplete and will not work"));
}

TEST(ExtensionCommandTest, ExactlySixteenCharactersAreEscaped) {
  const std::string bad = "\n!\"$&'()*;<>\\^`|";
  for (int c = -128; c < 128; ++c) {
    const char byte = static_cast<char>(c);
    const bool expected = bad.find(byte) != std::string::npos;
    EXPECT_EQ(ExtensionCommand::isBadChar(byte), expected) << c;
    EXPECT_EQ(ExtensionCommand::SanitizeInput(std::string(1, byte)),
              (expected ? "\\" : "") + std::string(1, byte));
  }
  EXPECT_EQ(ExtensionCommand::SanitizeInput("a b\t#?~{}=[]"), "a b\t#?~{}=[]");
  EXPECT_EQ(ExtensionCommand::SanitizeInput("a'b;$(c)"), "a\\'b\\;\\$\\(c\\)");
  EXPECT_EQ(ExtensionCommand::SanitizeInput(""), "");
}

TEST(ExtensionCommandTest, SanitizeCharRemovesEveryOccurrence) {
  EXPECT_EQ(ExtensionCommand::SanitizeChar("'a''b'", '\''), "ab");
  EXPECT_EQ(ExtensionCommand::SanitizeChar("'''", '\''), "");
  EXPECT_EQ(ExtensionCommand::SanitizeChar("abc", '\''), "abc");
}

TEST(ExtensionCommandTest, FindPairedTokenSizeSkipsNestedPairs) {
  const auto size = [](std::string_view text, std::size_t position) {
    return ExtensionCommand::FindPairedTokenSize(text.data(), position, text.size(), '{', '}');
  };
  EXPECT_EQ(size("{}", 0), 2u);
  EXPECT_EQ(size("{a}b}", 0), 3u);
  EXPECT_EQ(size("x{a{b}{c{d}}}e", 1), 12u);
  EXPECT_EQ(size("x{a{b}{c{d}}}e", 3), 3u);
  EXPECT_EQ(size("{a{b}", 0), 0u);
  EXPECT_EQ(size("{", 0), 0u);
  EXPECT_EQ(size("a{}", 0), 0u);
  EXPECT_EQ(size("{}", 2), 0u);
  EXPECT_EQ(ExtensionCommand::FindPairedTokenSize("{ab}", 0, 3, '{', '}'), 0u);
  EXPECT_EQ(ExtensionCommand::FindPairedTokenSize("(a(b))", 0, 6, '(', ')'), 6u);
}

struct SubstitutionCase {
  const char* name;
  const char* text;
  Values values;
  const char* result;
};

class SubstitutionTest : public testing::TestWithParam<SubstitutionCase> {};

TEST_P(SubstitutionTest, ReturnsTheCommandLine) {
  EXPECT_EQ(Substitute(GetParam().text, GetParam().values), GetParam().result);
}

std::string NameOf(const testing::TestParamInfo<SubstitutionCase>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(
    Val, SubstitutionTest,
    testing::Values(
        SubstitutionCase{"EmptyTemplate", "", {{"aa", "1"}}, ""},
        SubstitutionCase{"NoDollar", "echo val{aa} {x}", {{"aa", "1"}}, "echo val{aa} {x}"},
        SubstitutionCase{"Bare", "echo $val{aa}", {{"aa", "a'b"}}, "echo a\\'b"},
        SubstitutionCase{"InSingleQuotes", "echo '$val{aa}'", {{"aa", "a'b"}}, "echo 'ab'"},
        SubstitutionCase{"OtherBadCharactersInQuotes",
                         "echo '$val{aa}'",
                         {{"aa", "$(a);\"b\\"}},
                         "echo '$(a);\"b\\'"},
        SubstitutionCase{"QuoteOnlyBefore", "echo '$val{aa} x'", {{"aa", "a'b"}}, "echo 'a\\'b x'"},
        SubstitutionCase{"QuoteOnlyAfter", "echo 'x $val{aa}'", {{"aa", "a'b"}}, "echo 'x a\\'b'"},
        SubstitutionCase{
            "DoubleQuotesDoNotCount", "echo \"$val{aa}\"", {{"aa", "a'b"}}, "echo \"a\\'b\""},
        SubstitutionCase{"EveryOccurrence", "$val{aa}$val{aa} $val{aa}", {{"aa", "1"}}, "11 1"},
        SubstitutionCase{"TheLastOneDecidesQuoting",
                         "echo $val{aa} '$val{aa}'",
                         {{"aa", ";a'"}},
                         "echo ;a ';a'"},
        SubstitutionCase{"TheLastOneDecidesForABareOne",
                         "echo '$val{aa}' $val{aa}",
                         {{"aa", ";"}},
                         "echo '\\;' \\;"},
        SubstitutionCase{"NotGiven", "echo $val{aa} $val{zz}", {}, "echo $val{aa} $val{zz}"},
        SubstitutionCase{
            "ValueIsLiteral", "echo '$val{aa}'", {{"aa", "$1 & \\1 $&"}}, "echo '$1 & \\1 $&'"},
        SubstitutionCase{"TwoValuesBecomeAnEmptyString",
                         "echo [$val{aa}]",
                         {{"aa", "1"}, {"aa", "2"}},
                         "echo []"},
        SubstitutionCase{"Integer", "echo $val{number}", {{"number", "-12"}}, "echo -12"},
        SubstitutionCase{"Newline", "echo $val{aa}", {{"aa", "a\nb"}}, "echo a\\\nb"},
        SubstitutionCase{
            "NulIsDropped", "echo '$val{aa}'", {{"aa", std::string("a\0b", 3)}}, "echo 'ab'"},
        SubstitutionCase{"Unclosed", "echo $val{aa", {{"aa", "1"}}, "echo $val{aa"},
        SubstitutionCase{"SpaceInside", "echo $val{ aa}", {{"aa", "1"}}, "echo $val{ aa}"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    If, SubstitutionTest,
    testing::Values(
        SubstitutionCase{"Given", "cmd $if{flag,--force}", {{"flag", ""}}, "cmd --force"},
        SubstitutionCase{"NotGiven", "cmd $if{flag,--force}", {}, "cmd "},
        SubstitutionCase{"NotDeclared", "cmd $if{nope,x} y", {}, "cmd  y"},
        SubstitutionCase{"WithValue", "cmd $if{aa,-a '$val{aa}'}x", {{"aa", "1"}}, "cmd -a '1'x"},
        SubstitutionCase{"WithValueNotGiven", "cmd $if{aa,-a '$val{aa}'}x", {}, "cmd x"},
        // Parameters are inserted in name order, so the marker of bb is still there when the text
        // of aa is cut.
        SubstitutionCase{"CutAtTheFirstBrace",
                         "c $if{aa,$val{bb} x}",
                         {{"aa", "1"}, {"bb", "2"}},
                         "c $val{bb x}"},
        SubstitutionCase{
            "ConditionLast", "c $if{bb,$val{aa} x}", {{"aa", "1"}, {"bb", "2"}}, "c 1 x"},
        SubstitutionCase{"NestedNotGiven", "c $if{aa,x $if{bb,y} {z}} w", {}, "c  w"},
        SubstitutionCase{"NestedOuterGiven", "c $if{aa,x $if{bb,y} z} w", {{"aa", "1"}}, "c x  w"},
        SubstitutionCase{"EmptyTextRunsOn", "c $if{aa,} ${HOME}", {{"aa", "1"}}, "c } ${HOME"},
        SubstitutionCase{"EmptyTextNotGiven", "c $if{aa,} ${HOME}", {}, "c $if{aa,} ${HOME}"},
        SubstitutionCase{"NoComma", "c $if{aa} x", {}, "c $if{aa} x"},
        SubstitutionCase{"UpperCaseName", "c $if{A,x}", {}, "c $if{A,x}"},
        SubstitutionCase{"Unclosed", "c $if{aa,x", {}, "c $if{aa,x"},
        SubstitutionCase{"OtherBlocksStay", "c ${HOME} $if{aa,x} {b}", {}, "c ${HOME}  {b}"},
        SubstitutionCase{"InAnotherBlock", "f() { $if{aa,x}; }", {}, "f() { $if{aa,x}; }"},
        SubstitutionCase{"RemovedWithUnclosedBrace", "c $if{aa,x {b} y", {}, "c  y"},
        SubstitutionCase{"ManyInARow", "c$if{aa,x}$if{bb,y}$if{val,z}", {{"bb", "1"}}, "cy"},
        SubstitutionCase{"Newline", "c $if{aa,x\ny}", {}, "c "}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    List, SubstitutionTest,
    testing::Values(
        SubstitutionCase{
            "Bare", "c $list{items,',',false}", {{"items", "a"}, {"items", "b;c"}}, "c a,b\\;c"},
        SubstitutionCase{
            "Quoted", "c $list{items,';',true}", {{"items", "c"}, {"items", "d"}}, "c \"c\\;d\""},
        SubstitutionCase{
            "NoSeparator", "c $list{items,'',false}", {{"items", "a"}, {"items", "b"}}, "c ab"},
        SubstitutionCase{"QuoteAsSeparator",
                         "c $list{items,''',false}",
                         {{"items", "a"}, {"items", "b"}},
                         "c a\\'b"},
        SubstitutionCase{"TwoSeparators",
                         "c $list{items,',,',false}",
                         {{"items", "a"}},
                         "c $list{items,',,',false}"},
        SubstitutionCase{
            "BadFlag", "c $list{items,',',yes}", {{"items", "a"}}, "c $list{items,',',yes}"},
        SubstitutionCase{"OneValue", "c $list{items,',',true}", {{"items", "a b"}}, "c \"a b\""},
        SubstitutionCase{"NotGiven", "c $list{items,',',true}", {}, "c $list{items,',',true}"},
        SubstitutionCase{"TheLastOneDecides",
                         "$list{items,',',true} $list{items,':',false}",
                         {{"items", "a"}, {"items", "b"}},
                         "a:b a:b"},
        SubstitutionCase{"OfAScalar", "c $list{aa,',',false}", {{"aa", "a"}}, "c a"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    MultiList, SubstitutionTest,
    testing::Values(
        SubstitutionCase{"Bare",
                         "c$multilist{items,--i,false}",
                         {{"items", "a"}, {"items", "b;"}},
                         "c --i a --i b\\;"},
        SubstitutionCase{"Quoted",
                         "c $multilist{items,-i,true}",
                         {{"items", "a\"b"}, {"items", "c"}},
                         "c  -i \"ab\" -i \"c\""},
        // The shell expands this value; only the form without quotes is safe.
        SubstitutionCase{"QuotedIsUnsafe",
                         "c$multilist{items,-p,true}",
                         {{"items", "$(id)"}, {"items", "b\\"}},
                         "c -p \"$(id)\" -p \"b\\\""},
        SubstitutionCase{
            "PrefixWithCommas", "c$multilist{items,a,b,c,true}", {{"items", "1"}}, "c a,b,c \"1\""},
        SubstitutionCase{"TheFirstFlagEndsTheMarker",
                         "c$multilist{items,a,true},false}",
                         {{"items", "1"}},
                         "c a \"1\",false}"},
        SubstitutionCase{"EmptyPrefixRunsOn",
                         "c$multilist{items,,true}",
                         {{"items", "1"}},
                         "c$multilist{items,,true}"},
        SubstitutionCase{
            "CommaAsPrefix", "c$multilist{items,,,true}", {{"items", "1"}}, "c , \"1\""},
        SubstitutionCase{
            "NotGiven", "c$multilist{items,-i,true}", {}, "c$multilist{items,-i,true}"},
        SubstitutionCase{"TheLastOneDecides",
                         "$multilist{items,-a,true}$multilist{items,-b,false}",
                         {{"items", "1"}},
                         " -b 1 -b 1"},
        SubstitutionCase{"PrefixHoldsAMarker",
                         "c$multilist{items,-i$val{val},false}",
                         {{"items", "1"}, {"val", ";"}},
                         "c -i\\; 1"}),
    NameOf);

// The markers of one parameter are replaced in the order $val, $if, $list, $multilist.
INSTANTIATE_TEST_SUITE_P(
    Order, SubstitutionTest,
    testing::Values(
        SubstitutionCase{"ValInItsCondition", "c $if{aa,a=$val{aa}}", {{"aa", "1"}}, "c a=1"},
        SubstitutionCase{"ListInItsCondition",
                         "c $if{items,$list{items,',',false}}",
                         {{"items", "1"}, {"items", "2"}},
                         "c 1,2"},
        SubstitutionCase{"ListCutByItsCondition",
                         "c $if{items,$list{items,',',false} x}",
                         {{"items", "1"}},
                         "c $list{items,',',false x}"},
        SubstitutionCase{"MultiListInItsCondition",
                         "c$if{items,$multilist{items,-i,false}}",
                         {{"items", "1"}},
                         "c -i 1"},
        SubstitutionCase{"ListInAPrefix",
                         "c$multilist{items,$list{items,':',false},false}",
                         {{"items", "1"}, {"items", "2"}},
                         "c 1:2 1 1:2 2"},
        SubstitutionCase{"ConditionInAPrefix",
                         "c$multilist{items,$if{items,-i},false}",
                         {{"items", "1"}},
                         "c -i 1"}),
    NameOf);

// Markers in values are not replaced.
INSTANTIATE_TEST_SUITE_P(
    MarkersInValues, SubstitutionTest,
    testing::Values(SubstitutionCase{"Val",
                                     "echo $val{aa} $val{bb}",
                                     {{"aa", "$val{bb}"}, {"bb", ";id"}},
                                     "echo \\$val{bb} \\;id"},
                    SubstitutionCase{"ValInQuotes",
                                     "echo '$val{aa}'",
                                     {{"aa", "$val{bb}"}, {"bb", "';id'"}},
                                     "echo '$val{bb}'"},
                    SubstitutionCase{"If",
                                     "echo '$val{aa}'",
                                     {{"aa", "$if{bb,x} $if{nope,y}"}, {"bb", "1"}},
                                     "echo '$if{bb,x} $if{nope,y}'"},
                    SubstitutionCase{"List",
                                     "echo '$val{aa}'",
                                     {{"aa", "$list{items,',',true}"}, {"items", "1"}},
                                     "echo '$list{items,,,true}'"},
                    SubstitutionCase{"MultiList",
                                     "echo '$val{aa}'",
                                     {{"aa", "$multilist{items,-i,true}"}, {"items", "1"}},
                                     "echo '$multilist{items,-i,true}'"},
                    SubstitutionCase{"PiecesOfTwoValues",
                                     "echo $val{aa}$val{bb}",
                                     {{"aa", "$if{q,"}, {"bb", "}x}"}},
                                     "echo \\$if{q,}x}"},
                    SubstitutionCase{"ABraceClosesNoBlockThatIsRemoved",
                                     "c $if{nope,-n '$val{aa}'} '$val{bb}'",
                                     {{"aa", "}; id; "}, {"bb", "D"}},
                                     "c  'D'"},
                    SubstitutionCase{"ABraceEndsAKeptText",
                                     "c $if{bb,x $val{aa} y}",
                                     {{"aa", "1}2"}, {"bb", "1"}},
                                     "c x 12 y}"}),
    NameOf);

TEST(ExtensionCommandTest, AValMarkerOfAFlagOrAListThrows) {
  EXPECT_THAT(
      [] {
        Substitute("c $val{flag}", {{"flag", ""}});
      },
      ThrowsMessage<KestrelException>("Request for GetParameter on a flag type parameter: flag"));
  EXPECT_THAT(
      [] {
        Substitute("c $val{items}", {{"items", "1"}});
      },
      ThrowsMessage<KestrelException>("Request for GetParameter on a parameter that can "
                                      "have multiple values: items"));
}

TEST(ExtensionCommandTest, OnStandardInputValuesAreUnchanged) {
  const std::string nasty = "a'b\"c;$(d)\\`\n\xFF" + std::string(1, '\0') + "e";
  EXPECT_EQ(SubstituteStdin("[$val{aa}]", {{"aa", nasty}}), "[" + nasty + "]");
  EXPECT_EQ(SubstituteStdin("'$val{aa}'", {{"aa", nasty}}), "'" + nasty + "'");
  EXPECT_EQ(SubstituteStdin("$list{items,',',false}", {{"items", "a;"}, {"items", "b\""}}),
            "a;,b\"");
  EXPECT_EQ(SubstituteStdin("$list{items,',',true}", {{"items", "a;"}, {"items", "b\""}}),
            "\"a;,b\"\"");
  EXPECT_EQ(SubstituteStdin("$multilist{items,-i,false}", {{"items", "a;\""}}), " -i a;\"");
  EXPECT_EQ(SubstituteStdin("$multilist{items,-i,true}", {{"items", "a;\""}}), " -i \"a;\"\"");
  EXPECT_EQ(SubstituteStdin("$if{aa,x}$if{bb,y}", {{"aa", "1"}}), "x");
}

TEST(ExtensionCommandTest, WithoutADollarTheTemplateIsUnchanged) {
  // There is neither an input nor a specification, because none is needed without a dollar.
  const auto command = ExtensionCommand::New();
  command->SetExecuteCommand("echo {a}");
  command->SetStdin("b");
  EXPECT_EQ(command->SubstituteInput(nullptr, false), "echo {a}");
  EXPECT_EQ(command->SubstituteInput(nullptr, true), "b");
}

TEST(ExtensionCommandTest, ACallWithoutInputHasNoParameters) {
  const auto command = MakeCommand("echo $val{aa}$if{bb,x}");
  EXPECT_EQ(command->SubstituteInput(nullptr, false), "echo $val{aa}");
  EXPECT_EQ(MakeCommand("$x")->SubstituteInput(Input::New(), false), "$x");
}

TEST(ExtensionCommandTest, TheResultDocumentBecomesTheRootObject) {
  const ScopedEnvironment language("LANG", "C");
  const auto output = Execute("echo '<output><string>a $val{aa}</string></output>'", {{"aa", "1"}});
  EXPECT_THAT(output->GetErrors(), IsEmpty());
  EXPECT_EQ(DescribeValue(output->GetRootObject()), "string 'a 1'");
}

TEST(ExtensionCommandTest, StandardInputReachesTheChild) {
  const ScopedEnvironment language("LANG", "C");
  const auto output = Execute("cat", {{"aa", "it's"}}, "<o><string>$val{aa}</string></o>");
  EXPECT_EQ(DescribeValue(output->GetRootObject()), "string 'it's'");
}

TEST(ExtensionCommandTest, WithoutALanguageTheChildGetsOne) {
  const ScopedEnvironment language("LANG", std::nullopt);
  const auto output = Execute("sh -c 'echo \"<o><string>$LANG</string></o>\"'");
  EXPECT_EQ(DescribeValue(output->GetRootObject()), "string 'en_US.UTF-8'");
}

TEST(ExtensionCommandTest, WithoutALanguageACompoundCommandNeedsASimpleCommandBeforeIt) {
  const ScopedEnvironment language("LANG", std::nullopt);
  const StreamCapture diagnostics(STDERR_FILENO);
  const std::string compound = "if true; then echo '<o><int>1</int></o>'; fi";
  EXPECT_THAT(Execute(compound)->GetErrors(),
              ElementsAre(NoData("LANG=en_US.UTF-8 " + compound, 1)));
  EXPECT_EQ(DescribeValue(Execute(":; " + compound)->GetRootObject()), "int 1");
}

TEST(ExtensionCommandTest, AnEmptyLanguageCountsAsSet) {
  const ScopedEnvironment language("LANG", "");
  EXPECT_THAT(Execute("exit 3")->GetErrors(), ElementsAre(NoData("exit 3", 1)));
}

TEST(ExtensionCommandTest, AChildThatPrintsNothingIsReported) {
  const ScopedEnvironment language("LANG", "C");
  EXPECT_THAT(Execute("exit 3")->GetErrors(), ElementsAre(NoData("exit 3", 1)));
  EXPECT_THAT(Execute("exit 0")->GetErrors(), ElementsAre(NoData("exit 0", 1)));
  EXPECT_THAT(Execute("kill -9 $$")->GetErrors(), ElementsAre(NoData("kill -9 $$", 0)));
  EXPECT_THAT(Execute(": '$val{aa}'", {{"aa", "x%s%n"}})->GetErrors(),
              ElementsAre(NoData(": 'x%s%n'", 1)));
}

TEST(ExtensionCommandTest, TheReportShowsTheCommandLineWithItsLanguage) {
  const ScopedEnvironment language("LANG", std::nullopt);
  EXPECT_THAT(Execute("exit 3")->GetErrors(), ElementsAre(NoData("LANG=en_US.UTF-8 exit 3", 1)));
}

TEST(ExtensionCommandTest, TheReportAlsoGoesToTheSystemLog) {
  const ScopedEnvironment language("LANG", "C");
  lastLogEntry.clear();
  Execute(": '$val{aa}'", {{"aa", "100%s"}});
  EXPECT_EQ(lastLogEntry, std::to_string(LOG_ERR) + " %s " + NoData(": '100%s'", 1));
  lastLogEntry.clear();
  Execute("echo ERROR:full");
  EXPECT_EQ(lastLogEntry, "");
}

std::string lastCommandLine;

TEST(ExtensionCommandTest, AListenerGetsTheCommandLineWithItsLanguageAndItsUser) {
  const ScopedEnvironment language("LANG", std::nullopt);
  SetCommandExecListener(
      [](const std::string& commandLine, int) { lastCommandLine = commandLine; });
  Execute("exit $val{aa}", {{"aa", "3"}});
  EXPECT_EQ(lastCommandLine, "LANG=en_US.UTF-8 exit 3");
  const auto command = MakeCommand("exit 3");
  command->GetInputSpecInternal()->SetContextSupported("user");
  const auto input = MakeInput(*command, {});
  input->SetContext("user", "o'neil");
  command->ExecuteInternal(input, Output::New());
  EXPECT_EQ(lastCommandLine, "OPR_USERNAME='o'\\''neil' LANG=en_US.UTF-8 exit 3");
  SetCommandExecListener(nullptr);
}

TEST(ExtensionCommandTest, LeadingErrorLinesBecomeMessages) {
  const ScopedEnvironment language("LANG", "C");
  const auto output = Execute("printf 'ERROR:disk full\\nERROR:retry\\n<o><int>1</int></o>'");
  EXPECT_THAT(output->GetErrors(), ElementsAre("disk full", "retry"));
  EXPECT_EQ(output->GetRootObject(), nullptr);
}

TEST(ExtensionCommandTest, ErrorLinesAreUnchanged) {
  const ScopedEnvironment language("LANG", "C");
  EXPECT_THAT(Execute("printf 'ERROR: a \\nERROR:\\nERROR:b\\r\\n'")->GetErrors(),
              ElementsAre(" a ", "", "b\r"));
  EXPECT_THAT(Execute("printf 'ERROR:a\\nERROR:b'")->GetErrors(), ElementsAre("a", "b"));
  EXPECT_THAT(Execute("printf 'ERROR:'")->GetErrors(), ElementsAre(""));
  EXPECT_THAT(Execute("printf 'ERROR:a\\n\\nERROR:b\\n'")->GetErrors(), ElementsAre("a"));
  EXPECT_THAT(Execute("printf 'ERROR:a\\n ERROR:b\\n'")->GetErrors(), ElementsAre("a"));
}

TEST(ExtensionCommandTest, AnErrorLineAfterOtherLinesIsNotAMessage) {
  const ScopedEnvironment language("LANG", "C");
  const StreamCapture diagnostics(STDERR_FILENO);
  const auto output = Execute("printf '<o><string>\\nERROR:a\\n</string></o>'");
  EXPECT_THAT(output->GetErrors(), IsEmpty());
  EXPECT_EQ(DescribeValue(output->GetRootObject()), "string '\nERROR:a\n'");
  EXPECT_THAT(Execute("printf 'error:a\\n'")->GetErrors(), IsEmpty());
}

TEST(ExtensionCommandTest, AResultWithoutAValueLeavesTheOutputEmpty) {
  const ScopedEnvironment language("LANG", "C");
  const StreamCapture diagnostics(STDERR_FILENO);
  for (const char* commandLine : {"echo done", "echo '<o/>'", "echo"}) {
    const auto output = Execute(commandLine);
    EXPECT_THAT(output->GetErrors(), IsEmpty()) << commandLine;
    EXPECT_EQ(output->GetRootObject(), nullptr);
  }
}

TEST(ExtensionCommandTest, AnUnbuildableResultIsAnError) {
  const ScopedEnvironment language("LANG", "C");
  const auto output = Execute("echo '<o><int>x</int></o>'");
  EXPECT_THAT(output->GetErrors(),
              ElementsAre("Unable to parse output of Extension Command: Error parsing command "
                          "output.  Unable to build a proper metaobject from output tag.  output "
                          "must contain properly formatted tags of type bool, int, string, "
                          "structure and list. Error was : Unable to read an int value from: 'x'"));
  EXPECT_EQ(output->GetRootObject(), nullptr);
}

TEST(ExtensionCommandTest, AfterAnEarlierErrorTheResultIsNotRead) {
  const ScopedEnvironment language("LANG", "C");
  const auto command = MakeCommand("echo '<o><int>1</int></o>'");
  const auto output = Output::New();
  output->AddErrorMessage("earlier");
  command->ExecuteInternal(MakeInput(*command, {}), output);
  EXPECT_THAT(output->GetErrors(), ElementsAre("earlier"));
  EXPECT_EQ(output->GetRootObject(), nullptr);
}

TEST(ExtensionCommandTest, TheUserOfTheContextReachesTheChild) {
  const ScopedEnvironment language("LANG", "C");
  const ScopedEnvironment outer("OPR_USERNAME", "outer");
  const auto command = MakeCommand("sh -c 'echo \"<o><string>$OPR_USERNAME</string></o>\"'");
  const auto userOf = [&](const std::shared_ptr<Input>& input) {
    const auto output = Output::New();
    command->ExecuteInternal(input, output);
    return DescribeValue(output->GetRootObject());
  };
  const auto input = MakeInput(*command, {});
  input->SetContext("user", "o'neil $x");
  EXPECT_EQ(userOf(input), "string 'outer'");
  command->GetInputSpecInternal()->SetContextSupported("user");
  EXPECT_EQ(userOf(input), "string 'o'neil $x'");
  EXPECT_EQ(userOf(MakeInput(*command, {})), "string 'outer'");
  EXPECT_EQ(userOf(nullptr), "string 'outer'");
}

TEST(ExtensionCommandTest, TheReportDoesNotShowTheUser) {
  const ScopedEnvironment language("LANG", "C");
  const auto command = MakeCommand("exit 0");
  command->GetInputSpecInternal()->SetContextSupported("user");
  const auto input = MakeInput(*command, {});
  input->SetContext("user", "root");
  const auto output = Output::New();
  command->ExecuteInternal(input, output);
  EXPECT_THAT(output->GetErrors(), ElementsAre(NoData("exit 0", 1)));
}

TEST(ExtensionCommandTest, AFailureToWriteToTheChildIsThrownAndReportedByTheCommand) {
  const ScopedEnvironment language("LANG", "C");
  const auto command = MakeCommand("exit 0", std::string(1000000, 'x'));
  const auto root = RootNamespace::New(nullptr);
  Testing::RegisterAt(root, {"disk", "get"}, command);
  EXPECT_THAT([&] { command->ExecuteInternal(MakeInput(*command, {}), Output::New()); },
              ThrowsMessage<KestrelException>("Unable to write to sub-process: Broken pipe"));
  const auto output = CommandOutput::New();
  command->Execute(Testing::MakeCommandInput({"disk", "get"}), output);
  EXPECT_THAT(output->GetErrors(),
              ElementsAre("Error on command disk get : Unable to write to sub-process: Broken "
                          "pipe"));
}

TEST(ExtensionCommandTest, AResultOfAnotherShapeIsRefusedByTheCommand) {
  const ScopedEnvironment language("LANG", "C");
  const auto command = MakeCommand("echo '<o><int>1</int></o>'");
  const auto root = RootNamespace::New(nullptr);
  Testing::RegisterAt(root, {"disk", "get"}, command);
  const auto output = CommandOutput::New();
  command->Execute(Testing::MakeCommandInput({"disk", "get"}), output);
  EXPECT_THAT(output->GetErrors(),
              ElementsAre("Type mismatch in structure.  Expecting String got Int",
                          "Implementation error! The output of this command does not match the "
                          "declared output type, see errors above."));
}

}  // namespace
}  // namespace Kestrel::AutoCli
