// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/Hints.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
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
#include "vexil/formats/FormatsPlugin.h"

namespace Kestrel::Testing {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using CallSpec::InputSpec;
using CallSpec::OutputSpec;
using CallSpec::ParameterConstraint;
using CallSpec::ParameterSpec;
using MetaObj::MetaList;
using MetaObj::MetaStruct;

std::shared_ptr<ParameterSpec> MakeParameter(const char* name, CallSpec::ParameterType type) {
  const auto parameter = ParameterSpec::New(name, type);
  parameter->SetRequired(false);
  return parameter;
}

std::shared_ptr<ParameterSpec> MakeColour(const char* name) {
  const auto constraint = ParameterConstraint::New(CallSpec::StringEnum);
  constraint->AddStringEnum("green");
  constraint->AddStringEnum("grey");
  constraint->AddStringEnum("red");
  const auto parameter = MakeParameter(name, CallSpec::String);
  parameter->SetConstraint(constraint);
  return parameter;
}

std::shared_ptr<ParameterSpec> MakeNumber() {
  const auto constraint = ParameterConstraint::New(CallSpec::IntEnum);
  constraint->AddIntEnum(512);
  constraint->AddIntEnum(4096);
  const auto parameter = MakeParameter("number", CallSpec::Int);
  parameter->SetConstraint(constraint);
  return parameter;
}

std::shared_ptr<MetaList> MakeRows() {
  const auto usage = MetaStruct::New("Usage");
  usage->SetField("Free", 0);
  const auto row = MetaStruct::New("Row");
  row->SetField("Name", "");
  row->SetField("Size", 0);
  row->SetField("Usage", usage);
  return MetaList::New(MetaObj::MetaType::Struct, row);
}

// A tree with one command, "paint list", which prints a table.
class HintsTest : public ::testing::Test {
 protected:
  HintsTest() {
    command_->inputSpec = InputSpec::New();
    const auto flag = MakeParameter("force", CallSpec::Flag);
    flag->SetShortName("f");
    const auto secret = MakeColour("secret");
    secret->SetSecret(true);
    for (const auto& parameter : {flag, secret, MakeColour("colour"), MakeNumber()}) {
      command_->inputSpec->AddParameter(parameter);
    }
    command_->outputSpec = OutputSpec::New();
    command_->outputSpec->SetRootObject(MakeRows());
    command_->SetDefaultOutputFormatter("table");
    RegisterAt(dispatcher_.GetRootNamespace(), {"paint", "list"}, command_);
  }

  std::vector<std::string> Find(const std::vector<std::string>& arguments) {
    return FindHints(dispatcher_, Vexil::SplitCommandLine(arguments));
  }

