// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/PackageDatabase.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>
#include <unistd.h>

#include <limits>
#include <thread>

#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

std::string Entry(const std::string& name, const std::string& status = "install ok installed",
                  const std::string& more = std::string(),
                  const std::string& architecture = "amd64") {
  return "Package: " + name + "\nStatus: " + status + "\nArchitecture: " + architecture +
         "\nVersion: 1.0-1\n" + more + "\n";
}

class PackageDatabaseTest : public ::testing::Test {
 protected:
  void Status(const std::string& text) { folder_.Write("status", text); }

  // Returns "name:architecture version state" for each package.
  std::vector<std::string> Read() const {
    std::vector<std::string> lines;
    const PackageDatabase database(folder_.GetPath());
    for (const Package& package : database.GetPackages()) {
      lines.push_back(std::string(package.name) + ":" + std::string(package.architecture) + " " +
                      std::string(package.version) + " " + std::string(package.state));
    }
    return lines;
  }

  void ExpectError(const std::string& reason) const {
    EXPECT_THAT([this] { PackageDatabase database(folder_.GetPath()); },
                ThrowsMessage<KestrelException>("Unable to read " + folder_.GetPath() + reason));
  }

  std::string RequireError(const std::string& name) const {
    const PackageDatabase database(folder_.GetPath());
    try {
      database.Require(name);
    } catch (const KestrelException& error) {
      return error.what();
    }
    return "no error";
  }

  const ScopedTempDir folder_;
};

TEST_F(PackageDatabaseTest, ReadsWhatIsRecorded) {
  Status(
      "Package: sample\nStatus: hold reinstreq half-configured\nInstalled-Size: 12\n"
      "Architecture: all\nVersion: 1:2.3-4\nProvides: virtual (= 1), other\n"
      "Description: a sample\n with more lines\n\n");
  const PackageDatabase database(folder_.GetPath());
  ASSERT_EQ(database.GetPackages().size(), 1U);
  const Package& package = database.GetPackages().front();
  EXPECT_EQ(package.name, "sample");
  EXPECT_EQ(package.architecture, "all");
  EXPECT_EQ(package.version, "1:2.3-4");
  EXPECT_EQ(package.wanted, "hold");
  EXPECT_EQ(package.state, "half-configured");
  EXPECT_TRUE(package.isReinstallRequired);
  EXPECT_TRUE(package.IsHeld());
  EXPECT_FALSE(package.IsInstalled());
  EXPECT_TRUE(package.IsUnpacked());
  EXPECT_EQ(package.sizeBytes, 12 * 1024);
  EXPECT_EQ(package.summary, "a sample");
  EXPECT_EQ(package.provides, "virtual (= 1), other");
  EXPECT_THAT(std::string(package.stanza), HasSubstr("with more lines"));
}

TEST_F(PackageDatabaseTest, SortsByNameAndArchitecture) {
  Status(Entry("b") + Entry("a", "install ok installed", "", "i386") + Entry("a") + Entry("B"));
  EXPECT_THAT(Read(), ElementsAre("B:amd64 1.0-1 installed", "a:amd64 1.0-1 installed",
                                  "a:i386 1.0-1 installed", "b:amd64 1.0-1 installed"));
}

TEST_F(PackageDatabaseTest, OmitsWhatIsNotInstalled) {
  Status(Entry("a", "purge ok not-installed") + Entry("b", "deinstall ok config-files"));
  EXPECT_THAT(Read(), ElementsAre("b:amd64 1.0-1 config-files"));
}

TEST_F(PackageDatabaseTest, NeedsNoVersionForARemovedPackage) {
  Status("Package: a\nStatus: deinstall ok config-files\n\n");
  EXPECT_THAT(Read(), ElementsAre("a:  config-files"));
}

TEST_F(PackageDatabaseTest, ClampsAnAbsurdSize) {
  Status(Entry("a", "install ok installed", "Installed-Size: 9223372036854775807\n") +
         Entry("b", "install ok installed", "Installed-Size: many\n"));
  const PackageDatabase database(folder_.GetPath());
  EXPECT_EQ(database.GetPackages()[0].sizeBytes, std::numeric_limits<long>::max());
  EXPECT_EQ(database.GetPackages()[1].sizeBytes, 0);
}

// ---- the updates that dpkg has not yet merged

TEST_F(PackageDatabaseTest, MergesUpdatesInTheirOrder) {
  Status(Entry("a") + Entry("b") + Entry("c"));
  folder_.Write("updates/0001", Entry("a", "install ok unpacked"));
  folder_.Write("updates/0002", Entry("a", "install ok half-configured") +
                                    Entry("b", "purge ok not-installed") + Entry("d"));
  EXPECT_THAT(Read(), ElementsAre("a:amd64 1.0-1 half-configured", "c:amd64 1.0-1 installed",
                                  "d:amd64 1.0-1 installed"));
}

