// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/FilesystemProbe.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Clock = std::chrono::steady_clock;

constexpr seconds kLong(60);
constexpr milliseconds kShort(300);

std::uint64_t SizeOf(const std::string& path) {
  struct statvfs usage = {};
  EXPECT_EQ(::statvfs(path.c_str(), &usage), 0);
  return static_cast<std::uint64_t>(usage.f_blocks) * usage.f_frsize;
}

TEST(FilesystemProbeTest, AnswersForEveryPathInOrder) {
  const Testing::ScopedTempDir folder;
  const std::vector<std::string> paths = {"/proc", folder.GetPath(), "/nonexistent", "/"};
  const auto answers = ProbeFilesystems(paths, kLong);
  ASSERT_EQ(answers.size(), 4u);
  EXPECT_EQ(answers[0].error, 0);
  EXPECT_EQ(answers[0].usage.size, 0u);
  EXPECT_EQ(answers[1].error, 0);
  EXPECT_EQ(answers[1].usage.size, SizeOf(folder.GetPath()));
  EXPECT_EQ(answers[2].error, ENOENT);
  EXPECT_EQ(answers[3].usage.size, SizeOf("/"));
}

TEST(FilesystemProbeTest, WithoutPathsThereAreNoAnswers) {
  EXPECT_THAT(ProbeFilesystems({}, kLong), IsEmpty());
}

TEST(FilesystemProbeTest, ASilentFileSystemDoesNotHoldUpTheOthers) {
  const Testing::ScopedEnvironment silent("KESTREL_SILENT_PATHS", "/proc:/sys");
  const Clock::time_point start = Clock::now();
  const auto answers = ProbeFilesystems({"/", "/proc", "/dev", "/sys", "/tmp"}, kShort);
  EXPECT_LT(Clock::now() - start, kLong);
  ASSERT_EQ(answers.size(), 5u);
  EXPECT_EQ(answers[0].usage.size, SizeOf("/"));
  EXPECT_EQ(answers[1].error, ETIMEDOUT);
  EXPECT_EQ(answers[2].usage.size, SizeOf("/dev"));
  EXPECT_EQ(answers[3].error, ETIMEDOUT);
  EXPECT_EQ(answers[4].usage.size, SizeOf("/tmp"));
}

TEST(FilesystemProbeTest, EveryFileSystemMayBeSilent) {
  const Testing::ScopedEnvironment silent("KESTREL_SILENT_PATHS", "/:/proc:/sys");
  const auto answers = ProbeFilesystems({"/", "/proc", "/sys"}, kShort);
  ASSERT_EQ(answers.size(), 3u);
  for (const FilesystemAnswer& answer : answers) {
    EXPECT_EQ(answer.error, ETIMEDOUT);
  }
}

TEST(FilesystemProbeTest, AChildThatDiesAffectsOnlyItsOwnAnswer) {
  const Testing::ScopedEnvironment deadly("KESTREL_DEADLY_PATHS", "/proc:/tmp");
  const auto answers = ProbeFilesystems({"/", "/proc", "/dev", "/tmp"}, kLong);
  ASSERT_EQ(answers.size(), 4u);
  EXPECT_EQ(answers[0].usage.size, SizeOf("/"));
  EXPECT_EQ(answers[1].error, EIO);
  EXPECT_EQ(answers[2].usage.size, SizeOf("/dev"));
  EXPECT_EQ(answers[3].error, EIO);
}

TEST(FilesystemProbeTest, WorksWithStandardInputAndOutputClosed) {
  EXPECT_EXIT(
      {
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO}) {
          ::close(standard);
        }
        const auto answers = ProbeFilesystems({"/", "/proc"}, kLong);
        ::_exit(answers[0].error == 0 && answers[0].usage.size > 0 && answers[1].error == 0 ? 7
                                                                                            : 1);
      },
      ::testing::ExitedWithCode(7), "");
}

// Waits until the process has a child with four open files, and returns the folder in /proc that
// lists them. Returns an empty string if this takes too long.
std::string WaitForChildDescriptors(pid_t process) {
  const std::string id = std::to_string(process);
  for (int attempt = 0; attempt < 1000; ++attempt) {
    const auto children = ReadFile("/proc/" + id + "/task/" + id + "/children").value_or("");
    if (!children.empty()) {
      const std::string folder = "/proc/" + std::string(Trim(children)) + "/fd";
      if (ListFolder(folder).size() == 4) {
        return folder;
      }
    }
    ::usleep(10000);
  }
  return std::string();
}

// A child that is blocked in the kernel may remain after it is killed. A process that reads the
// tool's output to its end must not have to wait for that child.
TEST(FilesystemProbeTest, ASilentChildKeepsNoInheritedFileOpenExceptItsReportPipe) {
  const Testing::ScopedEnvironment silent("KESTREL_SILENT_PATHS", "/proc");
  const pid_t process = ::fork();
  if (process == 0) {
    ProbeFilesystems({"/proc"}, kLong);
    ::_exit(0);
  }
  const std::string folder = WaitForChildDescriptors(process);
  ASSERT_NE(folder, "");
  EXPECT_EQ(ReadLink(folder + "/0"), "/dev/null");
  EXPECT_EQ(ReadLink(folder + "/1"), "/dev/null");
  EXPECT_EQ(ReadLink(folder + "/2"), "/dev/null");
  EXPECT_THAT(ReadLink(folder + "/3").value_or(""), StartsWith("pipe:"));
  ::kill(process, SIGKILL);
  ::waitpid(process, nullptr, 0);
}

}  // namespace
}  // namespace Kestrel::Host
