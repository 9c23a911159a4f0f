// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "plugins/vexil/ToolRun.h"
#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {
namespace {

using nlohmann::json;
using testing::HasSubstr;

VexilResult Describe(const std::string& path, const std::vector<std::string>& plugins = {}) {
  return RunWith(plugins, {"vexil", "command", "describe", "--path", path}).Run();
}

json DescribeAsJson(const std::string& path, const std::vector<std::string>& plugins = {}) {
  return RunForJson(plugins, {"vexil", "command", "describe", "--path", path});
}

void ExpectRefusal(const std::string& path, const std::string& message) {
  const VexilResult result = Describe(path);
  EXPECT_EQ("", result.out);
  EXPECT_EQ("Errors: \n" + message + "\n", result.err);
  EXPECT_EQ(1, result.status);
}

/// Many kinds of parameters, every kind of constraint, and a nested result.
constexpr const char* kDescriptor = R"(<p>
  <version>1.0.0</version>
  <namespaces><namespace path="sample"><description>Samples.</description></namespace></namespaces>
  <commands>
    <command path="sample.list">
      <description>List samples.</description>
      <meta-data><meta-data-entry name="changes">false</meta-data-entry></meta-data>
      <input-spec>
        <parameter name="colour" type="string-list" required="false" shortname="c">
          <description>Of this colour only: %ENUM%.</description>
          <constraint type="stringenum">
            <enum><enum-value value="red"/><enum-value value="blue"/></enum>
          </constraint>
        </parameter>
        <parameter name="count" type="int" required="true">
          <description>How many.</description>
          <constraint type="range"><range min="-1" max="9"/></constraint>
        </parameter>
        <parameter name="key" type="string" required="false" secret="true">
          <description>The key.</description>
        </parameter>
        <parameter name="level" type="int-list" required="false">
          <description>The level.</description>
          <constraint type="intenum">
            <enum><enum-value value="2"/><enum-value value="1"/></enum>
          </constraint>
        </parameter>
        <parameter name="name" type="string" required="false" shortname="n">
          <description>The name.</description>
          <constraint type="regex"><regex>[a-z]+</regex></constraint>
        </parameter>
        <parameter name="quick" type="flag" required="false"><description>Fast.</description></parameter>
      </input-spec>
      <output-spec>
        <list type="structure">
          <structure typeName="Sample">
            <field name="Name"><string/></field>
            <field name="Size">
              <structure typeName="Size"><field name="Bytes"><int/></field></structure>
            </field>
          </structure>
        </list>
      </output-spec>
      <format-parameters>
        <formatter>table</formatter>
        <format-parameter name="fields:Sample"> Size.Bytes ,Name</format-parameter>
      </format-parameters>
      <execute>true</execute>
    </command>
  </commands>
</p>)";

json Parameter(const char* name, const char* kind, const char* description, const char* summary) {
  return {{"Name", name},         {"Short Name", "none"},    {"Kind", kind},
          {"Summary", summary},   {"Required", false},       {"Secret", false},
          {"Multiple", false},    {"Constraint", "none"},    {"Bounds", json::array()},
          {"Expression", "none"}, {"Values", json::array()}, {"Description", description}};
}

json Field(const char* path, const char* kind, const char* type) {
  return {{"Path", path}, {"Kind", kind}, {"Type", type}, {"Documentation", "none"}};
}

