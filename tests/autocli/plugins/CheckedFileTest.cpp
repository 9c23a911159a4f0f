// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// These tests are skipped unless their files are trusted. This requires that the folder of
// temporary files and the folders above it belong to root or to the owner of this program, that
// those to which other users may write are sticky, and that root or the owner of this program runs
// the tests.

#include "autocli/plugins/CheckedFile.h"

#include <errno.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "kestrel/KestrelException.h"
#include "support/DescriptorLimit.h"
#include "support/ForbiddenCalls.h"
#include "support/MemoryFile.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::AutoCli {
namespace {

using Testing::DescriptorLimit;
using Testing::MemoryFile;
using Testing::ScopedTempDir;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

namespace fs = std::filesystem;

std::string Read(const CheckedFile& file) {
  std::ifstream in(PathOfDescriptor(file.descriptor.Get()));
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class CheckedFileTest : public ::testing::Test {
 protected:
  CheckedFileTest() : file_(folder_.Write("inner/file", "text")) {
    SetMode(file_, 0644);
    SetMode(Inner(), 0755);
  }

  void SetUp() override {
    try {
      ASSERT_TRUE(OpenCheckedFile(file_).descriptor.IsOpen());
    } catch (const KestrelException& error) {
      ASSERT_THAT(error.what(), StartsWith("/"));  // the path of what is not trusted
      GTEST_SKIP() << "The files of this test are not trusted: " << error.what();
    }
  }

  static void SetMode(const std::string& path, mode_t mode) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
  }

  std::string Inner() const { return folder_.GetPath("inner"); }

  static void ExpectRefused(const std::string& path, const std::string& reason) {
    EXPECT_THAT([&] { OpenCheckedFile(path); }, ThrowsMessage<KestrelException>(reason));
  }

  ScopedTempDir folder_;
  std::string file_;
};

TEST_F(CheckedFileTest, OpensAFileByEachPathToIt) {
  for (const std::string& path :
       {file_, "/" + file_, Inner() + "//./file", Inner() + "/../inner/file", "/../.." + file_}) {
    EXPECT_EQ(Read(OpenCheckedFile(path)), "text") << path;
  }
}

TEST_F(CheckedFileTest, OpensARelativePathInTheWorkingFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(folder_.GetPath());
  const std::string text = Read(OpenCheckedFile("inner/file"));
  fs::current_path(before);
  EXPECT_EQ(text, "text");
}

TEST_F(CheckedFileTest, ARelativePathLeadsToAFolderIfTheWorkingFolderIsDeleted) {
  const fs::path before = fs::current_path();
  fs::current_path(Inner());
  fs::remove_all(Inner());
  const CheckedFile file = OpenCheckedFile("etc/passwd");
  fs::current_path(before);
  EXPECT_TRUE(fs::is_directory(PathOfDescriptor(file.descriptor.Get())));
}

TEST_F(CheckedFileTest, FollowsLinks) {
  fs::create_symlink("inner", folder_.GetPath("relative"));
  fs::create_symlink(Inner(), folder_.GetPath("absolute"));
  fs::create_symlink("../absolute/./file", folder_.GetPath("inner/link"));
  for (const char* const name : {"relative/file", "absolute/file", "inner/link", "relative/link"}) {
    EXPECT_EQ(Read(OpenCheckedFile(folder_.GetPath(name))), "text") << name;
  }
}

TEST_F(CheckedFileTest, ReportsThePathWithoutLinksOfWhatIsNotTrusted) {
  fs::create_symlink("inner", folder_.GetPath("link"));
  SetMode(file_, 0664);
  fs::create_symlink(Inner(), folder_.GetPath("absolute"));
  ExpectRefused(folder_.GetPath("link/file"), file_ + " can be written by its group");
  ExpectRefused(folder_.GetPath("absolute/file"), file_ + " can be written by its group");
  SetMode(Inner(), 0757);
  ExpectRefused(folder_.GetPath("link/../link/file"), Inner() + " can be written by every user");
}

TEST_F(CheckedFileTest, AcceptsAStickyFolder) {
  SetMode(Inner(), 01777);
  EXPECT_EQ(Read(OpenCheckedFile(file_)), "text");
}

TEST_F(CheckedFileTest, RefusesAFileOfAnotherUser) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "Only root can give a file away.";
  }
  ASSERT_EQ(chown(file_.c_str(), 4711, 0), 0);
  ExpectRefused(file_,
                file_ + " belongs to user 4711, who is neither root nor the owner of this program");
}

