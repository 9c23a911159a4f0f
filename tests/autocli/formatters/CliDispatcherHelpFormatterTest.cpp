// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CliDispatcherHelpFormatter.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <iomanip>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/Golden.h"

namespace Kestrel::AutoCli {

namespace {

using CallSpec::Output;
using Kestrel::Testing::MatchesGolden;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using ::testing::IsEmpty;
using ::testing::ThrowsMessage;

struct Node {
  std::string name;
  std::string description;
  std::string type;
};

std::shared_ptr<MetaStruct> MakeNode(const Node& node) {
  auto structure = MetaStruct::New("NamespaceNode");
  structure->SetField("Name", node.name);
  structure->SetField("Description", node.description);
  structure->SetField("Type", node.type);
  return structure;
}

std::shared_ptr<MetaList> MakeNodes(const std::vector<Node>& nodes) {
  auto list = MetaList::New(MetaType::Struct, MakeNode({}));
  for (const Node& node : nodes) {
    list->Add(MakeNode(node));
  }
  return list;
}

std::shared_ptr<MetaStruct> MakeListing(const std::vector<std::string>& path,
                                        const std::vector<Node>& nodes) {
  auto words = MetaList::New(MetaType::String);
  words->AddAll(path);
  auto listing = MetaStruct::New("VexilCommandPrint");
  listing->SetField("Dispatcher", "tool");
  listing->SetField("Path", words);
  listing->SetField("NamespaceNodes", MakeNodes(nodes));
  return listing;
}

std::string Format(const std::shared_ptr<MetaStruct>& listing, std::uint16_t width = 0) {
  const auto output = CommandOutput::New();
  output->SetRootObject(listing);
  FormatParameters params;
  DisplayContext display;
  display.width = width;
  std::ostringstream out;
  CliDispatcherHelpFormatter().Format(output, params, display, out);
  return out.str();
}

std::string PrintList(const std::shared_ptr<MetaList>& nodes, bool expected) {
  DisplayContext display;
  std::ostringstream out;
  EXPECT_EQ(expected, CliDispatcherHelpFormatter().HandleList("Command", nodes, display, out));
  return out.str();
}

TEST(CliDispatcherHelpFormatterTest, DescribesItself) {
  const CliDispatcherHelpFormatter formatter;
  EXPECT_EQ("clihelp", formatter.GetName());
  EXPECT_EQ("Format the --help output for all commands.", formatter.GetDescription());
  EXPECT_THAT(formatter.GetParams(), IsEmpty());
}

TEST(CliDispatcherHelpFormatterTest, PrintsTheRootWithoutAPath) {
  EXPECT_EQ(
      "Usage: tool [disp options] <namespaces> <command>\n"
      "\n"
      "For help please run tool --help\n"
      "\n"
      "Available Namespaces: \n"
      "\n"
      "ip       Addresses\n"
      "storage  Disks and mounts\n"
      "\n"
      "Available Commands: \n"
      "\n"
      "up    Start\n"
      "\n",
      Format(MakeListing({}, {{"ip", "Addresses", "Namespace"},
                              {"storage", "Disks and mounts", "Namespace"},
                              {"up", "Start", "Command"}})));
}

TEST(CliDispatcherHelpFormatterTest, PrintsEachWordOfThePathAfterOneSpace) {
  EXPECT_EQ(
      "Usage: tool [disp options] network ip <namespaces> <command>\n"
      "\n"
      "For help please run tool --help\n"
      "\n"
      "Available Namespaces: \n"
      "\n"
      "\n"
      "Available Commands: \n"
      "\n"
      "list  All of them\n"
      "set   One of them\n"
      "\n",
      Format(MakeListing({"network", "ip"},
                         {{"list", "All of them", "Command"}, {"set", "One of them", "Command"}})));
}

TEST(CliDispatcherHelpFormatterTest, ListsAnUnknownTypeInNeitherTable) {
  EXPECT_EQ(Format(MakeListing({"ip"}, {})), Format(MakeListing({"ip"}, {{"a", "b", "Unknown"},
                                                                         {"c", "d", "command"},
                                                                         {"e", "f", "Namespaces"},
                                                                         {"g", "h", ""}})));
}

TEST(CliDispatcherHelpFormatterTest, MatchesTheGoldenFileAtEachWidth) {
  const auto listing = MakeListing(
      {"network"},
      {{"ip", "Commands about the addresses of this machine, of either family", "Namespace"},
       {"interface", "", "Namespace"},
       {"counter", "Show what went in and out", "Command"},
       {"reset", "Forget what went in and out of an interface, or of all of them", "Command"},
       {"odd", "Neither of the two", "Unknown"}});
  for (const std::uint16_t width : {0, 40, 80, 200}) {
    EXPECT_THAT(Format(listing, width), MatchesGolden("clihelp/listing-" + std::to_string(width)));
  }
}

TEST(CliDispatcherHelpFormatterTest, WrapsTheDescriptionToTheWidth) {
  const std::string text = Format(
      MakeListing({}, {{"ip", "Commands about the addresses of this machine", "Command"}}), 24);
  EXPECT_EQ(
      "ip    Commands about \n"
      "      the addresses of \n"
      "      this machine\n",
      text.substr(text.find("ip ")).substr(0, text.size() - text.find("ip ") - 1));
}

TEST(CliDispatcherHelpFormatterTest, IgnoresTheStateOfTheStream) {
  const auto output = CommandOutput::New();
  const auto listing = MakeListing({"ip"}, {{"list", "All of them", "Command"}});
  output->SetRootObject(listing);
  FormatParameters params;
  DisplayContext display;
  std::ostringstream out;
  out << std::setw(70) << std::setfill('*') << std::right;
  CliDispatcherHelpFormatter().Format(output, params, display, out);
  EXPECT_EQ(Format(listing), out.str());
}

TEST(CliDispatcherHelpFormatterTest, IgnoresTheFormatParameters) {
  const auto output = CommandOutput::New();
  const auto listing = MakeListing({"ip"}, {{"list", "All of them", "Command"}});
  output->SetRootObject(listing);
  FormatParameters params;
  params.SetFormatter("table");
  params.SetParameter("fields", "Type");
  params.SetParameter("show-header", "true");
  DisplayContext display;
  std::ostringstream out;
  CliDispatcherHelpFormatter().Format(output, params, display, out);
  EXPECT_EQ(Format(listing), out.str());
}

// Missing fields and fields of another kind.

void ExpectRefused(const std::shared_ptr<Output>& output) {
  FormatParameters params;
  DisplayContext display;
  std::ostringstream out;
  EXPECT_THAT(
      [&] { CliDispatcherHelpFormatter().Format(output, params, display, out); },
      ThrowsMessage<KestrelException>(
          "Error: Unexpected type for help output, formatter expected a struct with help data"));
  EXPECT_EQ("", out.str());
}

TEST(CliDispatcherHelpFormatterTest, RefusesAnOutputWithoutARootObject) {
  ExpectRefused(nullptr);
  ExpectRefused(CommandOutput::New());
}

TEST(CliDispatcherHelpFormatterTest, RefusesARootObjectThatIsNotAStructure) {
  const auto output = CommandOutput::New();
  output->SetRootObject(MetaString::New("VexilCommandPrint"));
  ExpectRefused(output);
}

TEST(CliDispatcherHelpFormatterTest, RefusesAStructureOfAnotherType) {
  const auto output = CommandOutput::New();
  output->SetRootObject(MetaStruct::New("VexilCommandPrints"));
  ExpectRefused(output);
}

TEST(CliDispatcherHelpFormatterTest, PrintsPlaceholdersAndErrorsForMissingFields) {
  EXPECT_EQ(
      "Usage: <Dispatcher> [disp options] <namespaces> <command>\n"
      "\n"
      "For help please run <Dispatcher> --help\n"
      "\n"
      "Available Namespaces: \n"
      "\n"
      "ERROR, list is bad\n"
      "Available Commands: \n"
      "\n"
      "ERROR, list is bad\n",
      Format(MetaStruct::New("VexilCommandPrint")));
}

TEST(CliDispatcherHelpFormatterTest, PrintsFieldsOfAnotherKindAsIfTheyWereMissing) {
  auto listing = MetaStruct::New("VexilCommandPrint");
  listing->SetField("Dispatcher", 7);
  listing->SetField("Path", "ip");
  listing->SetField("NamespaceNodes", "ip");
  EXPECT_EQ(Format(MetaStruct::New("VexilCommandPrint")), Format(listing));
}

TEST(CliDispatcherHelpFormatterTest, ANodeWithoutATypeIsNotListed) {
  auto shape = MetaStruct::New("NamespaceNode");
  shape->SetField("Name", "");
  shape->SetField("Description", "");
  const auto nodes = MetaList::New(MetaType::Struct, shape);
  auto node = MetaStruct::New("NamespaceNode");
  node->SetField("Name", "list");
  node->SetField("Description", "All of them");
  nodes->Add(node);
  EXPECT_EQ("Available Commands: \n\n\n", PrintList(nodes, true));
}

TEST(CliDispatcherHelpFormatterTest, HandleListKeepsTheOrderOfTheNodes) {
  EXPECT_EQ(
      "Available Commands: \n\n"
      "zz    Last\n"
      "aa    First\n"
      "\n",
      PrintList(MakeNodes({{"zz", "Last", "Command"},
                           {"mm", "Middle", "Namespace"},
                           {"aa", "First", "Command"}}),
                true));
}

TEST(CliDispatcherHelpFormatterTest, HandleListReportsAMissingList) {
  EXPECT_EQ("Available Commands: \n\nERROR, list is bad\n", PrintList(nullptr, false));
}

TEST(CliDispatcherHelpFormatterTest, HandleListReportsAListWithoutStructures) {
  const auto words = MetaList::New(MetaType::String);
  words->Add("list");
  const auto shapeless = MetaList::New(MetaType::Struct, nullptr);
  for (const auto& nodes : {words, shapeless}) {
    EXPECT_EQ(
        "Available Commands: \n\n"
        "Unable to get Descriptions for this command.  Implementation error.\n",
        PrintList(nodes, false));
  }
}

TEST(CliDispatcherHelpFormatterTest, ExtractStringReadsAStringField) {
  auto structure = MetaStruct::New("Record");
  structure->SetField("Name", "ip");
  std::string value = "old";
  EXPECT_TRUE(CliDispatcherHelpFormatter().ExtractString("Name", structure, value));
  EXPECT_EQ("ip", value);
}

TEST(CliDispatcherHelpFormatterTest, ExtractStringFallsBackToTheNameOfTheField) {
  auto structure = MetaStruct::New("Record");
  structure->SetField("Size", 7);
  for (const char* field : {"Name", "Size"}) {
    std::string value = "old";
    EXPECT_FALSE(CliDispatcherHelpFormatter().ExtractString(field, structure, value));
    EXPECT_EQ("<" + std::string(field) + ">", value);
  }
  std::string value = "old";
  EXPECT_FALSE(CliDispatcherHelpFormatter().ExtractString("Name", nullptr, value));
  EXPECT_EQ("<Name>", value);
}

}  // namespace

}  // namespace Kestrel::AutoCli