TEST(CommandDescribeTest, ReturnsEverythingThatACommandDeclares) {
  const ScopedTempDir folder;
  const json description = DescribeAsJson("sample list", {folder.Write("sample.xml", kDescriptor)});

  json colour = Parameter("colour", "string-list", "Of this colour only: [red, blue].",
                          "optional string-list, short name c, one of red, blue");
  colour["Short Name"] = "c";
  colour["Multiple"] = true;
  colour["Constraint"] = "[red, blue]";
  colour["Values"] = {{{"Value", "red"}, {"Description", "none"}},
                      {{"Value", "blue"}, {"Description", "none"}}};
  json count = Parameter("count", "int", "How many.", "required int, integer in the range -1-9");
  count["Required"] = true;
  count["Constraint"] = "integer in the range -1-9";
  count["Bounds"] = {-1, 9};
  json key = Parameter("key", "string", "The key.", "optional secret string");
  key["Secret"] = true;
  json level = Parameter("level", "int-list", "The level.", "optional int-list, one of 2, 1");
  level["Multiple"] = true;
  level["Constraint"] = "[2, 1]";
  level["Values"] = {{{"Value", "2"}, {"Description", "none"}},
                     {{"Value", "1"}, {"Description", "none"}}};
  json name = Parameter("name", "string", "The name.",
                        "optional string, short name n, a string matching the regular expression "
                        "[a-z]+");
  name["Short Name"] = "n";
  name["Constraint"] = "a string matching the regular expression [a-z]+";
  name["Expression"] = "[a-z]+";

  const json expected = {
      {"Path", "sample list"},
      {"Description", "List samples."},
      {"Plugin", "sample.xml"},
      {"Meta Data", {{{"Name", "changes"}, {"Value", "false"}}}},
      {"Parameters",
       {colour, count, key, level, name, Parameter("quick", "flag", "Fast.", "optional flag")}},
      {"Result Description", "none"},
      {"Result Kind", "structure-list"},
      {"Result Type", "Sample"},
      {"Fields",
       {Field("Name", "string", "none"), Field("Size", "structure", "Size"),
        Field("Size.Bytes", "int", "none")}},
      {"Formatter", "table"},
      {"Columns", {"Size.Bytes", "Name"}},
      {"Format Parameters", {{{"Name", "fields:Sample"}, {"Value", " Size.Bytes ,Name"}}}},
      {"Examples", json::array()}};
  EXPECT_EQ(expected, description) << json::diff(expected, description);
}

