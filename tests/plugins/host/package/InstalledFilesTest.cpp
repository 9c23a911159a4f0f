// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/InstalledFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>

#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

class InstalledFilesTest : public ::testing::Test {
 protected:
  // Returns the paths; " -> " precedes the actual path of a diverted file.
  std::vector<std::string> Read(const char* architecture = "amd64") const {
    Package package;
    package.name = "sample";
    package.architecture = architecture;
    std::vector<std::string> lines;
    for (const InstalledFile& file : ReadInstalledFiles(package, folder_.GetPath())) {
      lines.push_back(file.path + (file.divertedTo.empty() ? "" : " -> " + file.divertedTo));
    }
    return lines;
  }

  void ExpectError(const std::string& reason) const {
    EXPECT_THAT([this] { Read(); },
                ThrowsMessage<KestrelException>("Unable to read " + folder_.GetPath() + reason));
  }

  const ScopedTempDir folder_;
};

TEST_F(InstalledFilesTest, ListsInTheRecordedOrder) {
  folder_.Write("info/sample.list", "/.\n/usr\n/etc/a b\n");
  EXPECT_THAT(Read(), ElementsAre("/.", "/usr", "/etc/a b"));
}

TEST_F(InstalledFilesTest, ListsNothingForAnEmptyPackage) {
  folder_.Write("info/sample.list", "");
  EXPECT_THAT(Read(), IsEmpty());
}

TEST_F(InstalledFilesTest, ReadsTheListOfTheArchitecture) {
  folder_.Write("info/sample:amd64.list", "/a\n");
  folder_.Write("info/sample:i386.list", "/i\n");
  EXPECT_THAT(Read("amd64"), ElementsAre("/a"));
  EXPECT_THAT(Read("i386"), ElementsAre("/i"));
}

TEST_F(InstalledFilesTest, SaysWhereADivertedFileIs) {
  folder_.Write("info/sample.list", "/bin/a\n/bin/b\n/bin/c\n");
  folder_.Write("diversions",
                "/bin/a\n/bin/a.real\nother\n"
                "/bin/b\n/bin/b.real\nsample\n"
                "/bin/c\n/bin/c.local\n:\n");
  EXPECT_THAT(Read(), ElementsAre("/bin/a -> /bin/a.real", "/bin/b", "/bin/c -> /bin/c.local"));
}

TEST_F(InstalledFilesTest, RefusesAMissingList) {
  ExpectError("/info/sample.list: No such file or directory");
}

TEST_F(InstalledFilesTest, RefusesATruncatedList) {
  folder_.Write("info/sample.list", "/.\n/usr");
  ExpectError("/info/sample.list: it ends in the middle of a line");
}

TEST_F(InstalledFilesTest, RefusesWhatIsNotAPath) {
  folder_.Write("info/sample.list", "/.\n\n/usr\n");
  ExpectError("/info/sample.list: a line is no path: ");
  folder_.Write("info/sample.list", "usr\n");
  ExpectError("/info/sample.list: a line is no path: usr");
}

TEST_F(InstalledFilesTest, RefusesTruncatedDiversions) {
  folder_.Write("info/sample.list", "/.\n");
  folder_.Write("diversions", "/bin/a\n/bin/b\n");
  ExpectError("/diversions: it ends in the middle of a diversion");
  folder_.Write("diversions", "/bin/a\n/bin/b\noth");
  ExpectError("/diversions: it ends in the middle of a line");
}

TEST_F(InstalledFilesTest, RefusesUnreadableDiversions) {
  folder_.Write("info/sample.list", "/.\n");
  ::chmod(folder_.Write("diversions", "").c_str(), 0);
  ::chmod(folder_.GetPath().c_str(), 0755);
  const PlainUser user;
  ExpectError("/diversions: Permission denied");
}

}  // namespace
}  // namespace Kestrel::Host
