// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "plugins/vexil/ToolRun.h"
#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kDescriptor =
    "<p><version>1.0.0</version><namespaces><namespace path=\"sample\"><description>d"
    "</description></namespace></namespaces><commands><command path=\"sample.get\"><description>d"
    "</description><input-spec/><output-spec><string/></output-spec><format-parameters/><execute>"
    "true</execute></command><command path=\"sample.list\"><description>d</description>"
    "<input-spec/><output-spec><string/></output-spec><format-parameters/><execute>true</execute>"
    "</command></commands></p>";

json Row(const std::string& file, const std::string& kind, int commands, const std::string& path) {
  return {{"File", file}, {"Kind", kind}, {"Commands", commands}, {"Path", path}};
}

std::string LibraryPath(const json& rows) { return rows.at(0).at("Path"); }

TEST(PluginListTest, ListsEachPluginInTheOrderOfLoading) {
  const ScopedTempDir folder;
  const std::string sample = folder.Write("sample.xml", kDescriptor);
  const json rows = RunForJson({sample, GetModulePath("EchoPlugin")}, {"vexil", "plugin", "list"});
  EXPECT_EQ(json({Row("built-in", "built-in", 1, LibraryPath(rows)),
                  Row("built-in", "built-in", 0, KESTREL_TOOL),  // formatters
                  Row("vexil.so", "library", 3, KESTREL_VEXIL_PLUGIN),
                  Row("sample.xml", "descriptor", 2, sample),
                  Row("EchoPlugin.so", "library", 1, GetModulePath("EchoPlugin"))}),
            rows);
  EXPECT_TRUE(std::filesystem::equivalent(KESTREL_LIBRARY, LibraryPath(rows)));
}

TEST(PluginListTest, DistinguishesPluginsWithTheSameFileName) {
  const ScopedTempDir folder;
  const std::string first = folder.Write("a/sample.xml", kDescriptor);
  const std::string second =
      folder.Write("b/sample.xml",
                   "<p><version>1.0.0</version><namespaces><namespace path=\"other\"><description>d"
                   "</description></namespace></namespaces></p>");
  const json rows = RunForJson({first, second}, {"vexil", "plugin", "list"});
  EXPECT_EQ(Row("sample.xml", "descriptor", 2, first), rows.at(3));
  EXPECT_EQ(Row("sample.xml", "descriptor", 0, second), rows.at(4));
}

TEST(PluginListTest, MakesPathsAbsolute) {
  const ScopedTempDir folder;
  folder.Write("sample.xml", kDescriptor);
  const VexilResult result =
      RunWith({"./sample.xml"}, {"--formatter", "json", "vexil", "plugin", "list"})
          .InDirectory(folder.GetPath())
          .Run();
  const json rows = json::parse(result.out);
  EXPECT_EQ(std::filesystem::canonical(folder.GetPath("sample.xml")).string(),
            rows.at(3).at("Path"));
}

TEST(PluginListTest, ListsAFailedPluginWithTheCommandThatItRegistered) {
  const std::string failed = GetModulePath("ThrowingPluginKestrelException");
  const VexilResult result = RunWith({failed, GetModulePath("EchoPlugin")},
                                     {"--formatter", "json", "vexil", "plugin", "list"})
                                 .Run();
  EXPECT_THAT(result.err, HasSubstr("the plug-in has no fuel"));
  const json rows = json::parse(result.out);
  ASSERT_EQ(5u, rows.size());
  EXPECT_EQ(Row("ThrowingPluginKestrelException.so", "library", 1, failed), rows.at(4));
}

TEST(PluginListTest, PrintsATableThatWrapsItsLastColumn) {
  const VexilResult wide = RunWith({}, {"vexil", "plugin", "list"}).Run();
  EXPECT_THAT(wide.out, StartsWith("File      Kind      Commands  Path\n"
                                   "--------  --------  --------  ----\n"
                                   "built-in  built-in         1  /"));
  EXPECT_THAT(wide.out, HasSubstr("\nvexil.so  library          3  " KESTREL_VEXIL_PLUGIN "\n"));
  const VexilResult narrow = RunWith({}, {"--screen-width", "40", "vexil", "plugin", "list"}).Run();
  EXPECT_THAT(narrow.out, HasSubstr("\nvexil.so  library          3   \n" + std::string(30, ' ') +
                                    KESTREL_VEXIL_PLUGIN "\n"));
  EXPECT_EQ("", wide.err + narrow.err);
}

TEST(PluginListTest, SortsAndLimitsLikeEveryList) {
  const json rows =
      RunForJson({GetModulePath("EchoPlugin")},
                 {"vexil", "plugin", "list", "--sort", "Commands", "--descending", "--limit", "2"});
  EXPECT_EQ(json({Row("vexil.so", "library", 3, KESTREL_VEXIL_PLUGIN),
                  Row("built-in", "built-in", 1, LibraryPath(json({rows.at(1)})))}),
            rows);
}

TEST(PluginListTest, AFieldThatDoesNotExistIsAnErrorThatListsTheFields) {
  const VexilResult result = RunWith({}, {"vexil", "plugin", "list", "--sort", "Size"}).Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ(
      "Errors: \nThere is no field 'Size' to sort by. Sort by one of: Commands, File, Kind, "
      "Path.\n",
      result.err);
  EXPECT_EQ(1, result.status);
}

TEST(PluginListTest, EscapesAControlCharacterInAName) {
  const ScopedTempDir folder;
  const std::string odd = folder.Write("a\nb\x1b.xml", kDescriptor);
  const VexilResult result =
      RunWith({odd}, {"--format-param", "fields=File", "vexil", "plugin", "list"}).Run();
  EXPECT_THAT(result.out, EndsWith("\na\\x0ab\\x1b.xml\n"));
}

}  // namespace
}  // namespace Kestrel::Testing