TEST(CommandDescribeTest, PrintsForPeopleByDefault) {
  const VexilResult result = Describe("vexil command describe");
  EXPECT_EQ(
      "vexil command describe:\n"
      "   Description: Describe a command: its parameters, its result and how it is printed.\n"
      "   Plugin: vexil.so\n"
      "   Result Description: Everything that the command declares.\n"
      "   Result Kind: structure\n"
      "   Formatter: simple\n"
      "   Columns: Description, Plugin, Result Description, Result Kind, Formatter, Columns, "
      "Parameters, Fields, Examples\n"
      "   Parameters: \n"
      "         path:\n"
      "            Description: The command's path without the name of the tool: its words in "
      "quotes, or joined by full stops.\n"
      "            Summary: required string, short name p\n"
      "\n"
      "   Fields: \n"
      "         Columns:\n"
      "            Documentation: The fields that it prints by default, in their order.\n"
      "            Kind: string-list\n",
      result.out.substr(0, result.out.find("\n         Description:\n")));
  EXPECT_THAT(result.out, HasSubstr("         Describe a command without the need for quotes:\n"
                                    "            Line: vexil command describe --path "
                                    "vexil.plugin.list\n"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(CommandDescribeTest, NamesThePluginByItsFile) {
  const std::vector<std::string> plugins = {GetModulePath("EchoPlugin")};
  EXPECT_EQ("EchoPlugin.so", DescribeAsJson("echo say", plugins)["Plugin"]);
  EXPECT_EQ("built-in", DescribeAsJson("vexil command list", plugins)["Plugin"]);
  EXPECT_EQ("vexil.so", DescribeAsJson("vexil version get", plugins)["Plugin"]);
}

TEST(CommandDescribeTest, AScalarResultHasNoFieldsAndNoColumns) {
  const json description = DescribeAsJson("echo say", {GetModulePath("EchoPlugin")});
  EXPECT_EQ("string", description["Result Kind"]);
  EXPECT_EQ("none", description["Result Type"]);
  EXPECT_EQ(json::array(), description["Fields"]);
  EXPECT_EQ(json::array(), description["Columns"]);
}

TEST(CommandDescribeTest, TheWordsOfAPathMayBeSeparatedInManyWays) {
  const std::string described = Describe("vexil version get").out;
  EXPECT_NE("", described);
  for (const char* const path :
       {"vexil.version.get", "  vexil \t version get ", ".vexil.version get"}) {
    EXPECT_EQ(described, Describe(path).out) << path;
  }
}

TEST(CommandDescribeTest, TheParameterFieldsNeedsNoTypeName) {
  const VexilResult result = RunWith({}, {"--format-param", "fields=Path,Plugin", "vexil",
                                          "command", "describe", "-p", "vexil.version.get"})
                                 .Run();
  EXPECT_EQ("vexil version get:\n   Path: vexil version get\n   Plugin: vexil.so\n", result.out);
}

TEST(CommandDescribeTest, ColumnsAreThoseOfTheFormatter) {
  const json list = DescribeAsJson("vexil command list");
  EXPECT_EQ(json({"Namespace", "Command", "Description"}), list["Columns"]);
  const json plugins = DescribeAsJson("vexil plugin list");
  EXPECT_EQ(json({"File", "Kind", "Commands", "Path"}), plugins["Columns"]);
}

TEST(CommandDescribeTest, SimpleKeepsSpacesAroundTheNamesOfFields) {
  const ScopedTempDir folder;
  std::string descriptor = kDescriptor;
  const std::string formatter = "<formatter>table</formatter>";
  descriptor.replace(descriptor.find(formatter), formatter.size(), "<formatter>simple</formatter>");
  const json description = DescribeAsJson("sample list", {folder.Write("sample.xml", descriptor)});
  EXPECT_EQ(json({" Size.Bytes ", "Name"}), description["Columns"]);
}

TEST(CommandDescribeTest, TheMessageRepeatsAnUnknownPath) {
  ExpectRefusal("storag mount list",
                "No command has the path 'storag mount list': 'storag' is unknown. To list the "
                "commands: vexil vexil command list");
  ExpectRefusal("vexil.comand.list",
                "No command has the path 'vexil.comand.list': 'vexil' contains no 'comand'. To "
                "list the commands: vexil vexil command list --namespace-filter vexil");
}

TEST(CommandDescribeTest, AWordAfterThePathOfACommandIsReported) {
  ExpectRefusal("vexil command list all",
                "No command has the path 'vexil command list all': 'vexil command list' is a "
                "command and contains nothing. To list the commands: vexil vexil command list "
                "--namespace-filter vexil.command");
}

TEST(CommandDescribeTest, ANamespaceIsNotACommand) {
  ExpectRefusal("vexil command",
                "The path 'vexil command' leads to a namespace, not to a command. To list the "
                "commands: vexil vexil command list --namespace-filter vexil.command");
}

TEST(CommandDescribeTest, APathNeedsWords) {
  for (const char* const path : {"", " ", "."}) {
    ExpectRefusal(path, std::string("The path '") + path +
                            "' has no words. To list the commands: vexil vexil command list");
  }
}

TEST(CommandDescribeTest, TheAdviceNamesTheToolAsItWasCalled) {
  const VexilResult result =
      RunWith({}, {"vexil", "command", "describe", "-p", "x"}).CalledAs("./bin/tool").Run();
  EXPECT_THAT(result.err, HasSubstr("To list the commands: ./bin/tool vexil command list\n"));
}

TEST(CommandDescribeTest, APathIsRequired) {
  const VexilResult result = RunWith({}, {"vexil", "command", "describe"}).Run();
  EXPECT_EQ("Errors: \nMissing required parameter --path\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(CommandDescribeTest, ADeclarationThatThrowsIsAMessage) {
  const VexilResult result = Describe("broken get", {GetModulePath("BrokenDeclarationPlugin")});
  EXPECT_EQ("", result.out);
  EXPECT_EQ(
      "Errors: \nThe command 'broken get' does not declare what it takes and returns: the "
      "parameters are lost\n",
      result.err);
  EXPECT_EQ(1, result.status);
}

TEST(CommandDescribeTest, LoadingThePluginTwiceIsReported) {
  const VexilResult result = RunWith({KESTREL_VEXIL_PLUGIN}, {"vexil", "version", "get"}).Run();
  EXPECT_THAT(result.err, HasSubstr("Duplicate registration in namespace vexil command"));
  EXPECT_EQ(0, result.status);
}

}  // namespace
}  // namespace Kestrel::Testing