// dpkg writes no empty line after the only entry of an update.
TEST_F(PackageDatabaseTest, ReadsAnUpdateThatEndsWithALineFeed) {
  Status(Entry("a"));
  folder_.Write("updates/0000",
                "Package: b\nStatus: install reinstreq half-installed\n"
                "Architecture: amd64\nVersion: 2\n");
  EXPECT_THAT(Read(), ElementsAre("a:amd64 1.0-1 installed", "b:amd64 2 half-installed"));
}

TEST_F(PackageDatabaseTest, IgnoresAnUpdateThatDpkgRemovesBeforeItIsRead) {
  Status(Entry("a"));
  folder_.MakeDirectory("updates");
  ASSERT_EQ(::symlink("removed", folder_.GetPath("updates/0000").c_str()), 0);
  folder_.Write("updates/0001", Entry("b"));
  EXPECT_THAT(Read(), ElementsAre("a:amd64 1.0-1 installed", "b:amd64 1.0-1 installed"));
}

TEST_F(PackageDatabaseTest, ReadsAgainIfDpkgReplacesTheStatusWhileUpdatesAreRead) {
  Status(Entry("a"));
  folder_.MakeDirectory("updates");
  const std::string update = folder_.GetPath("updates/0000");
  ASSERT_EQ(::mkfifo(update.c_str(), 0600), 0);
  std::thread dpkg([&] {
    const int file = ::open(update.c_str(), O_WRONLY | O_CLOEXEC);  // waits for the reader
    folder_.Write("status-new", Entry("a", "install ok unpacked") + Entry("b"));
    EXPECT_EQ(::rename(folder_.GetPath("status-new").c_str(), folder_.GetPath("status").c_str()),
              0);
    EXPECT_EQ(::unlink(update.c_str()), 0);
    ::close(file);
  });
  EXPECT_THAT(Read(), ElementsAre("a:amd64 1.0-1 unpacked", "b:amd64 1.0-1 installed"));
  dpkg.join();
}

TEST_F(PackageDatabaseTest, UpdatesTheSameArchitectureOnly) {
  Status(Entry("a") + Entry("a", "install ok installed", "", "i386"));
  folder_.Write("updates/0001", Entry("a", "install ok unpacked", "", "i386"));
  EXPECT_THAT(Read(), ElementsAre("a:amd64 1.0-1 installed", "a:i386 1.0-1 unpacked"));
}

TEST_F(PackageDatabaseTest, IgnoresUnfinishedUpdates) {
  Status(Entry("a"));
  folder_.Write("updates/tmp.i", "Pack");
  EXPECT_THAT(Read(), ElementsAre("a:amd64 1.0-1 installed"));
}

TEST_F(PackageDatabaseTest, RefusesATruncatedUpdate) {
  Status(Entry("a"));
  folder_.Write("updates/0001", "Package: a\nSta");
  ExpectError("/updates/0001: it ends in the middle of an entry");
}

// ---- files that are not a database

TEST_F(PackageDatabaseTest, ReportsThatThereIsNoDatabase) {
  EXPECT_THAT(
      [this] { PackageDatabase database(folder_.GetPath()); },
      ThrowsMessage<KestrelException>("This machine has no packages of dpkg: there is no file " +
                                      folder_.GetPath() + "/status"));
  EXPECT_THAT([] { PackageDatabase database("/dev/null"); },
              ThrowsMessage<KestrelException>("This machine has no packages of dpkg: there is no "
                                              "file /dev/null/status"));
}

TEST_F(PackageDatabaseTest, RefusesAnUnreadableFile) {
  Status(Entry("a"));
  ::chmod(folder_.GetPath("status").c_str(), 0);
  ::chmod(folder_.GetPath().c_str(), 0755);
  const PlainUser user;
  ExpectError("/status: Permission denied");
}

TEST_F(PackageDatabaseTest, RefusesUnreadableUpdates) {
  Status(Entry("a"));
  ::chmod(folder_.MakeDirectory("updates").c_str(), 0);
  ::chmod(folder_.GetPath().c_str(), 0755);
  {
    const PlainUser user;
    ExpectError("/updates: Permission denied");
  }
  ::chmod(folder_.GetPath("updates").c_str(), 0755);
}

TEST_F(PackageDatabaseTest, RefusesAFolderInsteadOfTheFile) {
  folder_.MakeDirectory("status");
  ExpectError("/status: Is a directory");
}

TEST_F(PackageDatabaseTest, RefusesAnEmptyFile) {
  Status("");
  ExpectError("/status: it contains no package");
}

TEST_F(PackageDatabaseTest, RefusesATruncatedFileWhereverItEnds) {
  const std::string whole = Entry("a", "install ok installed", "Description: x\n y\n");
  for (std::size_t length = 1; length < whole.size(); ++length) {
    Status(whole.substr(0, length));
    ExpectError("/status: it ends in the middle of an entry");
  }
}

