// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/ReadTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/Random.h"
#include "support/SampleCommands.h"
#include "support/SampleConstraints.h"
#include "support/SampleValues.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/TestPlugins.h"
#include "tools/catalog/CatalogJson.h"
#include "tools/catalog/CatalogWords.h"

namespace Kestrel::Catalog {
namespace {

using AutoCli::Dispatcher;
using AutoCli::NamespaceNode;
using CallSpec::InputSpec;
using CallSpec::OutputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::LyingValue;
using testing::Pair;
using Testing::RegisterAt;
using Testing::SampleCommand;
using Testing::ScopedTempDir;
using Testing::TestPluginPath;
using testing::UnorderedElementsAre;

/// A namespace whose children a test chooses.
class OddNamespace : public AutoCli::Namespace {
 public:
  std::function<std::vector<std::shared_ptr<NamespaceNode>>()> children;

  std::vector<std::shared_ptr<NamespaceNode>> GetNamespaceNodes() override { return children(); }
};

/// A namespace whose type is that of a command.
class FalseCommand : public AutoCli::Namespace {
 public:
  AutoCli::NodeType GetType() override { return AutoCli::NodeType::Command; }
};

/// A command that calls functions of the test, which may throw, before it returns declarations.
class BrokenCommand : public SampleCommand {
 public:
  std::function<void()> beforeInput = [] {};
  std::function<void()> beforeOutput = [] {};

  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    beforeInput();
    return inputSpec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    beforeOutput();
    return outputSpec;
  }
};

class ReadTreeTest : public testing::Test {
 protected:
  std::shared_ptr<AutoCli::RootNamespace> Root() { return dispatcher_.GetRootNamespace(); }

  /// Adds a command "sample get", whose declarations the test chooses.
  SampleCommand& AddSample() {
    const auto command = std::make_shared<SampleCommand>();
    RegisterAt(Root(), {"sample", "get"}, command);
    return *command;
  }

  BrokenCommand& AddBroken() {
    const auto command = std::make_shared<BrokenCommand>();
    RegisterAt(Root(), {"sample", "broken"}, command);
    return *command;
  }

  /// Returns the catalog's entry for "sample get".
  Command ReadSample() {
    const Tree tree = ReadTree(dispatcher_);
    const Command* const command = FindCommand(tree, "sample get");
    EXPECT_NE(nullptr, command);
    return command == nullptr ? Command() : *command;
  }

  /// Adds "sample get" with the declared result `root`. Returns that result from the catalog.
  Result ReadResult(const std::shared_ptr<MetaObject>& root) {
    AddSample().outputSpec->SetRootObject(root);
    return ReadSample().result;
  }

  /// Returns the path and message of each fault.
  std::vector<std::pair<std::string, std::string>> ReadFaults() {
    std::vector<std::pair<std::string, std::string>> faults;
    for (const Fault& fault : ReadTree(dispatcher_).faults) {
      faults.emplace_back(fault.path, fault.text);
    }
    return faults;
  }

