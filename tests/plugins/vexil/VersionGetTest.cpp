// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "kestrel/Version.h"
#include "plugins/vexil/ToolRun.h"
#include "support/VexilRun.h"
#include "support/Witness.h"

namespace Kestrel::Testing {
namespace {

using nlohmann::json;
using testing::ContainsRegex;
using testing::EndsWith;

TEST(VersionGetTest, ReportsTheVersionTheFilesAndTheSystem) {
  const json version = RunForJson({}, {"vexil", "version", "get"});
  EXPECT_EQ(KESTREL_VERSION_STRING, version.at("Version"));
  EXPECT_EQ(std::filesystem::canonical(KESTREL_TOOL).string(), version.at("Tool"));
  EXPECT_EQ(std::filesystem::canonical(KESTREL_LIBRARY).string(), version.at("Library"));
  EXPECT_THAT(version.at("Library").get<std::string>(), EndsWith(".so." KESTREL_VERSION_STRING));
  EXPECT_EQ(KESTREL_PLUGIN_DIR, version.at("Plugin Folder"));
  EXPECT_THAT(version.at("Compiler").get<std::string>(), ContainsRegex("^(gcc|clang) [0-9]"));
  EXPECT_EQ(WitnessLines("uname -srm").at(0), version.at("System"));
}

TEST(VersionGetTest, CountsWhatIsLoaded) {
  const std::vector<std::string> plugins = {GetModulePath("EchoPlugin"), KESTREL_HOST_PLUGIN};
  const json version = RunForJson(plugins, {"vexil", "version", "get"});
  EXPECT_EQ(RunForJson(plugins, {"vexil", "plugin", "list"}).size(), version.at("Plugins"));
  EXPECT_EQ(RunForJson(plugins, {"vexil", "command", "list"}).size(), version.at("Commands"));
}

TEST(VersionGetTest, PrintsTheVersionAndTheToolFirst) {
  const VexilResult result = RunWith({}, {"vexil", "version", "get"}).Run();
  EXPECT_THAT(result.out, testing::StartsWith("VexilVersion:\n"
                                              "   Version      : " KESTREL_VERSION_STRING "\n"
                                              "   Tool         : /"));
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

}  // namespace
}  // namespace Kestrel::Testing
