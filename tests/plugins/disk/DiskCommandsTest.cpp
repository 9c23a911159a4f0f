// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugins/support/CommandCall.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands below "disk".
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

TEST(DiskCommandsTest, ListsUsageAsDuDoes) {
  const ScopedTempDir folder;
  folder.Write("small/file", "x");
  folder.Write("large/deep/file", std::string(100000, 'x'));
  const std::string path = folder.GetPath();
  const auto size = [](const std::string& what) {
    return WordsIn(Witness("du -sk --one-file-system '" + what + "'"))[0];
  };
  const auto row = [&](const std::string& name) {
    const std::string whole = name.empty() ? path : path + "/" + name;
    return Row({{"Path", whole}, {"Size", size(whole)}});
  };
  EXPECT_THAT(CallRows("disk usage list", {{"directory", path}}),
              ElementsAre(row(""), row("large"), row("small")));
  EXPECT_THAT(CallRows("disk usage list", {{"directory", path}, {"depth", "+00"}}),
              ElementsAre(row("")));
  EXPECT_THAT(CallRows("disk usage list", {{"directory", path}, {"depth", "3"}, {"all", ""}}),
              UnorderedElementsAre(row(""), row("large"), row("large/deep"), row("large/deep/file"),
                                   row("small"), row("small/file")));
}

TEST(DiskCommandsTest, ListsOddNames) {
  const ScopedTempDir folder;
  const std::string path = folder.MakeDirectory("a $b`\"&<\n ;");
  for (const char* const name : {"-n", "tab\there", "line\nend", "&amp;<x>", "'", "\xC3\xA4"}) {
    folder.Write("a $b`\"&<\n ;/" + std::string(name), "x");
  }
  folder.Write("a $b`\"&<\n ;/\xFF\x01", "x");
  const std::string shown = folder.GetPath("a $b`\"&<\\x0a ;");
  EXPECT_THAT(CallColumn("disk usage list", "Path", {{"directory", path}, {"all", ""}}),
              UnorderedElementsAre(shown, shown + "/-n", shown + "/tab\\x09here",
                                   shown + "/line\\x0aend", shown + "/&amp;<x>", shown + "/'",
                                   shown + "/\xC3\xA4", shown + "/\\xff\\x01"));
}

TEST(DiskCommandsTest, RejectsAPathThatIsNotAFolder) {
  EXPECT_THAT(CallErrors("disk usage list", {{"directory", "/nosuch\nfolder"}}),
              ElementsAre("/nosuch folder is no directory"));
}

}  // namespace
}  // namespace Kestrel::Testing
