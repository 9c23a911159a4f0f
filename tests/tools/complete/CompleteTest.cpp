// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/complete/Complete.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/SampleCommands.h"
#include "support/ScopedEnvironment.h"
#include "vexil/formats/FormatsPlugin.h"

namespace Kestrel::Testing {

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

using CallSpec::InputSpec;
using CallSpec::OutputSpec;
using CallSpec::ParameterConstraint;
using CallSpec::ParameterSpec;
using Complete::Candidate;
using Complete::Completion;
using Complete::Directive;
using MetaObj::MetaList;
using MetaObj::MetaStruct;
using Vexil::Words;

std::shared_ptr<ParameterSpec> MakeParameter(const char* name, const char* shortName,
                                             CallSpec::ParameterType type) {
  const auto parameter = ParameterSpec::New(name, type);
  parameter->SetRequired(false);
  parameter->SetShortName(shortName);
  return parameter;
}

std::shared_ptr<ParameterSpec> MakeColour(const char* name, const char* shortName) {
  const auto constraint = ParameterConstraint::New(CallSpec::StringEnum);
  constraint->AddStringEnum("red", "Like fire.");
  constraint->AddStringEnum("rose");
  constraint->AddStringEnum("green");
  const auto parameter = MakeParameter(name, shortName, CallSpec::String);
  parameter->SetConstraint(constraint);
  return parameter;
}

std::shared_ptr<ParameterSpec> MakeSize() {
  const auto constraint = ParameterConstraint::New(CallSpec::IntEnum);
  constraint->AddIntEnum(512);
  constraint->AddIntEnum(4096);
  const auto parameter = MakeParameter("size", "s", CallSpec::IntList);
  parameter->SetConstraint(constraint);
  return parameter;
}

std::shared_ptr<SampleCommand> MakePaintCommand() {
  auto command = std::make_shared<SampleCommand>();
  const auto secret = MakeColour("secret", "x");
  secret->SetSecret(true);
  command->inputSpec = InputSpec::New();
  for (const auto& parameter :
       {MakeColour("colour", "c"), MakeSize(), secret, MakeParameter("wet", "w", CallSpec::Bool),
        MakeParameter("force", "f", CallSpec::Flag), MakeParameter("file", "i", CallSpec::String),
        MakeParameter("folder", "o", CallSpec::String)}) {
    command->inputSpec->AddParameter(parameter);
  }
  const auto usage = MetaStruct::New("Usage");
  usage->SetField("Free", 0);
  const auto row = MetaStruct::New("Row");
  row->SetField("Usage", usage);
  row->SetField("Name", "");
  row->SetField("Size", 0);
  command->outputSpec = OutputSpec::New();
  command->outputSpec->SetRootObject(MetaList::New(MetaObj::MetaType::Struct, row));
  command->SetDefaultOutputFormatter("table");
  command->AddMetaData("complete:file", "file");
  command->AddMetaData("complete:folder", "directory");
  command->AddMetaData("complete:secret", "file");
  return command;
}

// A tree with the commands "paint list", "paint get" and "pencil get".
class CompleteTest : public ::testing::Test {
 protected:
  CompleteTest() {
    RegisterAt(dispatcher_.GetRootNamespace(), {"paint", "list"}, MakePaintCommand());
    RegisterAt(dispatcher_.GetRootNamespace(), {"paint", "get"}, MakeAnsweringCommand("done"));
    RegisterAt(dispatcher_.GetRootNamespace(), {"pencil", "get"}, MakeAnsweringCommand("done"));
    dispatcher_.GetRootNamespace()->GetNamespaceNode("paint")->SetDescription("Colours.");
  }

  // Completes the last of the words; `after` are the words after the cursor.
  Completion Run(Words words, const Words& after = {}, const char* program = "vexil") {
    words.insert(words.begin(), program);
    const std::size_t index = words.size() - 1;
    words.insert(words.end(), after.begin(), after.end());
    return CompleteLine(dispatcher_, Complete::ReadCursorLine(words, index),
                        std::chrono::steady_clock::now() + std::chrono::seconds(10));
  }

  Words RunForWords(const Words& words, const Words& after = {}, const char* program = "vexil") {
    Words found;
    for (const Candidate& candidate : Run(words, after, program).candidates) {
      found.push_back(candidate.word);
    }
    return found;
  }

  Words RunExplain(const Words& words, const Words& after = {}) {
    return RunForWords(words, after, "/usr/bin/vexil-explain");
  }