TEST_F(PackageDatabaseTest, RefusesWhatIsNotADatabase) {
  Status(std::string(4096, '\0'));
  ExpectError("/status: it ends in the middle of an entry");
  Status("hello\n\n");
  ExpectError("/status: a line is no field: hello");
}

TEST_F(PackageDatabaseTest, RefusesAnEntryWithoutARequiredField) {
  Status(Entry("a") + "Version: 1\n\n");
  ExpectError("/status: the entry of package '' has no field Package");
  Status("Package: a\nVersion: 1\n\n");
  ExpectError("/status: the entry of package 'a' has no field Status");
  Status("Package: a\nStatus: install ok installed\nArchitecture: all\n\n");
  ExpectError("/status: the entry of package 'a' has no field Version");
  Status("Package: a\nStatus: install ok installed\nVersion: 1\n\n");
  ExpectError("/status: the entry of package 'a' has no field Architecture");
}

TEST_F(PackageDatabaseTest, RefusesAnUnknownState) {
  Status(Entry("a", "install ok dancing"));
  ExpectError("/status: the entry of package 'a' has an unknown status: install ok dancing");
  Status(Entry("a", "installed"));
  ExpectError("/status: the entry of package 'a' has an unknown status: installed");
}

// ---- one package

TEST_F(PackageDatabaseTest, FindsByName) {
  Status(Entry("a") + Entry("ab"));
  const PackageDatabase database(folder_.GetPath());
  EXPECT_EQ(database.Require("a").name, "a");
  EXPECT_EQ(database.Require("ab:amd64").name, "ab");
}

TEST_F(PackageDatabaseTest, PrefersTheNativeArchitecture) {
  Status(Entry("dpkg") + Entry("a", "install ok installed", "", "aarch") + Entry("a") +
         Entry("b", "install ok installed", "", "i386"));
  const PackageDatabase database(folder_.GetPath());
  EXPECT_EQ(database.GetNativeArchitecture(), "amd64");
  EXPECT_EQ(database.Require("a").architecture, "amd64");
  EXPECT_EQ(database.Require("a:aarch").architecture, "aarch");
  EXPECT_EQ(database.Require("b").architecture, "i386");
}

TEST_F(PackageDatabaseTest, PrefersWhatIsUnpacked) {
  Status(Entry("dpkg") + Entry("a", "deinstall ok config-files") +
         Entry("a", "install ok installed", "", "i386"));
  EXPECT_EQ(PackageDatabase(folder_.GetPath()).Require("a").architecture, "i386");
}

TEST_F(PackageDatabaseTest, KnowsNoNativeArchitectureWithoutDpkg) {
  Status(Entry("a"));
  EXPECT_EQ(PackageDatabase(folder_.GetPath()).GetNativeArchitecture(), "");
}

TEST_F(PackageDatabaseTest, NamesAnUnknownPackage) {
  Status(Entry("a") + Entry("gone", "purge ok not-installed"));
  for (const std::string name : {"b", "a:i386", "gone", "", ":", "A", "a*"}) {
    EXPECT_EQ(RequireError(name), "There is no package named '" + name + "' on this machine");
  }
}

TEST_F(PackageDatabaseTest, NamesTheProvidersOfAVirtualPackage) {
  Status(Entry("exim", "install ok installed", "Provides: mail-agent\n") +
         Entry("postfix", "install ok unpacked", "Provides: default, mail-agent (= 3.7),\n x\n") +
         Entry("qmail", "deinstall ok config-files", "Provides: mail-agent\n") +
         Entry("other", "install ok installed", "Provides: mail-agent-tools\n"));
  EXPECT_EQ(RequireError("mail-agent"),
            "'mail-agent' is a virtual package, which these packages provide: exim, postfix");
  EXPECT_EQ(RequireError("x"), "'x' is a virtual package, which these packages provide: postfix");
  EXPECT_EQ(RequireError("mail"), "There is no package named 'mail' on this machine");
}

TEST_F(PackageDatabaseTest, NamesAProviderOnce) {
  Status(Entry("a", "install ok installed", "Provides: v\n") +
         Entry("a", "install ok installed", "Provides: v\n", "i386"));
  EXPECT_THAT(PackageDatabase(folder_.GetPath()).FindProviders("v"), ElementsAre("a"));
  EXPECT_THAT(PackageDatabase(folder_.GetPath()).FindProviders("w"), IsEmpty());
}

TEST_F(PackageDatabaseTest, PrefersAPackageToAnotherThatProvidesItsName) {
  Status(Entry("a") + Entry("b", "install ok installed", "Provides: a\n"));
  EXPECT_EQ(PackageDatabase(folder_.GetPath()).Require("a").name, "a");
}

}  // namespace
}  // namespace Kestrel::Host