  Dispatcher dispatcher_;
  ScopedTempDir folder_;
};

template <typename Element>
std::vector<std::string> PathsOf(const std::vector<Element>& elements) {
  std::vector<std::string> paths;
  for (const Element& element : elements) {
    paths.push_back(element.path);
  }
  return paths;
}

/// Returns "path kind typeName: documentation" for each field.
std::vector<std::string> Describe(const std::vector<Field>& fields) {
  std::vector<std::string> described;
  for (const Field& field : fields) {
    described.push_back(field.path + " " + WordOf(field.kind) + " " + field.typeName + ": " +
                        field.documentation);
  }
  return described;
}

TEST_F(ReadTreeTest, HasEveryNodeInOrderOfPaths) {
  const auto command = [] { return Testing::MakeAnsweringCommand("x"); };
  RegisterAt(Root(), {"network", "route", "list"}, command());
  RegisterAt(Root(), {"network", "list"}, command());
  RegisterAt(Root(), {"net", "get"}, command());
  RegisterAt(Root(), {"aB", "get"}, command());
  RegisterAt(Root(), {"a", "get"}, command());
  RegisterAt(Root(), {"a0", "get"}, command());
  RegisterAt(Root(), {"top"}, command());
  const Tree tree = ReadTree(dispatcher_);
  EXPECT_THAT(PathsOf(tree.commands),
              ElementsAre("a get", "a0 get", "aB get", "net get", "network list",
                          "network route list", "top", "vexil command list"));
  EXPECT_THAT(PathsOf(tree.namespaces), ElementsAre("a", "a0", "aB", "net", "network",
                                                    "network route", "vexil", "vexil command"));
  EXPECT_THAT(tree.faults, IsEmpty());
}

TEST_F(ReadTreeTest, TheBuiltInCommandIsReadWhole) {
  const Tree tree = ReadTree(dispatcher_);
  ASSERT_EQ(1u, tree.commands.size());
  const Command& list = tree.commands[0];
  EXPECT_EQ("vexil command list", list.path);
  EXPECT_EQ("built-in", list.plugin);
  EXPECT_EQ("List all of the vexil commands.", list.description);
  EXPECT_EQ("table", list.formatter);
  EXPECT_THAT(list.formatParameters,
              ElementsAre(Pair("fields:VexilCommand", "Namespace,Command,Description"),
                          Pair("wrap-last", "true")));
  ASSERT_EQ(3u, list.parameters.size());
  EXPECT_EQ("command-filter", list.parameters[0].name);
  EXPECT_EQ("c", list.parameters[0].shortName);
  EXPECT_EQ(ParameterType::String, list.parameters[0].kind);
  EXPECT_FALSE(list.parameters[0].required);
  EXPECT_STREQ("structure-list", WordOf(list.result.kind.value()));
  EXPECT_EQ("VexilCommand", list.result.typeName);
  EXPECT_EQ("", list.result.description);
  EXPECT_THAT(Describe(list.result.fields),
              ElementsAre("Command string : ", "Description string : ", "Namespace string : "));
  EXPECT_EQ("Operations to get information about commands.",
            FindNamespace(tree, "vexil command")->description);
  EXPECT_THAT(FindNamespace(tree, "vexil")->plugins, ElementsAre("built-in"));
}

TEST_F(ReadTreeTest, ReadsWhatACommandSaysAboutItself) {
  SampleCommand& command = AddSample();
  command.SetDescription("Gets it.");
  command.AddExample("--all", "Get all");
  command.AddExample("", "Get it");
  command.AddMetaData("changes", "false");
  command.SetDefaultOutputFormatter("simple");
  command.SetDefaultOutputParameter("align-fields", "true");
  command.outputSpec->SetDescription("What was got.");
  const Command read = ReadSample();
  EXPECT_EQ("Gets it.", read.description);
  ASSERT_EQ(2u, read.examples.size());
  EXPECT_EQ("--all", read.examples[0].arguments);
  EXPECT_EQ("Get all", read.examples[0].description);
  EXPECT_EQ("", read.examples[1].arguments);
  EXPECT_THAT(read.metaData, ElementsAre(Pair("changes", "false")));
  EXPECT_EQ("simple", read.formatter);
  EXPECT_THAT(read.formatParameters, ElementsAre(Pair("align-fields", "true")));
  EXPECT_EQ("What was got.", read.result.description);
}

TEST_F(ReadTreeTest, RunsNoCommand) {
  const SampleCommand& command = AddSample();
  ReadTree(dispatcher_);
  EXPECT_EQ(0, command.executions);
}

TEST_F(ReadTreeTest, ReadsEveryKindOfParameterAndLeavesHelpOut) {
  SampleCommand& command = AddSample();
  for (int number = ParameterType::String; number <= ParameterType::BoolList; ++number) {
    const auto kind = static_cast<ParameterType>(number);
    const auto parameter = ParameterSpec::New("kind-" + std::to_string(number), kind);
    parameter->SetRequired(number % 2 == 0);
    command.inputSpec->AddParameter(parameter);
  }
  const std::vector<Parameter> parameters = ReadSample().parameters;
  ASSERT_EQ(7u, parameters.size());
  for (int number = 0; number < 7; ++number) {
    const Parameter& parameter = parameters[static_cast<std::size_t>(number)];
    EXPECT_EQ("kind-" + std::to_string(number), parameter.name);
    EXPECT_EQ(number, parameter.kind);
    EXPECT_EQ("", parameter.shortName);
    EXPECT_EQ(number % 2 == 0, parameter.required);
    EXPECT_EQ(number >= ParameterType::StringList, parameter.multiple);
    EXPECT_FALSE(parameter.secret);
    EXPECT_TRUE(Constraint() == parameter.constraint);
  }
}

TEST_F(ReadTreeTest, ReadsThePropertiesOfAParameter) {
  const auto parameter = ParameterSpec::New("password", ParameterType::String);
  parameter->SetShortName("P");
  parameter->SetSecret(true);
  parameter->SetDescription("Kept from others.");
  AddSample().inputSpec->AddParameter(parameter);
  const Parameter read = ReadSample().parameters.at(0);
  EXPECT_EQ("P", read.shortName);
  EXPECT_TRUE(read.secret);
  EXPECT_TRUE(read.required);
  EXPECT_EQ("Kept from others.", read.description);
}

TEST_F(ReadTreeTest, ReadsEveryTypeOfConstraint) {
  const auto integers = CallSpec::ParameterConstraint::New(CallSpec::IntEnum);
  integers->AddIntEnum(7);
  integers->AddIntEnum(-7);
  const auto strings = CallSpec::ParameterConstraint::New(CallSpec::StringEnum);
  strings->AddStringEnum("b", "the second");
  strings->AddStringEnum("a");
  InputSpec& spec = *AddSample().inputSpec;
  const auto add = [&spec](const char* name, ParameterType kind, const auto& constraint) {
    const auto parameter = ParameterSpec::New(name, kind);
    parameter->SetDescription("%ENUM%%FULLENUM%");
    parameter->SetConstraint(constraint);
    spec.AddParameter(parameter);
  };
  add("a-range", ParameterType::IntList, Testing::Range(-5, 10));
  add("b-integers", ParameterType::Int, integers);
  add("c-strings", ParameterType::String, strings);
  add("d-regex", ParameterType::StringList, Testing::Regex("[a-z]+"));
  const std::vector<Parameter> read = ReadSample().parameters;
  ASSERT_EQ(4u, read.size());
  EXPECT_TRUE((Constraint{CallSpec::IntRange, -5, 10, {}, {}, "", "integer in the range -5-10"}) ==
              read[0].constraint);
  EXPECT_TRUE((Constraint{CallSpec::IntEnum, 0, 0, {7, -7}, {}, "", "[7, -7]"}) ==
              read[1].constraint);
  EXPECT_TRUE(
      (Constraint{
          CallSpec::StringEnum, 0, 0, {}, {{"b", "the second"}, {"a", ""}}, "", "[b, a]"}) ==
      read[2].constraint);
  EXPECT_TRUE((Constraint{CallSpec::StringRegex,
                          0,
                          0,
                          {},
                          {},
                          "[a-z]+",
                          "a string matching the regular expression [a-z]+"}) ==
              read[3].constraint);
  EXPECT_EQ("[b, a]\n    b: the second\n", read[2].description);
}

TEST_F(ReadTreeTest, ReadsExamplesAndDocumentationFromMetaData) {
  const auto usage = MetaStruct::New("Usage");
  usage->SetField("Free", MetaInt::New(), "What is left.");
  usage->SetField("Full", MetaBool::New());
  const auto disk = MetaStruct::New("Disk");
  disk->SetField("Name", MetaString::New());
  disk->SetField("Usage", usage);
  SampleCommand& command = AddSample();
  command.outputSpec->SetRootObject(disk);
  command.AddExample("--all", "Get all");
  command.AddMetaData("example:", "Get it");
  command.AddMetaData("example:--name 'a:b'", "Get one");
  command.AddMetaData("field:Name", "Its name.");
  command.AddMetaData("field:Usage.Full", "Whether nothing is left.");
  command.AddMetaData("field:Usage.Free", "Not this.");
  command.AddMetaData("field:Full", "Of no field.");
  command.AddMetaData("result", "A disk.");
  const Command read = ReadSample();
  EXPECT_THAT(read.examples, ElementsAre(Example{"--all", "Get all"}, Example{"", "Get it"},
                                         Example{"--name 'a:b'", "Get one"}));
  EXPECT_EQ("A disk.", read.result.description);
  EXPECT_THAT(Describe(read.result.fields),
              ElementsAre("Name string : Its name.",
                          "Usage structure Usage: ", "Usage.Free int : What is left.",
                          "Usage.Full bool : Whether nothing is left."));
  EXPECT_THAT(read.metaData, testing::SizeIs(7));
}

TEST_F(ReadTreeTest, MetaDataDoNotReplaceTheDescriptionOfTheResult) {
  SampleCommand& command = AddSample();
  command.outputSpec->SetDescription("What was got.");
  command.AddMetaData("result", "Something else.");
  command.AddMetaData("results", "Something else.");
  command.AddMetaData("examples:--all", "Not an example");
  EXPECT_EQ("What was got.", ReadSample().result.description);
  EXPECT_THAT(ReadSample().examples, IsEmpty());
}

TEST_F(ReadTreeTest, ReadsAScalarResult) {
  const Result result = ReadResult(MetaInt::New(7));
  EXPECT_STREQ("int", WordOf(result.kind.value()));
  EXPECT_EQ("", result.typeName);
  EXPECT_THAT(result.fields, IsEmpty());
}

TEST_F(ReadTreeTest, ReadsAListOfScalars) {
  const Result result = ReadResult(MetaList::New(MetaType::Bool));
  EXPECT_STREQ("bool-list", WordOf(result.kind.value()));
  EXPECT_THAT(result.fields, IsEmpty());
}

TEST_F(ReadTreeTest, ReadsAListOfStructuresWithoutAStructure) {
  const Result result = ReadResult(MetaList::New(MetaType::Struct, nullptr));
  EXPECT_STREQ("structure-list", WordOf(result.kind.value()));
  EXPECT_EQ("", result.typeName);
  EXPECT_THAT(result.fields, IsEmpty());
}

TEST_F(ReadTreeTest, ReadsNestedShapesFieldByField) {
  const auto usage = MetaStruct::New("Usage");
  usage->SetField("Free", MetaInt::New(), "What is left.");
  usage->SetField("Full", MetaBool::New());
  const auto part = MetaStruct::New("Part");
  part->SetField("Usage", usage, "How full it is.");
  part->SetField("Names", MetaList::New(MetaType::String), "What it is called.");
  const auto disk = MetaStruct::New("Disk");
  disk->SetField("Parts", MetaList::New(MetaType::Struct, part), "Its parts.");
  disk->SetField("Name", MetaString::New(), "Its name.");
  const Result result = ReadResult(disk);
  EXPECT_STREQ("structure", WordOf(result.kind.value()));
  EXPECT_EQ("Disk", result.typeName);
  EXPECT_THAT(Describe(result.fields),
              ElementsAre("Name string : Its name.", "Parts structure-list Part: Its parts.",
                          "Parts.Names string-list : What it is called.",
                          "Parts.Usage structure Usage: How full it is.",
                          "Parts.Usage.Free int : What is left.", "Parts.Usage.Full bool : "));
}

TEST_F(ReadTreeTest, ReadsDeepShapes) {
  const Result result = ReadResult(Testing::MakeNested(300));
  EXPECT_EQ(300u + 299u, result.fields.size());
}

TEST_F(ReadTreeTest, ACommandThatDeclaresNoRootHasNoKind) {
  AddSample().outputSpec = OutputSpec::New();
  EXPECT_FALSE(ReadSample().result.kind.has_value());
}

TEST_F(ReadTreeTest, WritesBytesThatAreNotUtf8AsEscapes) {
  SampleCommand& command = AddSample();
  command.SetDescription("\xc3\x84\xff");
  command.AddExample(std::string("a\0b\xfe", 4), "c\x80");
  command.AddMetaData("\xfd", "v\xfc");
  const Command read = ReadSample();
  EXPECT_EQ("\xc3\x84\\xff", read.description);
  EXPECT_EQ(std::string("a\0b\\xfe", 7), read.examples.at(0).arguments);
  EXPECT_EQ("c\\x80", read.examples.at(0).description);
  EXPECT_THAT(read.metaData, ElementsAre(Pair("\\xfd", "v\\xfc")));
}

TEST_F(ReadTreeTest, ADeclarationThatThrowsIsAFaultAndTheOthersRemain) {
  AddSample();
  AddBroken().beforeInput = [] { throw KestrelException("no \xff fuel"); };
  const Tree tree = ReadTree(dispatcher_);
  EXPECT_NE(nullptr, FindCommand(tree, "sample get"));
  EXPECT_EQ(nullptr, FindCommand(tree, "sample broken"));
  ASSERT_EQ(1u, tree.faults.size());
  EXPECT_EQ("sample broken", tree.faults[0].path);
  EXPECT_EQ("no \\xff fuel", tree.faults[0].text);
  EXPECT_EQ("built-in", tree.faults[0].plugin);
}

TEST_F(ReadTreeTest, AStandardExceptionOfADeclarationIsAFault) {
  AddBroken().beforeOutput = [] { throw std::runtime_error("no oil"); };
  EXPECT_THAT(ReadFaults(), ElementsAre(Pair("sample broken", "no oil")));
}

TEST_F(ReadTreeTest, AThrownIntegerIsAFault) {
  AddBroken().beforeOutput = [] { throw 7; };
  EXPECT_THAT(ReadFaults(),
              ElementsAre(Pair("sample broken", "An exception that is no std::exception")));
}

TEST_F(ReadTreeTest, ACommandThatDeclaresNoInputIsAFault) {
  AddBroken().inputSpec = nullptr;
  EXPECT_THAT(ReadFaults(), ElementsAre(Pair("sample broken", testing::HasSubstr("broken"))));
}

TEST_F(ReadTreeTest, AKindThatDoesNotExistIsAFault) {
  AddSample().outputSpec->SetRootObject(std::make_shared<LyingValue>(static_cast<MetaType>(9)));
  EXPECT_THAT(ReadFaults(), ElementsAre(Pair("sample get", "A kind does not exist")));
}

TEST_F(ReadTreeTest, AValueOfAnotherClassWithTheKindListIsAFault) {
  const auto record = MetaStruct::New("Row");
  record->SetField("Parts", std::make_shared<LyingValue>(MetaType::List));
  AddSample().outputSpec->SetRootObject(record);
  EXPECT_THAT(ReadFaults(), ElementsAre(Pair("sample get", "A kind does not exist")));
}

TEST_F(ReadTreeTest, ANamespaceThatThrowsIsAFault) {
  const auto odd = std::make_shared<OddNamespace>();
  odd->children = []() -> std::vector<std::shared_ptr<NamespaceNode>> {
    throw std::runtime_error("no children");
  };
  Root()->RegisterNamespaceNode(odd, "odd");
  AddSample();
  const Tree tree = ReadTree(dispatcher_);
  EXPECT_EQ("no children", FindFault(tree, "odd")->text);
  EXPECT_EQ(nullptr, FindNamespace(tree, "odd"));
  EXPECT_NE(nullptr, FindCommand(tree, "sample get"));
}

TEST_F(ReadTreeTest, TheSecondNodeOfAPathIsAFault) {
  const auto odd = std::make_shared<OddNamespace>();
  const auto first = Testing::MakeAnsweringCommand("x");
  const auto second = Testing::MakeAnsweringCommand("y");
  first->SetName("get");
  second->SetName("get");
  odd->children = [=] {
    return std::vector<std::shared_ptr<NamespaceNode>>{first, nullptr, second};
  };
  Root()->RegisterNamespaceNode(odd, "odd");
  const Tree tree = ReadTree(dispatcher_);
  EXPECT_THAT(PathsOf(tree.commands), ElementsAre("odd get", "vexil command list"));
  ASSERT_EQ(1u, tree.faults.size());
  EXPECT_EQ("odd get", tree.faults[0].path);
  EXPECT_EQ("Another node has the same path", tree.faults[0].text);
}

TEST_F(ReadTreeTest, ANamespaceBelowItselfIsAFaultAndEndsTheWalk) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "a tree that contains itself is never released";
  }
  const auto upper = AutoCli::Namespace::New();
  const auto lower = AutoCli::Namespace::New();
  Root()->RegisterNamespaceNode(upper, "upper");
  upper->RegisterNamespaceNode(lower, "lower");
  lower->RegisterNamespaceNode(upper, "again");
  const Tree tree = ReadTree(dispatcher_);
  EXPECT_THAT(PathsOf(tree.faults), ElementsAre("again lower again"));
  EXPECT_EQ("The namespace is below itself", tree.faults[0].text);
  EXPECT_EQ("", tree.faults[0].plugin);
}