  AutoCli::Dispatcher dispatcher_;
};

TEST_F(CompleteTest, TheWordsOfAPathComeWithTheirDescriptions) {
  EXPECT_THAT(RunForWords({"p"}), ElementsAre("paint", "pencil"));
  EXPECT_EQ("Colours.", Run({"pa"}).candidates.at(0).description);
  EXPECT_THAT(RunForWords({"paint", ""}), ElementsAre("get", "list"));
  EXPECT_THAT(RunForWords({"paint", "l"}), ElementsAre("list"));
  EXPECT_THAT(RunForWords({"nosuch", ""}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "list", "l"}), IsEmpty());
}

TEST_F(CompleteTest, AfterTheCommandThereAreParametersOnly) {
  EXPECT_THAT(RunForWords({"paint", "list", ""}),
              ElementsAre("--colour", "--file", "--folder", "--force", "--help", "--secret",
                          "--size", "--wet"));
  EXPECT_THAT(RunForWords({"paint", "list", "--f"}), ElementsAre("--file", "--folder", "--force"));
  EXPECT_THAT(RunForWords({"paint", "list", "-f"}), ElementsAre("-f"));
}

TEST_F(CompleteTest, AParameterIsOfferedOnceUnlessItIsRepeatable) {
  EXPECT_THAT(RunForWords({"paint", "list", "--colour", "red", "--c"}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "list", "-c", "red", "--c"}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "list", "--colour=red", "-c"}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "list", "--size", "512", "--s"}),
              ElementsAre("--secret", "--size"));
}

TEST_F(CompleteTest, AParameterAfterTheCursorCountsAsGiven) {
  EXPECT_THAT(RunForWords({"paint", "list", "--c"}, {"-c", "red"}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "list", ""}, {"--force"}), Not(Contains("--force")));
}

TEST_F(CompleteTest, EnumeratedValuesComeWithTheirDescriptions) {
  const Completion completion = Run({"paint", "list", "--colour", "r"});
  ASSERT_EQ(2U, completion.candidates.size());
  EXPECT_EQ("red", completion.candidates[0].word);
  EXPECT_EQ("Like fire.", completion.candidates[0].description);
  EXPECT_EQ("rose", completion.candidates[1].word);
  EXPECT_THAT(RunForWords({"paint", "list", "--colour=r"}),
              ElementsAre("--colour=red", "--colour=rose"));
  EXPECT_THAT(RunForWords({"paint", "list", "--colour="}),
              ElementsAre("--colour=red", "--colour=rose", "--colour=green"));
  EXPECT_THAT(RunForWords({"paint", "list", "-c", ""}), ElementsAre("red", "rose", "green"));
  EXPECT_THAT(RunForWords({"paint", "list", "-s", "5"}), ElementsAre("512"));
}

TEST_F(CompleteTest, BooleanValuesAreTrueAndFalseUntilAnotherWordIsTyped) {
  EXPECT_THAT(RunForWords({"paint", "list", "--wet", ""}), ElementsAre("true", "false"));
  EXPECT_THAT(RunForWords({"paint", "list", "--wet=y"}), ElementsAre("--wet=yes"));
}

TEST_F(CompleteTest, ASecretHasNoValues) {
  const Completion completion = Run({"paint", "list", "--secret", ""});
  EXPECT_THAT(completion.candidates, IsEmpty());
  EXPECT_EQ(Directive::None, completion.directive);
  EXPECT_THAT(RunForWords({"paint", "list", "-x", "r"}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "list", "--secret="}), IsEmpty());
}

TEST_F(CompleteTest, AFlagTakesNoValueAndTheNextParametersFollow) {
  EXPECT_THAT(RunForWords({"paint", "list", "--force", ""}), Contains("--colour"));
  EXPECT_THAT(RunForWords({"paint", "list", "--force", "r"}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "list", "--force="}), IsEmpty());
}

TEST_F(CompleteTest, FilesAndFoldersAreOfferedIfTheMetaDataSaySo) {
  EXPECT_EQ(Directive::Files, Run({"paint", "list", "--file", ""}).directive);
  EXPECT_EQ(Directive::Files, Run({"paint", "list", "--file=/e"}).directive);
  EXPECT_EQ(Directive::Folders, Run({"paint", "list", "-o", "x"}).directive);
}

TEST_F(CompleteTest, NothingFollowsAWordThatBelongsToNoOption) {
  EXPECT_THAT(RunForWords({"paint", "list", "--colour", "red", "extra", "--"}), IsEmpty());
}

