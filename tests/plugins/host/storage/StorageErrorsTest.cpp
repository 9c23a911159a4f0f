// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <chrono>
#include <functional>
#include <string>

#include "plugins/host/storage/BlockDevices.h"
#include "plugins/host/storage/DeviceContent.h"
#include "plugins/host/storage/DiskCounters.h"
#include "plugins/host/storage/FilesystemProbe.h"
#include "plugins/host/storage/MountTable.h"
#include "plugins/host/storage/TreeUsage.h"
#include "plugins/host/support/FileLimit.h"
#include "plugins/host/support/PlainUser.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"

// If the system refuses access, each function that reads a list must throw and not return a shorter
// list.
namespace Kestrel::Host {
namespace {

using ::testing::AllOf;
using Testing::FileLimit;
using ::testing::HasSubstr;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

struct Reader {
  const char* name;
  const char* file;  // what `read` reads: a file, or a folder if there is a slash at the end
  std::function<void(const std::string&)> read;
};

void PrintTo(const Reader& reader, std::ostream* out) { *out << reader.name; }

class StorageErrorsTest : public ::testing::TestWithParam<Reader> {
 protected:
  StorageErrorsTest() : path_(folder_.GetPath(GetParam().file)) {
    if (path_.back() == '/') {
      path_ = folder_.MakeDirectory(GetParam().file);
      path_.pop_back();
    } else {
      folder_.Write(GetParam().file, "1\n");
    }
    EXPECT_EQ(::chmod(folder_.GetPath().c_str(), 0755), 0);
  }

  auto Reading() const {
    return [this] { GetParam().read(folder_.GetPath()); };
  }
  auto Fails(const std::string& reason) const {
    return ThrowsMessage<KestrelException>(
        AllOf(StartsWith("Unable to read "), HasSubstr(path_ + ": " + reason)));
  }

  const ScopedTempDir folder_;
  std::string path_;
};

TEST_P(StorageErrorsTest, TooManyOpenFilesAreReported) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const FileLimit limit(0);
  EXPECT_THAT(Reading(), Fails("Too many open files"));
}

TEST_P(StorageErrorsTest, AMissingPermissionIsReported) {
  ASSERT_EQ(::chmod(path_.c_str(), 0), 0);
  const PlainUser user;
  EXPECT_THAT(Reading(), Fails("Permission denied"));
}

const Reader kReaders[] = {
    {"Mounts", "mountinfo", [](const std::string& folder) { ReadMounts(folder + "/mountinfo"); }},
    {"Counters", "diskstats",
     [](const std::string& folder) { ReadDiskCounters(folder + "/diskstats"); }},
    {"Devices", "block/", [](const std::string& folder) { ReadBlockDevices(folder, {}); }},
    {"Properties", "b8:1",
     [](const std::string& folder) { ReadDeviceContent("none", makedev(8, 1), folder, folder); }},
    {"Tree", "top/", [](const std::string& folder) { MeasureTree(folder + "/top", {}); }},
};
INSTANTIATE_TEST_SUITE_P(Readers, StorageErrorsTest, ::testing::ValuesIn(kReaders),
                         [](const auto& reader) { return reader.param.name; });

TEST(StorageErrorTest, AnAttributeThatIsAFolderIsAnError) {
  const ScopedTempDir folder;
  folder.Write("block/sda/dev", "8:0\n");
  folder.MakeDirectory("block/sda/size");  // a folder cannot be read as a file
  EXPECT_THAT([&] { ReadBlockDevices(folder.GetPath(), {}); },
              ThrowsMessage<KestrelException>("Unable to read " + folder.GetPath("block/sda/size") +
                                              ": Is a directory"));
}

TEST(StorageErrorTest, ADeviceWhoseSizeMayNotBeReadIsAnError) {
  const ScopedTempDir folder;
  ASSERT_EQ(::chmod(folder.GetPath().c_str(), 0755), 0);
  folder.Write("block/sda/dev", "8:0\n");
  const std::string size = folder.Write("block/sda/size", "8\n");
  ASSERT_EQ(::chmod(size.c_str(), 0), 0);
  const PlainUser user;
  EXPECT_THAT([&] { ReadBlockDevices(folder.GetPath(), {}); },
              ThrowsMessage<KestrelException>("Unable to read " + size + ": Permission denied"));
}

TEST(StorageErrorTest, TooManyOpenFilesToStartAChildAreAnError) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const FileLimit limit(0);
  EXPECT_THAT(
      [] {
        ProbeFilesystems({"/", "/proc"}, std::chrono::seconds(1));
      },
      ThrowsMessage<KestrelException>("Unable to query the file systems: Too many open files"));
}

}  // namespace
}  // namespace Kestrel::Host