TEST_F(ReadTreeTest, ANodeOfAnotherClassWithTheTypeCommandIsAFault) {
  Root()->RegisterNamespaceNode(std::make_shared<FalseCommand>(), "false");
  EXPECT_THAT(ReadFaults(),
              ElementsAre(Pair("false", "The node has the type of a command but is none")));
}

/// A descriptor with the shared namespace "disk" and a command in it.
std::string MakeDescriptor(const std::string& command) {
  return "<p><version>1.0.0</version><namespaces><namespace path=\"disk\"><description>Disks."
         "</description></namespace></namespaces><commands><command path=\"disk." +
         command +
         "\"><description>d</description><meta-data><meta-data-entry name=\"tool\">true"
         "</meta-data-entry></meta-data><input-spec><parameter name=\"size\" type=\"int\" "
         "required=\"false\"><description>s</description></parameter></input-spec><output-spec>"
         "<list type=\"structure\"><structure typeName=\"Disk\"><field name=\"Name\"><string/>"
         "</field></structure></list></output-spec><format-parameters><formatter>table</formatter>"
         "</format-parameters><execute>true</execute></command></commands></p>";
}

TEST_F(ReadTreeTest, NamesThePluginsOfNodes) {
  dispatcher_.AddPlugin(folder_.Write("list.xml", MakeDescriptor("list")));
  dispatcher_.AddPlugin(TestPluginPath("EchoPlugin"));
  dispatcher_.AddPlugin(folder_.Write("get.xml", MakeDescriptor("get")));
  dispatcher_.AddPlugin(folder_.Write(
      "empty.xml",
      "<p><version>1.0.0</version><namespaces><namespace path=\"disk\"><description>Disks."
      "</description></namespace><namespace path=\"disk.part\"><description>Parts.</description>"
      "</namespace></namespaces></p>"));
  Root()->SubNamespace("nobodys");
  const Tree tree = ReadTree(dispatcher_);
  EXPECT_EQ("list.xml", FindCommand(tree, "disk list")->plugin);
  EXPECT_EQ("get.xml", FindCommand(tree, "disk get")->plugin);
  EXPECT_EQ("EchoPlugin.so", FindCommand(tree, "echo say")->plugin);
  EXPECT_THAT(FindNamespace(tree, "disk")->plugins,
              ElementsAre("empty.xml", "get.xml", "list.xml"));
  EXPECT_THAT(FindNamespace(tree, "disk part")->plugins, ElementsAre("empty.xml"));
  EXPECT_THAT(FindNamespace(tree, "echo")->plugins, ElementsAre("EchoPlugin.so"));
  EXPECT_THAT(FindNamespace(tree, "nobodys")->plugins, IsEmpty());
}

