// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>

#include <string>

#include "e2e/Plugins.h"
#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::HasSubstr;

std::string RegistrationError(const std::string& path, const std::string& reason) {
  return "Error while trying to register the plugin " + path + " " + reason +
         " The functionality in " + path + " will not be available until this issue is resolved.\n";
}

TEST(PluginTest, APluginNamedOnTheCommandLineAddsItsCommands) {
  const VexilResult result =
      VexilRun({"--plugin", TestPluginPath("EchoPlugin"), "echo", "say", "-t", "hello"}).Run();
  EXPECT_EQ("hello\n", result.out);
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(PluginTest, PluginsInAFolderAndInItsLib64FolderAreLoaded) {
  const ScopedTempDir folder;
  folder.MakeDirectory("lib64");
  const auto copy = [&folder](const char* plugin, const char* name) {
    CopyTestPlugin(plugin, folder.GetPath(name));
  };
  copy("EchoPlugin", "lib64/echo.so");
  copy("TryPlugin", "try.so");
  folder.Write("notes.txt", "not a plug-in");
  for (const char* word : {"echo", "try"}) {
    const VexilResult result =
        VexilRun({"--plugin-dir", folder.GetPath(), word, "say", "-t", "hello"}).Run();
    EXPECT_EQ("hello\n", result.out);
    EXPECT_EQ("", result.err);
    EXPECT_EQ(0, result.status);
  }
}

TEST(PluginTest, AMissingFileIsReportedAndTheCommandRuns) {
  const VexilResult result = VexilRun({"--plugin=/nosuch/plugin.so", "--plugin",
                                       TestPluginPath("EchoPlugin"), "echo", "say", "-t", "hello"})
                                 .Run();
  EXPECT_EQ("hello\n", result.out);
  EXPECT_EQ(
      "Unable to load plugin /nosuch/plugin.so: Unable to load plugin from /nosuch/plugin.so : "
      "/nosuch/plugin.so: cannot open shared object file: No such file or directory\n",
      result.err);
  EXPECT_EQ(0, result.status);
}

TEST(PluginTest, AMissingFolderIsReportedAndTheCommandRuns) {
  const VexilResult result =
      VexilRun({"--plugin-dir", "/nosuch", "vexil", "command", "list"}).Run();
  EXPECT_THAT(result.out, HasSubstr("List all of the vexil commands."));
  EXPECT_EQ("Unable to open directory /nosuch for plugin registration\n", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(PluginTest, AFileThatIsNotAPluginIsSkipped) {
  const ScopedTempDir folder;
  const std::string notes = folder.Write("notes.txt", "not a plug-in");
  const VexilResult result = VexilRun({"--plugin", notes, "vexil", "command", "list"}).Run();
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
}

TEST(PluginTest, APluginWithoutAnEntryPointIsReported) {
  const std::string path = TestPluginPath("NoEntryPoint");
  const VexilResult result = VexilRun({"--plugin", path, "vexil", "command", "list"}).Run();
  EXPECT_THAT(result.out, HasSubstr("List all of the vexil commands."));
  EXPECT_EQ("Unable to load plugin " + path + ": Unable to get plugin registration point from " +
                path + " : " + path + ": undefined symbol: AutoCli_RegisterNamespaces\n",
            result.err);
  EXPECT_EQ(0, result.status);
}

TEST(PluginTest, APluginThatRegistersATakenNameIsReportedAndItsEarlierCommandsWork) {
  const std::string path = TestPluginPath("DuplicatePlugin");
  const VexilResult result = VexilRun({"--plugin", path, "duplicate", "early"}).Run();
  EXPECT_EQ("before the duplicate\n", result.out);
  EXPECT_EQ("Unable to load plugin " + path + ": " +
                RegistrationError(path,
                                  "Duplicate registration in namespace  attempt to register two "
                                  "objects with name vexil"),
            result.err);
  EXPECT_EQ(0, result.status);
}

TEST(PluginTest, APluginThatThrowsIsReportedAndItsEarlierCommandsWork) {
  const std::string path = TestPluginPath("ThrowingPluginKestrelException");
  const VexilResult result = VexilRun({"--plugin", path, "throwing", "early"}).Run();
  EXPECT_EQ("before the throw\n", result.out);
  EXPECT_EQ(
      "Unable to load plugin " + path + ": " + RegistrationError(path, "the plug-in has no fuel"),
      result.err);
  EXPECT_EQ(0, result.status);
}

TEST(PluginTest, AThrowingPluginInAFolderIsReportedAndTheNextOneLoads) {
  const ScopedTempDir folder;
  const std::string broken = folder.GetPath("a.so");
  CopyTestPlugin("ThrowingPluginKestrelException", broken);
  CopyTestPlugin("EchoPlugin", folder.GetPath("b.so"));
  const VexilResult result =
      VexilRun({"--plugin-dir", folder.GetPath(), "echo", "say", "-t", "hello"}).Run();
  EXPECT_EQ("hello\n", result.out);
  EXPECT_EQ("Error loading plugin " + broken +
                " skipping.  Error was: " + RegistrationError(broken, "the plug-in has no fuel"),
            result.err);
  EXPECT_EQ(0, result.status);
}

TEST(PluginTest, AStandardExceptionOfAPluginEndsTheToolWithItsText) {
  const VexilResult result =
      VexilRun({"--plugin", TestPluginPath("ThrowingPluginStandardException"), "vexil", "command",
                "list"})
          .Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("the plug-in has no oil\n", result.err);
  EXPECT_EQ(1, result.status);
}

TEST(PluginTest, ThrowingSomethingOtherThanAnExceptionEndsTheToolWithAMessage) {
  const VexilResult result =
      VexilRun({"--plugin", TestPluginPath("ThrowingPluginOwnObject"), "vexil", "command", "list"})
          .Run();
  EXPECT_EQ("", result.out);
  EXPECT_EQ("A plug-in threw an exception that is not a std::exception\n", result.err);
  EXPECT_EQ(1, result.status);
}

}  // namespace

}  // namespace Kestrel::Testing
