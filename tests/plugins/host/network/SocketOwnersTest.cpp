// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/SocketOwners.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/support/PlainUser.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::Pair;
using Testing::PlainUser;
using ::testing::ThrowsMessage;

auto Owner(long processId, const char* name) {
  return AllOf(Field(&SocketOwner::processId, processId), Field(&SocketOwner::name, name));
}

class SocketOwnersTest : public ::testing::Test {
 protected:
  SocketOwnersTest() { EXPECT_EQ(::chmod(proc_.GetPath().c_str(), 0755), 0); }

  void Open(const std::string& process, const char* number, const char* target) const {
    const std::string path = proc_.MakeDirectory(process + "/fd") + "/" + number;
    ASSERT_EQ(::symlink(target, path.c_str()), 0);
  }
  void Name(const std::string& process, const char* name) const {
    proc_.Write(process + "/comm", name);
  }
  SocketOwners Read() const { return ReadSocketOwners(proc_.GetPath()); }

  const Testing::ScopedTempDir proc_;
};

TEST_F(SocketOwnersTest, FindsTheProcessesOfASocket) {
  Name("20", "client\n");
  Open("20", "0", "/dev/null");
  Open("20", "3", "socket:[777]");
  Open("20", "4", "socket:[777]");
  Name("100", "a server (1)\n");
  Open("100", "3", "socket:[777]");
  Open("100", "5", "socket:[12]");
  Open("self", "3", "socket:[999]");
  EXPECT_THAT(Read().byInode,
              ElementsAre(Pair(12, ElementsAre(Owner(100, "a server (1)"))),
                          Pair(777, ElementsAre(Owner(20, "client"), Owner(100, "a server (1)")))));
}

TEST_F(SocketOwnersTest, IgnoresWhatIsNotASocket) {
  Name("9", "x\n");
  int number = 0;
  for (const char* const target : {"socket:[x]", "socket:[5", "socket:[]", "socket:5]",
                                   "socket:[5]]", "pipe:[5]", "]", "/5"}) {
    Open("9", std::to_string(number++).c_str(), target);
  }
  EXPECT_THAT(Read().byInode, IsEmpty());
}

TEST_F(SocketOwnersTest, AProcessWithoutANameIsUnknown) {
  Open("9", "0", "socket:[5]");
  EXPECT_THAT(Read().byInode, ElementsAre(Pair(5, ElementsAre(Owner(9, "unknown")))));
}

TEST_F(SocketOwnersTest, AProcessThatHasEndedIsSkipped) {
  proc_.MakeDirectory("8");  // without a folder of open files
  Name("9", "x\n");
  Open("9", "0", "socket:[5]");
  EXPECT_THAT(Read().byInode, ElementsAre(Pair(5, ElementsAre(Owner(9, "x")))));
}

// The kernel cannot return the path of a file in a very deeply nested folder.
TEST_F(SocketOwnersTest, AFileWithAVeryLongPathIsNotASocket) {
  const std::string refusal = Testing::RunInNamespaces(0, [] {
    const Testing::ScopedTempDir folder;
    ASSERT_EQ(::chdir(folder.GetPath().c_str()), 0);
    const std::string name(250, 'x');
    for (int depth = 0; depth < 20; ++depth) {
      ASSERT_EQ(::mkdir(name.c_str(), 0755), 0);
      ASSERT_EQ(::chdir(name.c_str()), 0);
    }
    const int file = ::open("file", O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(file, 0);
    ASSERT_EQ(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), file + 1);
    EXPECT_EQ(ReadLink("/proc/self/fd/" + std::to_string(file)), std::nullopt);
    struct stat status = {};
    ASSERT_EQ(::fstat(file + 1, &status), 0);
    const SocketOwners owners = ReadSocketOwners("/proc");
    ASSERT_EQ(owners.byInode.count(static_cast<long>(status.st_ino)), 1u);
    EXPECT_EQ(owners.byInode.at(static_cast<long>(status.st_ino)).front().processId, ::getpid());
  });
  EXPECT_EQ(refusal, "");
}

TEST_F(SocketOwnersTest, IsCompleteForRootOnly) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can look into all processes";
  }
  EXPECT_TRUE(Read().isComplete);
  const PlainUser user;
  EXPECT_FALSE(Read().isComplete);
}

TEST_F(SocketOwnersTest, AProcessOfAnotherUserMakesItIncomplete) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can look into all processes";
  }
  const std::string refusal = Testing::RunInNamespaces(0, [this] {
    Name("9", "x\n");
    Open("9", "0", "socket:[5]");
    ASSERT_EQ(::chmod(proc_.GetPath("9/fd").c_str(), 0), 0);
    const PlainUser user;
    const SocketOwners owners = Read();
    EXPECT_FALSE(owners.isComplete);
    EXPECT_THAT(owners.byInode, IsEmpty());
  });
  EXPECT_EQ(refusal, "");
}

TEST_F(SocketOwnersTest, AMissingFolderIsAnError) {
  EXPECT_THAT(
      [] { ReadSocketOwners("/nonexistent"); },
      ThrowsMessage<KestrelException>("Unable to read /nonexistent: No such file or directory"));
}

TEST_F(SocketOwnersTest, AFileInsteadOfAFolderIsAnError) {
  proc_.Write("9/fd", "");
  EXPECT_THAT([this] { Read(); },
              ThrowsMessage<KestrelException>("Unable to read " + proc_.GetPath("9/fd") +
                                              ": Not a directory"));
}

// Tries from zero to three free file descriptors. The result must be complete or an error.
TEST_F(SocketOwnersTest, TooManyOpenFilesAreAnErrorAndNotAShorterList) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  Name("9", "x\n");
  Open("9", "0", "socket:[5]");
  const std::string refusal = Testing::RunInNamespaces(0, [this] {
    const int lowestFree = ::dup(0);
    ::close(lowestFree);
    for (int free = 0; free < 4; ++free) {
      const rlimit limit = {static_cast<rlim_t>(lowestFree + free), 4096};
      ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
      try {
        EXPECT_THAT(Read().byInode, ElementsAre(Pair(5, ElementsAre(Owner(9, "x"))))) << free;
        EXPECT_GT(free, 0);
      } catch (const KestrelException& error) {
        EXPECT_THAT(error.what(), ::testing::HasSubstr("Too many open files")) << free;
        EXPECT_EQ(free, 0);
      }
    }
  });
  EXPECT_EQ(refusal, "");
}

}  // namespace
}  // namespace Kestrel::Host
