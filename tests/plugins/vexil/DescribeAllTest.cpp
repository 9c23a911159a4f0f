// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The descriptions of all commands of this project, in the formats json, xml, simple and python.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "plugins/vexil/ToolRun.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {
namespace {

using nlohmann::json;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

/// Returns the paths of the host plug-in and of the descriptors in the build tree. The names of the
/// descriptors come from the source tree, because an earlier build may have left others in the
/// build tree.
std::vector<std::string> ShippedPlugins() {
  std::vector<std::string> plugins = {KESTREL_HOST_PLUGIN};
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(KESTREL_DESCRIPTOR_SOURCE_DIR)) {
    const std::filesystem::path name = entry.path().filename();
    if (name.extension() == ".in" && name.stem().extension() == ".xml") {
      plugins.push_back(KESTREL_DESCRIPTOR_DIR "/" + name.stem().string());
    }
  }
  return plugins;
}

/// Returns the paths of all commands. Full stops separate the words of a path.
std::vector<std::string> ShippedCommands() {
  std::vector<std::string> paths;
  for (const json& row : RunForJson(ShippedPlugins(), {"vexil", "command", "list"})) {
    paths.push_back(row.at("Namespace").get<std::string>() + "." +
                    row.at("Command").get<std::string>());
  }
  return paths;
}

/// Returns the output of a single run of the tool that describes each of the commands. The options
/// apply to each description.
std::string DescribeAll(const std::vector<std::string>& paths, const std::string& options) {
  std::string lines;
  for (const std::string& path : paths) {
    lines += options + " vexil command describe --path " + path + "\n";
  }
  const VexilResult result = RunWith(ShippedPlugins(), {"--input", "STDIN"}).WithInput(lines).Run();
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
  return result.out;
}

std::vector<json> ReadJsonDocuments(const std::string& text) {
  std::vector<json> documents;
  std::istringstream in(text);
  while (in >> std::ws && !in.eof()) {
    in >> documents.emplace_back();
  }
  return documents;
}

std::vector<std::string> SplitBefore(const std::string& text, const std::string& start) {
  std::vector<std::string> pieces;
  for (std::size_t begin = text.find(start); begin != std::string::npos;) {
    const std::size_t end = text.find(start, begin + start.size());
    pieces.push_back(text.substr(begin, end - begin));
    begin = end;
  }
  return pieces;
}

/// Restores the bytes of a string that the json formatter has printed. The formatter writes each
/// byte of a character as a separate character.
std::string ToBytes(const std::string& text) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto first = static_cast<unsigned char>(text[at]);
    if (first < 0x80) {
      bytes += text[at];
    } else {
      const auto second = static_cast<unsigned char>(text.at(++at));
      bytes += static_cast<char>(((first & 0x3) << 6) | (second & 0x3f));
    }
  }
  return bytes;
}

std::string NameOf(const xmlNode* node) { return reinterpret_cast<const char*>(node->name); }

std::string ContentOf(xmlNode* node) {
  const std::unique_ptr<xmlChar, void (*)(void*)> content(xmlNodeGetContent(node), xmlFree);
  return reinterpret_cast<const char*>(content.get());
}

std::string FieldNameOf(xmlNode* node) {
  const std::unique_ptr<xmlChar, void (*)(void*)> name(
      xmlGetProp(node, reinterpret_cast<const xmlChar*>("name")), xmlFree);
  return reinterpret_cast<const char*>(name.get());
}

/// Converts the value in an element of the xml formatter's output to JSON.
json ToJson(xmlNode* node) {
  const std::string name = NameOf(node);
  if (name == "string") {
    return ContentOf(node);
  }
  if (name == "integer") {
    return std::stol(ContentOf(node));
  }
  if (name == "boolean") {
    return ContentOf(node) == "true";
  }
  json value = name == "list" ? json::array() : json::object();
  for (xmlNode* child = xmlFirstElementChild(node); child != nullptr;
       child = xmlNextElementSibling(child)) {
    if (name == "list") {
      value.push_back(ToJson(child));
    } else {
      value[FieldNameOf(child)] = ToJson(xmlFirstElementChild(child));
    }
  }
  return value;
}

/// Returns the root value of a document that the xml formatter has printed.
json ReadXmlDocument(const std::string& text) {
  const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, 0), xmlFreeDoc);
  if (document == nullptr) {
    return "not well-formed";
  }
  for (xmlNode* child = xmlFirstElementChild(xmlDocGetRootElement(document.get()));
       child != nullptr; child = xmlNextElementSibling(child)) {
    if (NameOf(child) == "root") {
      return ToJson(xmlFirstElementChild(child));
    }
  }
  return "without a root value";
}

