// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Makes memory run out at each allocation while the tool starts.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/TestPlugins.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;

struct Start {
  const char* name;
  std::vector<std::string> arguments;
  bool fromThenOn;
};

class MemoryTest : public ::testing::TestWithParam<Start> {};

/// What a run printed on both streams, and its wait status.
struct Ended {
  std::string shown;
  int status = 0;
};

Ended RunToEnd(const VexilRun& run) {
  const ScopedTempDir folder;
  const std::string path = folder.GetPath("shown");
  const pid_t child = fork();
  if (child == 0) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(file, STDOUT_FILENO);
    dup2(file, STDERR_FILENO);
    run.Exec();
  }
  Ended ended;
  waitpid(child, &ended.status, 0);
  ended.shown = folder.Read("shown");
  return ended;
}

// The loop reaches beyond the last of the allocations that the tool makes while it starts.
TEST_P(MemoryTest, AFailureEndsTheToolWithAMessage) {
  if (kIsSanitized) {
    GTEST_SKIP() << "The sanitizer has an allocator of its own";
  }
  VexilRun run(GetParam().arguments);
  const Ended whole = RunToEnd(run);
  run.WithEnvironment("LD_PRELOAD", TestPluginPath("FailingAllocation"));
  if (GetParam().fromThenOn) {
    run.WithEnvironment("FAIL_FROM_THEN_ON", "1");
  }
  int toldCount = 0;
  for (int number = 1; number <= 150; ++number) {
    const Ended ended = RunToEnd(run.WithEnvironment("FAIL_AT", std::to_string(number)));
    if (ended.shown == whole.shown && ended.status == whole.status) {
      continue;
    }
    ++toldCount;
    EXPECT_TRUE(WIFEXITED(ended.status)) << number;
    EXPECT_EQ(WEXITSTATUS(ended.status), 1) << number;
    EXPECT_THAT(ended.shown,
                AnyOf(HasSubstr("Out of memory"), HasSubstr("Unable to open directory")))
        << number;
  }
  EXPECT_GT(toldCount, 3);
}

const Start kStarts[] = {
    {"VersionOnce", {"--version"}, false},
    {"VersionFromThenOn", {"--version"}, true},
    {"UnknownWordOnce", {"x"}, false},
    {"UnknownWordFromThenOn", {"x"}, true},
};

INSTANTIATE_TEST_SUITE_P(Starts, MemoryTest, ::testing::ValuesIn(kStarts),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace

}  // namespace Kestrel::Testing
