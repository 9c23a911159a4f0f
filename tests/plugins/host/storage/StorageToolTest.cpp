// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <string>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/HostRun.h"
#include "plugins/host/support/Namespaces.h"
#include "support/Golden.h"
#include "support/Witness.h"

// The commands in the namespace "storage" as a user sees them.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(StorageToolTest, ASilentFileSystemDoesNotHoldUpTheTool) {
  const VexilResult result = HostRun({"--format-param", "fields=Status,Size,Mount Point", "storage",
                                      "filesystem", "list", "--timeout", "1"})
                                 .WithEnvironment("LD_PRELOAD", KESTREL_BLOCKED_STATVFS)
                                 .WithEnvironment("KESTREL_SILENT_PATHS", "/")
                                 // Turns off the check that the sanitizer's library is first.
                                 .WithEnvironment("ASAN_OPTIONS", "verify_asan_link_order=0")
                                 .Run();
  EXPECT_THAT(result.out, HasSubstr("\nno answer  0 B       /\n"));
  EXPECT_THAT(result.out, HasSubstr("\nok         "));
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

TEST(StorageToolTest, PrintsMountsAndFileSystems) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    ASSERT_EQ(::mount("outer", "/mnt", "tmpfs", 0, "size=64k"), 0);
    Witness("mkdir '/mnt/a b'");
    ASSERT_EQ(::mount("inner", "/mnt/a b", "tmpfs", MS_RDONLY, "size=2m"), 0);
    EXPECT_THAT(Print("storage mount list", {{"below", "/mnt"}}, 80),
                MatchesGolden("host/storage-mount-list"));
    const std::string filesystems = Print("storage filesystem list", {{"type", "tmpfs"}}, 80);
    EXPECT_THAT(filesystems, HasSubstr("  ok      /mnt\n"));
    EXPECT_THAT(filesystems, HasSubstr("  ok      /mnt/a b\n"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageToolTest, PrintsTheSpaceThatIsLeft) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    ASSERT_EQ(::mount("left", "/mnt", "tmpfs", 0, "size=2m"), 0);
    Witness("head -c 524288 /dev/zero > /mnt/file");
    const auto lastLine = [](const Parameters& parameters) {
      std::string text = Print("storage filesystem list", parameters, 200);
      text.pop_back();
      return WordsIn(text.substr(text.rfind('\n') + 1));
    };
    EXPECT_THAT(lastLine({{"type", "tmpfs"}}),
                ElementsAre("left", "1572864", "25", "%", "ok", "/mnt"));
    EXPECT_THAT(lastLine({{"type", "tmpfs"}, {"human", ""}}),
                ElementsAre("left", "1.5", "MiB", "25", "%", "ok", "/mnt"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

}  // namespace
}  // namespace Kestrel::Testing