/// Returns the reason why a file is refused in a child process that has called `prepare`. Returns
/// an empty string if the file is accepted.
std::string ReasonAfter(const std::function<void()>& prepare, const std::string& path) {
  const MemoryFile reason;
  const pid_t child = fork();
  if (child == 0) {
    try {
      prepare();
      OpenCheckedFile(path);
    } catch (const KestrelException& error) {
      reason.Write(error.what());
    }
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  return reason.Read();
}

TEST_F(CheckedFileTest, RefusesEveryFileWithoutProc) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "Only root can change the root folder.";
  }
  const auto leaveProc = [this] { ASSERT_EQ(chroot(Inner().c_str()), 0); };
  EXPECT_EQ(ReasonAfter(leaveProc, "/file"), "it can be loaded safely only where /proc is mounted");
  ASSERT_EQ(chown(file_.c_str(), 1, 0), 0);
  EXPECT_EQ(ReasonAfter(leaveProc, "/file"),
            "/file belongs to user 1, who is neither root nor the owner of this program");
}

TEST_F(CheckedFileTest, RefusesWhatItCannotExamine) {
  const auto forbidFstat = [] {
    const int lowest = dup(STDIN_FILENO);  // the file descriptor that the root folder will get
    close(lowest);
    Testing::Forbid(SYS_fstat, lowest, EIO);
    Testing::Forbid(SYS_newfstatat, lowest, EIO);  // what some C libraries call instead
  };
  EXPECT_EQ(ReasonAfter(forbidFstat, file_), "/: Input/output error");
}

TEST_F(CheckedFileTest, RefersToTheFileThatItHasCheckedEvenIfThatIsMoved) {
  const CheckedFile file = OpenCheckedFile(file_);
  fs::rename(file_, folder_.GetPath("moved"));
  folder_.Write("inner/file", "other text");
  EXPECT_EQ(Read(file), "text");
}

TEST_F(CheckedFileTest, ReportsWhyThereIsNoFile) {
  const auto error = [this](const std::string& name) {
    const CheckedFile file = OpenCheckedFile(folder_.GetPath(name));
    EXPECT_FALSE(file.descriptor.IsOpen());
    return file.error;
  };
  fs::create_symlink("nothing", folder_.GetPath("dangling"));
  fs::create_symlink("loop", folder_.GetPath("loop"));
  EXPECT_EQ(error("missing"), ENOENT);
  EXPECT_EQ(error("missing/file"), ENOENT);
  EXPECT_EQ(error("dangling"), ENOENT);
  EXPECT_EQ(error("inner/file/more"), ENOTDIR);
  EXPECT_EQ(error("loop"), ELOOP);
  EXPECT_EQ(error(std::string(300, 'x')), ENAMETOOLONG);
}

TEST_F(CheckedFileTest, FollowsFortyLinksAndNotMore) {
  fs::create_symlink("inner/file", folder_.GetPath("0"));
  for (int i = 1; i <= 40; ++i) {
    fs::create_symlink(std::to_string(i - 1), folder_.GetPath(std::to_string(i)));
  }
  EXPECT_EQ(Read(OpenCheckedFile(folder_.GetPath("39"))), "text");
  EXPECT_EQ(OpenCheckedFile(folder_.GetPath("40")).error, ELOOP);
}

TEST_F(CheckedFileTest, ReportsThatNoFileDescriptorIsLeft) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const std::string link = folder_.GetPath("link");
  fs::create_symlink(file_, link);
  const int lowest = dup(STDIN_FILENO);
  close(lowest);
  for (int count = 0; count < 3; ++count) {
    const DescriptorLimit limit(lowest + count);
    const CheckedFile file = OpenCheckedFile(link);
    EXPECT_FALSE(file.descriptor.IsOpen()) << count;
    EXPECT_EQ(file.error, EMFILE) << count;
  }
  EXPECT_TRUE(OpenCheckedFile(link).descriptor.IsOpen());
}

TEST_F(CheckedFileTest, LeavesNoFileDescriptorOpen) {
  const auto count = [] {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
  };
  fs::create_symlink("inner", folder_.GetPath("link"));
  const auto before = count();
  OpenCheckedFile(folder_.GetPath("link/file"));
  OpenCheckedFile(folder_.GetPath("link/missing"));
  SetMode(file_, 0666);
  EXPECT_THROW(OpenCheckedFile(folder_.GetPath("link/file")), KestrelException);
  EXPECT_EQ(count(), before);
}

}  // namespace
}  // namespace Kestrel::AutoCli