TEST_F(ReadTreeTest, AnyOrderOfLoadingResultsInTheSameBytes) {
  std::vector<std::string> files = {TestPluginPath("EchoPlugin")};
  for (const char* const name : {"list", "get", "check", "count"}) {
    files.push_back(folder_.Write(std::string(name) + ".xml", MakeDescriptor(name)));
  }
  for (const char* const name : {"first", "second"}) {
    files.push_back(folder_.GetPath(std::string(name) + ".so"));
    Testing::CopyTestPlugin("NamedAfterFilePlugin", files.back());
  }
  std::sort(files.begin(), files.end());
  std::vector<std::string> texts;
  Testing::Random random;
  SCOPED_TRACE(random.HowToRepeat());
  for (int round = 0; round < 20; ++round) {
    Dispatcher dispatcher;
    for (const std::string& file : files) {
      dispatcher.AddPlugin(file);
    }
    texts.push_back(WriteJson(ReadTree(dispatcher)));
    ASSERT_EQ(texts.front(), texts.back());
    for (std::size_t left = files.size(); left > 1; --left) {
      std::swap(files[left - 1], files[random.Below(left)]);
    }
  }
}

TEST_F(ReadTreeTest, TheTreeReadsBackFromJson) {
  AddSample().outputSpec->SetRootObject(Testing::MakeMounts());
  AddBroken().beforeInput = [] { throw KestrelException("no fuel"); };
  dispatcher_.AddPlugin(TestPluginPath("EchoPlugin"));
  const Tree tree = ReadTree(dispatcher_);
  EXPECT_TRUE(tree == ReadJson(WriteJson(tree)));
}

TEST(ReadCommandTest, ThrowsWhatTheDeclarationThrows) {
  BrokenCommand command;
  command.beforeInput = [] { throw std::runtime_error("no oil"); };
  EXPECT_THAT([&] { ReadCommand(command, "a b"); },
              testing::ThrowsMessage<std::runtime_error>("no oil"));
}

TEST(ReadCommandTest, HasTheGivenPathAndNoPlugin) {
  SampleCommand command;
  const Command read = ReadCommand(command, "a b");
  EXPECT_EQ("a b", read.path);
  EXPECT_EQ("", read.plugin);
}

}  // namespace
}  // namespace Kestrel::Catalog