TEST_F(CompleteTest, OptionsOfTheDispatcherComeBeforeThePath) {
  EXPECT_THAT(RunForWords({"--f"}), ElementsAre("--format-param", "--formatter"));
  EXPECT_THAT(RunForWords({"--formatter", "xml", "--f"}), ElementsAre("--format-param"));
  EXPECT_THAT(RunForWords({"--format-param", "a=b", "--format-p"}), ElementsAre("--format-param"));
  EXPECT_THAT(RunForWords({"--f"}, {"--formatter", "xml", "paint"}), ElementsAre("--format-param"));
  EXPECT_THAT(RunForWords({"--formatter", "xml", "p"}), ElementsAre("paint", "pencil"));
}

TEST_F(CompleteTest, VersionIsOfferedAsTheOnlyArgument) {
  EXPECT_THAT(RunForWords({"--v"}), ElementsAre("--version"));
  EXPECT_THAT(RunForWords({"--v"}, {"paint"}), IsEmpty());
  EXPECT_THAT(RunForWords({"--formatter=xml", "--v"}), IsEmpty());
}

// For the parser, no word ends the options: "--" is a word like any other, and no node has this
// name.
TEST_F(CompleteTest, TwoDashesAreAWord) {
  EXPECT_THAT(RunForWords({"--", ""}), IsEmpty());
  EXPECT_THAT(RunForWords({"--", "--f"}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "--", "l"}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "list", "--", "--c"}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "list", "--colour", "red", "--", "--s"}), IsEmpty());
  EXPECT_THAT(RunForWords({"paint", "list", "--file", "--", "--c"}), ElementsAre("--colour"));
}

TEST_F(CompleteTest, LinesOfExplainBeginWithItsOwnOptions) {
  EXPECT_THAT(RunExplain({"--shell"}), ElementsAre("--shell-text", "--shell-input"));
  EXPECT_THAT(RunExplain({"--shell"}, {"paint", "list"}),
              ElementsAre("--shell-text", "--shell-input"));
  EXPECT_THAT(RunExplain({"--shell-text", "--shell"}), IsEmpty());
  EXPECT_THAT(RunExplain({"--formatter", "xml", "--shell"}), IsEmpty());
  EXPECT_THAT(RunForWords({"--shell"}), IsEmpty());
  EXPECT_THAT(RunExplain({"--v"}), ElementsAre("--version"));
  EXPECT_THAT(RunExplain({"--shell-text", "--v"}), IsEmpty());
}

TEST_F(CompleteTest, LinesOfExplainAreOtherwiseThoseOfTheTool) {
  EXPECT_THAT(RunExplain({"p"}), ElementsAre("paint", "pencil"));
  EXPECT_THAT(RunExplain({"--shell-input", "p"}), ElementsAre("paint", "pencil"));
  EXPECT_THAT(RunExplain({"--shell-text", "--formatter=json", "paint", "list", "--c"}),
              ElementsAre("--colour"));
  EXPECT_THAT(RunExplain({"--shell-text", "--f"}, {"--formatter", "xml", "paint"}),
              ElementsAre("--format-param"));
}

TEST_F(CompleteTest, TheOptionInputIsNotOfferedToExplain) {
  EXPECT_THAT(RunForWords({"--i"}), ElementsAre("--input"));
  EXPECT_THAT(RunExplain({"--i"}), IsEmpty());
  EXPECT_THAT(RunExplain({"--input", ""}), IsEmpty());
  EXPECT_EQ(Directive::None, Run({"--input", ""}, {}, "vexil-explain").directive);
}

TEST_F(CompleteTest, FormattersComeFromThePlugins) {
  EXPECT_THAT(RunForWords({"--formatter", ""}),
              ElementsAre("commandhelp", "json", "python", "simple", "table", "xml"));
  EXPECT_THAT(RunForWords({"--formatter=t"}), ElementsAre("--formatter=table"));
}

TEST_F(CompleteTest, FilesFollowTheOptionsForFiles) {
  EXPECT_EQ(Directive::Files, Run({"--plugin", "x"}).directive);
  EXPECT_EQ(Directive::Folders, Run({"--plugin-dir="}).directive);
  EXPECT_EQ(Directive::Files, Run({"--input", ""}).directive);
  EXPECT_THAT(RunForWords({"--input", ""}), ElementsAre("STDIN"));
}