/// Returns the document with the original bytes of its strings. Fails the test if a string is
/// empty.
json CheckedStrings(const json& document, const std::string& path) {
  if (document.is_string()) {
    EXPECT_NE("", document.get<std::string>()) << path;
    return ToBytes(document.get<std::string>());
  }
  json checked = document;
  if (!checked.is_structured()) {
    return checked;
  }
  for (auto& [key, value] : checked.items()) {
    value = CheckedStrings(value, path + "/" + key);
  }
  return checked;
}

class DescribeAllTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { paths_ = new std::vector<std::string>(ShippedCommands()); }
  static void TearDownTestSuite() { delete paths_; }

  static std::vector<std::string>* paths_;
};

std::vector<std::string>* DescribeAllTest::paths_ = nullptr;

TEST_F(DescribeAllTest, XmlAndJsonHaveTheSameContent) {
  ASSERT_GT(paths_->size(), 20u);
  const std::vector<json> documents = ReadJsonDocuments(DescribeAll(*paths_, "--formatter json"));
  const std::vector<std::string> texts =
      SplitBefore(DescribeAll(*paths_, "--formatter xml"), "<?xml");
  ASSERT_EQ(paths_->size(), documents.size());
  ASSERT_EQ(paths_->size(), texts.size());
  for (std::size_t index = 0; index < texts.size(); ++index) {
    const json checked = CheckedStrings(documents[index], paths_->at(index));
    EXPECT_TRUE(checked == ReadXmlDocument(texts[index])) << texts[index];
  }
}

TEST_F(DescribeAllTest, HasAPathAPluginADescriptionAndAResultKind) {
  const std::vector<json> documents = ReadJsonDocuments(DescribeAll(*paths_, "--formatter json"));
  ASSERT_EQ(paths_->size(), documents.size());
  for (std::size_t index = 0; index < documents.size(); ++index) {
    std::string path = paths_->at(index);
    std::replace(path.begin(), path.end(), '.', ' ');
    EXPECT_EQ(path, documents[index].at("Path"));
    EXPECT_NE("unknown", documents[index].at("Plugin")) << path;
    EXPECT_NE("none", documents[index].at("Description")) << path;
    EXPECT_NE("none", documents[index].at("Result Kind")) << path;
  }
}

TEST_F(DescribeAllTest, EveryCommandOfAPluginFileHasExamplesAndDocumentsItsResult) {
  std::size_t fields = 0;
  for (const json& document : ReadJsonDocuments(DescribeAll(*paths_, "--formatter json"))) {
    if (document.at("Plugin") == "built-in") {
      continue;
    }
    EXPECT_FALSE(document.at("Examples").empty()) << document.at("Path");
    EXPECT_NE("none", document.at("Result Description")) << document.at("Path");
    for (const json& field : document.at("Fields")) {
      EXPECT_NE("none", field.at("Documentation")) << document.at("Path") << field.at("Path");
      ++fields;
    }
  }
  EXPECT_GT(fields, 200u);
}

TEST_F(DescribeAllTest, HasTheParametersOfItsHelpPage) {
  std::string lines;
  for (std::string path : *paths_) {
    std::replace(path.begin(), path.end(), '.', ' ');
    lines += "--formatter json " + path + " --help\n";
  }
  const std::vector<json> pages =
      ReadJsonDocuments(RunWith(ShippedPlugins(), {"--input", "STDIN"}).WithInput(lines).Run().out);
  const std::vector<json> documents = ReadJsonDocuments(DescribeAll(*paths_, "--formatter json"));
  ASSERT_EQ(pages.size(), documents.size());
  for (std::size_t index = 0; index < pages.size(); ++index) {
    std::set<std::string> onPage;
    std::set<std::string> described = {"help"};
    for (const json& parameter : pages[index].at("Param List")) {
      onPage.insert(parameter.at("Name").get<std::string>());
    }
    for (const json& parameter : documents[index].at("Parameters")) {
      described.insert(parameter.at("Name").get<std::string>());
    }
    EXPECT_THAT(described, ElementsAreArray(onPage)) << paths_->at(index);
  }
}

TEST_F(DescribeAllTest, PrintsForPeopleAndInPython) {
  const std::string simple = DescribeAll(*paths_, "");
  EXPECT_THAT(simple, Not(HasSubstr("Error getting field")));
  for (std::string path : *paths_) {
    std::replace(path.begin(), path.end(), '.', ' ');
    EXPECT_THAT("\n" + simple, HasSubstr("\n" + path + ":\n   Description: "));
  }
  const std::string python = DescribeAll(*paths_, "--formatter python");
  EXPECT_EQ(paths_->size(),
            static_cast<std::size_t>(std::count(python.begin(), python.end(), '\n')));
}

}  // namespace
}  // namespace Kestrel::Testing