  AutoCli::Dispatcher dispatcher_;
  std::shared_ptr<SampleCommand> command_ = std::make_shared<SampleCommand>();
};

TEST_F(HintsTest, ThereAreNoneForALineThatIsRight) {
  EXPECT_THAT(Find({}), IsEmpty());
  EXPECT_THAT(Find({"paint"}), IsEmpty());
  EXPECT_THAT(Find({"paint", "list", "--force", "--colour=red", "--number", "512", "--help"}),
              IsEmpty());
  EXPECT_THAT(Find({"--formatter", "table", "--format-param", "fields=Name, Size", "--screen-width",
                    "0x50", "paint", "list", "-f"}),
              IsEmpty());
}

TEST_F(HintsTest, SuggestASimilarOption) {
  EXPECT_THAT(Find({"--formater=xml", "paint", "list"}),
              ElementsAre("The dispatcher has no option --formater. Did you mean --formatter?"));
  EXPECT_THAT(Find({"paint", "list", "--color=red"}),
              ElementsAre("'paint list' has no option --color. Did you mean --colour?"));
  EXPECT_THAT(Find({"paint", "list", "--nosuch=red", "-x"}), IsEmpty());
}

TEST_F(HintsTest, NameTheSideOfThePathThatAnOptionBelongsTo) {
  EXPECT_THAT(Find({"--colour=red", "paint", "list"}),
              ElementsAre("--colour is an option of 'paint list' and comes after it."));
  EXPECT_THAT(
      Find({"paint", "list", "--formatter=xml"}),
      ElementsAre("--formatter is an option of the dispatcher and comes before 'paint list'."));
}

TEST_F(HintsTest, NameTheWordThatAnOptionTook) {
  EXPECT_THAT(Find({"--debug", "paint", "list"}),
              ElementsAre("--debug took the word 'paint' as its value."));
  EXPECT_THAT(Find({"--force", "paint", "list"}),
              ElementsAre("--force took the word 'paint' as its value.",
                          "--force is an option of 'paint list' and comes after it."));
  EXPECT_THAT(Find({"--formatter", "paint", "list"}),
              ElementsAre("--formatter took the word 'paint' as its value.",
                          "There is no formatter 'paint'. The formatters are commandhelp, json, "
                          "python, simple, table, xml."));
  EXPECT_THAT(Find({"paint", "list", "--force", "it"}),
              ElementsAre("--force needs no value but took the word 'it'."));
  EXPECT_THAT(Find({"--plugin-dir", "paint"}), IsEmpty());
}

TEST_F(HintsTest, SuggestASimilarValue) {
  EXPECT_THAT(Find({"paint", "list", "--colour=geen"}),
              ElementsAre("--colour does not accept 'geen'. Did you mean 'green'?"));
  EXPECT_THAT(Find({"paint", "list", "--colour=gree"}),
              ElementsAre("--colour does not accept 'gree'. Did you mean 'green' or 'grey'?"));
  EXPECT_THAT(Find({"paint", "list", "--number=4069"}),
              ElementsAre("--number does not accept '4069'. Did you mean '4096'?"));
  EXPECT_THAT(Find({"paint", "list", "--colour=nosuch"}), IsEmpty());
}

TEST_F(HintsTest, NeverContainASecret) {
  EXPECT_THAT(Find({"paint", "list", "--secret=geen"}), IsEmpty());
}

TEST_F(HintsTest, SuggestASimilarFormatter) {
  EXPECT_THAT(Find({"--formatter=tabel", "paint", "list"}),
              ElementsAre("There is no formatter 'tabel'. Did you mean 'table'?"));
}

TEST_F(HintsTest, ReportAWidthThatIsNotANumber) {
  for (const char* width : {"80x", "wide", "0x", "", "8 0"}) {
    EXPECT_THAT(Find({"--screen-width", width, "paint"}),
                ElementsAre("The screen width '" + std::string(width) + "' is not a number."));
  }
}

TEST_F(HintsTest, SuggestASimilarFormatParameter) {
  EXPECT_THAT(Find({"--format-param=feilds=Name", "paint", "list"}),
              ElementsAre("The formatter 'table' does not use the parameter 'feilds'. Did you mean "
                          "'fields'?"));
  EXPECT_THAT(
      Find({"--format-param=fields:Rwo=Name", "paint", "list"}),
      ElementsAre("The formatter 'table' does not use the parameter 'fields:Rwo'. Did you mean "
                  "'fields:Row'?"));
  EXPECT_THAT(Find({"--formatter=json", "--format-param=fields=Name", "paint", "list"}),
              ElementsAre("The formatter 'json' does not use the parameter 'fields'."));
  EXPECT_THAT(Find({"--formatter=xml", "--format-param=fields=Name", "paint", "list"}),
              ElementsAre("The formatter 'xml' does not use the parameter 'fields'. It uses "
                          "stylesheet."));
  EXPECT_THAT(Find({"--format-param=units:Row.Size=B", "--format-param=printf:Usage.Free=%ld",
                    "paint", "list"}),
              IsEmpty());
}

TEST_F(HintsTest, NameTheFieldsThatExist) {
  EXPECT_THAT(Find({"--format-param=fields:Row=Name,Sise", "paint", "list"}),
              ElementsAre("The result of 'paint list' has no field 'Sise', but: Name, Size, "
                          "Usage."));
  EXPECT_THAT(Find({"--format-param=fields=Free,None", "paint", "list"}),
              ElementsAre("The result of 'paint list' has no field 'None', but: Name, Size, Usage, "
                          "Free."));
}

TEST_F(HintsTest, KnowTheKeysAndFieldsOfTheToolsFormatters) {
  dispatcher_.RegisterPlugin(std::make_shared<Formats::FormatsPlugin>());
  const auto find = [this](const std::string& formatter, const std::string& parameter) {
    return Find({"--formatter", formatter, "--format-param", parameter, "paint", "list"});
  };
  EXPECT_THAT(find("ndjson", "limt=1"),
              ElementsAre("The formatter 'ndjson' does not use the parameter 'limt'. Did you mean "
                          "'limit'?"));
  EXPECT_THAT(find("csv", "colour=1"),
              ElementsAre("The formatter 'csv' does not use the parameter 'colour'. It uses "
                          "fields, sort, limit, header."));
  EXPECT_THAT(find("pretty", "colour=always"),
              ElementsAre("The formatter 'pretty' does not use the parameter 'colour'. Did you "
                          "mean 'color'?"));
  EXPECT_THAT(find("yaml", "fields=Name,Free,Usage.Free"),
              ElementsAre("The result of 'paint list' has no field 'Free', but: Name, Size, Usage, "
                          "Usage.Free."));
  EXPECT_THAT(find("tsv", "sort=-Usage"),
              ElementsAre("The result of 'paint list' has no field 'Usage', but: Name, Size, "
                          "Usage.Free."));
  EXPECT_THAT(find("value-xml", "sort=-Size"), IsEmpty());
  EXPECT_THAT(find("json-utf8", "limit=x"), IsEmpty());
}

TEST_F(HintsTest, LeaveFormatParametersOfAHelpPageAlone) {
  EXPECT_THAT(Find({"--format-param=feilds=Name", "paint", "list", "--help"}), IsEmpty());
}

TEST_F(HintsTest, ShowNoControlCharacters) {
  EXPECT_THAT(Find({"--screen-width=\x1b[2J", "paint"}),
              ElementsAre("The screen width '?[2J' is not a number."));
}

}  // namespace

}  // namespace Kestrel::Testing