TEST_F(CompleteTest, KeysOfFormatParametersBelongToTheFormatter) {
  EXPECT_THAT(RunForWords({"--format-param", "f"}, {"paint", "list"}),
              ElementsAre("fields=", "fields:Row=", "fields:Usage="));
  EXPECT_THAT(RunForWords({"--formatter=simple", "--format-param=h"}, {"paint", "list"}),
              ElementsAre("--format-param=header:Row=", "--format-param=header:Usage="));
  EXPECT_THAT(RunForWords({"--formatter=json", "--format-param", ""}, {"paint", "list"}),
              IsEmpty());
  EXPECT_EQ(Directive::NoSpace, Run({"--format-param", "f"}).directive);
}

TEST_F(CompleteTest, KeysAreThoseOfPrettyIfTheEnvironmentRequestsIt) {
  dispatcher_.RegisterPlugin(std::make_shared<Formats::FormatsPlugin>());
  const ScopedEnvironment environment("VEXIL_TERMINAL_FORMATTER", "pretty");
  EXPECT_THAT(RunForWords({"--format-param", "hu"}, {"paint", "list"}), ElementsAre("human="));
  EXPECT_THAT(RunForWords({"--format-param", "fields:"}, {"paint", "list"}), IsEmpty());
  EXPECT_THAT(RunForWords({"--formatter=table", "--format-param", "hu"}, {"paint", "list"}),
              IsEmpty());
}

TEST_F(CompleteTest, ColumnsAreThoseOfTheCommandEvenAfterAComma) {
  EXPECT_THAT(RunForWords({"--format-param", "fields="}, {"paint", "list"}),
              ElementsAre("fields=Name", "fields=Size", "fields=Usage", "fields=Free"));
  EXPECT_THAT(RunForWords({"--format-param=fields:Row=S"}, {"paint", "list"}),
              ElementsAre("--format-param=fields:Row=Size"));
  EXPECT_THAT(RunForWords({"--format-param", "fields=Size,"}, {"paint", "list"}),
              ElementsAre("fields=Size,Name", "fields=Size,Usage", "fields=Size,Free"));
  EXPECT_THAT(RunForWords({"--format-param", "fields:Row=Size,Usage,Name,"}, {"paint", "list"}),
              IsEmpty());
  EXPECT_THAT(RunForWords({"--format-param", "fields="}), IsEmpty());
  EXPECT_THAT(RunForWords({"--format-param", "show-header=f"}, {"paint", "list"}),
              ElementsAre("show-header=false"));
  EXPECT_EQ(Directive::None, Run({"--format-param", "show-header="}).directive);
  EXPECT_EQ(Directive::NoSpace, Run({"--format-param", "fields="}).directive);
}

TEST_F(CompleteTest, FormattersOfTheToolKnowFieldsByTheirPaths) {
  dispatcher_.RegisterPlugin(std::make_shared<Formats::FormatsPlugin>());
  EXPECT_THAT(RunForWords({"--formatter=csv", "--format-param=f"}, {"paint", "list"}),
              ElementsAre("--format-param=fields="));
  EXPECT_THAT(RunForWords({"--formatter=csv", "--format-param=fields=U"}, {"paint", "list"}),
              ElementsAre("--format-param=fields=Usage", "--format-param=fields=Usage.Free"));
  EXPECT_THAT(RunForWords({"--formatter=csv", "--format-param=sort=N"}, {"paint", "list"}),
              ElementsAre("--format-param=sort=Name"));
  EXPECT_THAT(RunForWords({"--formatter=csv", "--format-param", "sort=-S"}, {"paint", "list"}),
              ElementsAre("sort=-Size"));
  EXPECT_THAT(RunForWords({"--formatter=csv", "--format-param=header="}, {"paint", "list"}),
              ElementsAre("--format-param=header=true", "--format-param=header=false"));
}

TEST_F(CompleteTest, AWordWithADashThatIsNoOptionHasNoValues) {
  for (const char* word : {"--form\x14ter=", "--form\x14ter=t", "--=", "--f=", "--=x", "--4x=y"}) {
    EXPECT_THAT(RunForWords({word}), IsEmpty()) << word;
    EXPECT_THAT(RunForWords({word}, {"paint", "list"}), IsEmpty()) << word;
    EXPECT_THAT(RunForWords({"--formatter", "table", word}), IsEmpty()) << word;
  }
}

TEST_F(CompleteTest, TheCursorMayBeAfterTheLastWord) {
  const Words words = {"vexil", "paint"};
  const Completion completion =
      CompleteLine(dispatcher_, Complete::ReadCursorLine(words, 2), Complete::Deadline());
  EXPECT_EQ(2U, completion.candidates.size());
}

}  // namespace

}  // namespace Kestrel::Testing
