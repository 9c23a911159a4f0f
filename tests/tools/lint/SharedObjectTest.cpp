// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/SharedObject.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <vector>

#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/TestPlugins.h"
#include "tools/lint/FileReport.h"

namespace Kestrel::Lint {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::chrono::milliseconds kPatience(20000);

ObjectReport Examine(const std::string& name) {
  return ExamineSharedObject(Testing::TestPluginPath(name), {}, kPatience);
}

TEST(SharedObjectTest, ReturnsWhatItAddsToTheTree) {
  const ObjectReport report = Examine("EchoPlugin");
  ASSERT_THAT(report.tree.namespaces, SizeIs(1));
  EXPECT_EQ(report.tree.namespaces[0].path, "echo");
  EXPECT_FALSE(report.tree.commands.empty());
  EXPECT_THAT(report.formatters, ::testing::Contains("table"));
}

TEST(SharedObjectTest, ReportsAMissingEntryPoint) {
  const ObjectReport report = Examine("NoEntryPoint");
  ASSERT_THAT(report.faults, SizeIs(1));
  EXPECT_EQ(report.faults[0].rule, "object-entry-point");
  EXPECT_THAT(report.faults[0].what, HasSubstr("the loader refuses this: "));
}

TEST(SharedObjectTest, ReportsTheMessageOfAnExceptionOfTheLibrary) {
  const ObjectReport report = Examine("ThrowingPluginKestrelException");
  ASSERT_FALSE(report.faults.empty());
  EXPECT_EQ(report.faults[0].rule, "object-refused");
  EXPECT_THAT(report.faults[0].what, HasSubstr("the plug-in has no fuel"));
}

TEST(SharedObjectTest, ReportsAFileThatIsNoSharedObject) {
  const Testing::ScopedTempDir folder;
  const ObjectReport report = ExamineSharedObject(folder.Write("a.so", "text"), {}, kPatience);
  ASSERT_THAT(report.faults, SizeIs(1));
  EXPECT_EQ(report.faults[0].rule, "object-refused");
  EXPECT_THAT(report.tree.commands, IsEmpty());
}

TEST(SharedObjectTest, SurvivesWhatAPluginWritesIntoThePipe) {
  for (const char* const noise :
       {"nonsense", "7", "[]", "{}", R"({"enter":7})", R"({"fault":[]})", R"({"fault":["a","b"]})",
        R"({"fault":{}})", R"({"end":{}})", R"({"end":{"tree":"{}"}})", R"({"end":[]})"}) {
    const Testing::ScopedEnvironment environment("KESTREL_TEST_NOISE", noise);
    const ObjectReport report = Examine("ConstructorPluginScribble");
    ASSERT_THAT(report.faults, SizeIs(1)) << noise;
    EXPECT_EQ(report.faults[0].rule, "object-crash");
    EXPECT_THAT(report.faults[0].what, HasSubstr("file descriptors that are not its own"));
  }
}

TEST(SharedObjectTest, LoadsThePrecedingPluginsFirst) {
  const std::string file = Testing::TestPluginPath("DuplicatePlugin");
  const ObjectReport alone = ExamineSharedObject(file, {}, kPatience);
  const ObjectReport again = ExamineSharedObject(file, {file}, kPatience);
  EXPECT_THAT(again.tree.commands, IsEmpty());
  EXPECT_GE(again.faults.size(), alone.faults.size());
}

}  // namespace
}  // namespace Kestrel::Lint
