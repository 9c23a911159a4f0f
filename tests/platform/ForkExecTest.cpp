// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "kestrel/platform/Zoluser.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace {

using Kestrel::Testing::ScopedEnvironment;
using Kestrel::Testing::ScopedTempDir;

struct Started {
  ZoluserStatus code;
  pid_t pid;
};

Started Start(const std::string& script, const std::vector<ZoluserForkFd>& map,
              const char* const* environment = nullptr) {
  const char* const argv[] = {"sh", "-c", script.c_str(), nullptr};
  Started started = {0, 0};
  started.code =
      ZoluserCompat_ForkExec("/bin/sh", argv, environment, map.data(), map.size(), &started.pid);
  return started;
}

int ExitStatusOf(const Started& started) {
  int status = 0;
  EXPECT_EQ(started.code, 0);
  EXPECT_EQ(waitpid(started.pid, &status, 0), started.pid);
  return WEXITSTATUS(status);
}

/// A file that is open for reading and writing, with close-on-exec.
class OpenFile {
 public:
  explicit OpenFile(const std::string& path)
      : path_(path), fd_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {}
  ~OpenFile() { close(fd_); }

  int GetFd() const { return fd_; }

 private:
  std::string path_;
  int fd_;
};

TEST(ForkExecTest, TheChildHasOnlyTheMappedFileDescriptors) {
  const ScopedTempDir folder;
  const OpenFile file(folder.GetPath("out"));
  const OpenFile other(folder.GetPath("other"));
  const int inherited = dup(other.GetFd());
  EXPECT_EQ(ExitStatusOf(Start("for fd in 0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16; do\n"
                               "  [ ! -e /proc/$$/fd/$fd ] || open=\"$open $fd\"\n"
                               "done; echo $open >&5",
                               {{5, file.GetFd()}, {0, other.GetFd()}})),
            0);
  EXPECT_LT(inherited, 17);
  close(inherited);
  EXPECT_EQ(folder.Read("out"), "0 5\n");
}

TEST(ForkExecTest, AMappingMayOverwriteTheSourceOfAnother) {
  const ScopedTempDir folder;
  const OpenFile one(folder.GetPath("one"));
  const OpenFile two(folder.GetPath("two"));
  EXPECT_EQ(ExitStatusOf(Start("echo 1 >&" + std::to_string(two.GetFd()) + "; echo 2 >&" +
                                   std::to_string(one.GetFd()),
                               {{two.GetFd(), one.GetFd()}, {one.GetFd(), two.GetFd()}})),
            0);
  EXPECT_EQ(folder.Read("one"), "1\n");
  EXPECT_EQ(folder.Read("two"), "2\n");
}

TEST(ForkExecTest, AFileDescriptorMayKeepItsNumber) {
  const ScopedTempDir folder;
  const OpenFile file(folder.GetPath("out"));
  EXPECT_EQ(ExitStatusOf(
                Start("echo x >&" + std::to_string(file.GetFd()), {{file.GetFd(), file.GetFd()}})),
            0);
  EXPECT_EQ(folder.Read("out"), "x\n");
}

TEST(ForkExecTest, OneSourceMayBeMappedTwice) {
  const ScopedTempDir folder;
  const OpenFile file(folder.GetPath("out"));
  EXPECT_EQ(ExitStatusOf(Start("echo a; echo b >&2", {{1, file.GetFd()}, {2, file.GetFd()}})), 0);
  EXPECT_EQ(folder.Read("out"), "a\nb\n");
}

TEST(ForkExecTest, WithoutAMapTheChildHasNoFileDescriptor) {
  EXPECT_EQ(ExitStatusOf(Start("[ ! -e /proc/$$/fd/0 ] && [ ! -e /proc/$$/fd/1 ] && "
                               "[ ! -e /proc/$$/fd/2 ]",
                               {})),
            0);
}

TEST(ForkExecTest, TheEnvironmentIsInheritedOrGiven) {
  const ScopedEnvironment variable("KESTREL_TEST_VARIABLE", "a");
  EXPECT_EQ(ExitStatusOf(Start("[ \"$KESTREL_TEST_VARIABLE\" = a ]", {})), 0);
  const char* const environment[] = {"KESTREL_TEST_OTHER=b", nullptr};
  EXPECT_EQ(
      ExitStatusOf(Start("[ \"$KESTREL_TEST_VARIABLE$KESTREL_TEST_OTHER\" = b ]", {}, environment)),
      0);
}

TEST(ForkExecTest, AProgramThatCannotBeExecutedCausesAnErrorStatus) {
  const char* const argv[] = {"x", nullptr};
  pid_t pid = 0;
  EXPECT_EQ(ZoluserCompat_ForkExec("/no/such/program", argv, nullptr, nullptr, 0, &pid), ENOENT);
  EXPECT_EQ(ZoluserCompat_ForkExec("/etc/passwd", argv, nullptr, nullptr, 0, &pid), EACCES);
}

TEST(ForkExecTest, AFileDescriptorThatIsNotOpenCausesAnErrorStatus) {
  EXPECT_EQ(Start("exit 0", {{1, 999}}).code, EBADF);
  EXPECT_EQ(Start("exit 0", {{-1, 0}}).code, EBADF);
}

TEST(ForkExecTest, AStatusHasTheTextOfTheSystem) {
  EXPECT_STREQ(ZoluserStatus_CodeToString(0), "Success");
  EXPECT_STREQ(ZoluserStatus_CodeToString(ENOENT), "No such file or directory");
  EXPECT_STREQ(ZoluserStatus_CodeToString(E2BIG), "Argument list too long");
  EXPECT_STREQ(ZoluserStatus_CodeToString(ENOEXEC), "Exec format error");
}

}  // namespace
