// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/package/InstalledFiles.h"
#include "plugins/host/package/PackageDatabase.h"
#include "plugins/host/package/PackageMarks.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// Databases of packages that are unusual, damaged or unreadable, compared with the output of
// dpkg-query for the same files.
namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Testing::ScopedTempDir;
using ::testing::SizeIs;
using ::testing::ThrowsMessage;
using Testing::WitnessLines;

// Returns an entry with all fields that dpkg requires.
std::string Entry(const std::string& name, const std::string& status = "install ok installed",
                  const std::string& more = "", const std::string& version = "1.0-1",
                  const std::string& architecture = "amd64") {
  return "Package: " + name + "\nStatus: " + status + "\nMaintainer: A <a@example.org>\n" +
         "Architecture: " + architecture + "\nVersion: " + version + "\n" + more +
         "Description: made up\n\n";
}

class StatusFileTest : public ::testing::Test {
 protected:
  StatusFileTest() {
    folder_.MakeDirectory("info");
    folder_.MakeDirectory("updates");
    folder_.Write("info/format", "1\n");
  }

  void Status(const std::string& text) const { folder_.Write("status", text); }

  static std::string LineOf(const Package& package) {
    std::string line(package.name);
    for (const std::string_view field :
         {package.architecture, package.version, package.wanted, package.state, package.summary}) {
      line.append("|").append(field);
    }
    return line + (package.isReinstallRequired ? "|reinstreq" : "|ok");
  }

  std::vector<std::string> Read() const {
    std::vector<std::string> lines;
    const PackageDatabase database(folder_.GetPath());
    for (const Package& package : database.GetPackages()) {
      lines.push_back(LineOf(package));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
  }

  // Returns the same list from dpkg-query. It is sorted, because dpkg-query sorts architectures
  // differently.
  std::vector<std::string> Ask() const {
    return WitnessLines(
        "dpkg-query --admindir='" + folder_.GetPath() +
        "' -W -f '${Package}|${Architecture}|${Version}|${db:Status-Want}|${db:Status-Status}|"
        "${binary:Summary}|${db:Status-Eflag}\\n' 2>/dev/null | grep -v '|not-installed|' | "
        "sed 's/(no description available)//' | "
        "LC_ALL=C sort");
  }

  bool IsRefusedByDpkg() const {
    return WitnessLines("dpkg-query --admindir='" + folder_.GetPath() +
                        "' -W >/dev/null 2>&1 && echo read || echo refused")
               .front() == "refused";
  }

  void ExpectError(const std::string& reason) const {
    EXPECT_THAT([this] { PackageDatabase database(folder_.GetPath()); },
                ThrowsMessage<KestrelException>("Unable to read " + folder_.GetPath() + reason));
  }

  const ScopedTempDir folder_;
};

struct FileCase {
  const char* name;
  std::string text;
  std::size_t packages;
};

const FileCase kFiles[] = {
    {"One", Entry("a"), 1},
    {"EveryState",
     Entry("a", "deinstall ok config-files") + Entry("b", "install ok half-installed") +
         Entry("c", "install ok unpacked") + Entry("d", "install ok half-configured") +
         Entry("e", "install ok triggers-awaited", "Triggers-Awaited: f\n") +
         Entry("f", "install ok triggers-pending", "Triggers-Pending: x\n") + Entry("g") +
         Entry("h", "purge ok not-installed"),
     7},
    {"EveryWish",
     Entry("a") + Entry("b", "hold ok installed") + Entry("c", "deinstall ok installed") +
         Entry("d", "purge ok installed") + Entry("e", "unknown ok installed"),
     5},
    {"BrokenOnes",
     Entry("a", "install reinstreq half-installed") + Entry("b", "install reinstreq unpacked"), 2},
    {"NotYetUnpacked", Entry("dpkg") + "Package: new\nStatus: install reinstreq half-installed\n\n",
     2},
    {"NotYetUnpackedWithoutAVersion",
     "Package: new\nStatus: install reinstreq half-installed\nArchitecture: amd64\n\n" +
         Entry("dpkg"),
     2},
    {"SeveralArchitectures",
     Entry("a", "install ok installed", "Multi-Arch: same\n") +
         Entry("a", "install ok installed", "Multi-Arch: same\n", "1.0-1", "i386") +
         Entry("b", "install ok installed", "", "1.0-1", "all"),
     3},
    {"FieldsInAnyCase",
     "PACKAGE: a\nstatus: install ok installed\nmaintainer: m\nARCHITECTURE: amd64\n"
     "vErSiOn: 2\ndescription: made up\n\n",
     1},
    {"FieldsInAnyOrder",
     "Description: made up\nVersion: 2\nStatus: install ok installed\nMaintainer: m\n"
     "Architecture: amd64\nPackage: a\n\n",
     1},
    {"SpacesAroundValues",
     "Package:a\nStatus:   install ok installed  \nMaintainer: m\nArchitecture:\tamd64\n"
     "Version: \t2 \nDescription: made up\n\n",
     1},
    {"ManyEmptyLines", "\n\n\n" + Entry("a") + "\n\n" + Entry("b") + "\n", 2},
    {"ContinuedLines",
     Entry("a", "install ok installed",
           "Depends: b,\n c (>= 1),\n\td\nConffiles:\n /etc/a 0123456789abcdef0123456789abcdef\n"),
     1},
    {"LinesThatLookLikeEntries",
     Entry("a", "install ok installed", "X-Notes: n\n Package: x\n Status: y\n .\n"), 1},
    {"UnknownFields", Entry("a", "install ok installed", "X-Own: 1\nAnother-Field: x: y\n"), 1},
    {"VersionsOfEveryForm",
     Entry("a", "install ok installed", "", "1:2.3-4") +
         Entry("b", "install ok installed", "", "0~1") +
         Entry("c", "install ok installed", "", "1.0+really0.9-1.1+b2") +
         Entry("d", "install ok installed", "", "20261122"),
     4},
    {"NamesOfEveryForm",
     Entry("g++") + Entry("libstdc++6") + Entry("0ad") + Entry("a.b-c") + Entry("x11-apps"), 5},
    {"VirtualPackages",
     Entry("a", "install ok installed", "Provides: v, w (= 1:2)\n") +
         Entry("b", "install ok installed", "Provides: v\n"),
     2},
};

class ReadableStatusTest : public StatusFileTest, public ::testing::WithParamInterface<FileCase> {};

TEST_P(ReadableStatusTest, IsReadAsByDpkg) {
  Status(GetParam().text);
  EXPECT_THAT(Read(), SizeIs(GetParam().packages));
  EXPECT_EQ(Read(), Ask());
}

// Whatever an update that is not yet merged contains, it replaces the entries of the same packages
// in the status file.
TEST_P(ReadableStatusTest, IsReadAsByDpkgWithAnUpdate) {
  Status(Entry("zz") + Entry("a", "install ok unpacked"));
  folder_.Write("updates/0000", GetParam().text);
  EXPECT_EQ(Read(), Ask());
}

INSTANTIATE_TEST_SUITE_P(Files, ReadableStatusTest, ::testing::ValuesIn(kFiles),
                         [](const auto& test) { return test.param.name; });

struct RefusedCase {
  const char* name;
  std::string text;
  const char* reason;
};

const RefusedCase kRefused[] = {
    {"AnUnknownWish", Entry("a", "demand ok installed"),
     "the entry of package 'a' has an unknown status: demand ok installed"},
    {"AnUnknownFlag", Entry("a", "install well installed"),
     "the entry of package 'a' has an unknown status: install well installed"},
    {"AnUnknownState", Entry("a", "install ok here"),
     "the entry of package 'a' has an unknown status: install ok here"},
    {"TwoWords", Entry("a", "install ok"),
     "the entry of package 'a' has an unknown status: install ok"},
    {"FourWords", Entry("a", "install ok installed now"),
     "the entry of package 'a' has an unknown status: install ok installed now"},
    {"NoVersion",
     "Package: a\nStatus: install ok installed\nMaintainer: m\nArchitecture: all\n"
     "Description: d\n\n",
     "the entry of package 'a' has no field Version"},
    {"NoVersionOfAnUnpackedPackage",
     "Package: a\nStatus: install ok unpacked\nMaintainer: m\nArchitecture: all\n"
     "Description: d\n\n",
     "the entry of package 'a' has no field Version"},
    {"NoName", "Status: install ok installed\nVersion: 1\n\n",
     "the entry of package '' has no field Package"},
    {"AnEmptyName", "Package:\nStatus: install ok installed\nVersion: 1\n\n",
     "the entry of package '' has no field Package"},
    {"ALineWithoutAColon", Entry("a", "install ok installed", "Oops\n"),
     "a line is no field: Oops"},
    {"AContinuationOfNoLine", " Package: a\n\n", "a line is no field:  Package: a"},
    {"NulBytes", Entry("a") + std::string(64, '\0') + "\n\n",
     "a line is no field: \\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00"},
    {"ALineWithoutAName", ": value\n\n", "a line is no field: : value"},
    {"TheStateAlone", Entry("a", "installed"),
     "the entry of package 'a' has an unknown status: installed"},
    {"AStateThatBeginsWithAnother", Entry("a", "install ok installed-not"),
     "the entry of package 'a' has an unknown status: install ok installed-not"},
    {"AnEscapeOfATerminal", "\x1b[2J\n\n", "a line is no field: \\x1b[2J"},
};

class RefusedStatusTest : public StatusFileTest,
                          public ::testing::WithParamInterface<RefusedCase> {};

TEST_P(RefusedStatusTest, IsRefusedAsByDpkg) {
  Status(Entry("before") + GetParam().text + Entry("zz-after"));
  EXPECT_THAT([this] { PackageDatabase database(folder_.GetPath()); },
              ThrowsMessage<KestrelException>(::testing::StartsWith(
                  "Unable to read " + folder_.GetPath() + "/status: " + GetParam().reason)));
  EXPECT_TRUE(IsRefusedByDpkg());
}

TEST_P(RefusedStatusTest, IsRefusedInAnUpdate) {
  Status(Entry("before"));
  folder_.Write("updates/0001", GetParam().text);
  EXPECT_THAT([this] { PackageDatabase database(folder_.GetPath()); },
              ThrowsMessage<KestrelException>(HasSubstr("/updates/0001: ")));
}

INSTANTIATE_TEST_SUITE_P(Files, RefusedStatusTest, ::testing::ValuesIn(kRefused),
                         [](const auto& test) { return test.param.name; });

// If a byte was changed on the disk, reading reports an error, or no entry is lost. The exception
// is the empty line between two entries: a change of this line joins them.
TEST_F(StatusFileTest, ADamagedByteWithinAnEntryNeverMakesTheListShorter) {
  const std::string whole =
      Entry("aa", "install ok installed", "Conffiles:\n /etc/a 0123\n") + Entry("bb");
  for (std::size_t position = 0; position < whole.size(); ++position) {
    for (const char byte : {'\0', ' ', ':'}) {
      std::string text = whole;
      text[position] = byte;
      Status(text);
      // A change of the empty line between two entries joins them.
      const bool joins = whole[position] == '\n' && position + 1 < whole.size() &&
                         (whole[position + 1] == '\n' || whole[position - 1] == '\n');
      try {
        const PackageDatabase database(folder_.GetPath());
        EXPECT_GE(database.GetPackages().size(), joins ? 1u : 2u)
            << position << " " << static_cast<int>(byte);
      } catch (const KestrelException& error) {
        EXPECT_THAT(error.what(), HasSubstr("Unable to read " + folder_.GetPath() + "/status: "));
      }
    }
  }
}

TEST_F(StatusFileTest, AFileThatEndsWithinAnEntryIsRefused) {
  const std::string whole = Entry("aa") + Entry("bb") + Entry("cc");
  const std::size_t size = Entry("aa").size();
  for (std::size_t length = 1; length < whole.size(); ++length) {
    if (length % size != 0) {
      Status(whole.substr(0, length));
      ExpectError("/status: it ends in the middle of an entry");
    }
  }
}

TEST_F(StatusFileTest, AVeryLongValueIsRead) {
  const std::string value(5 << 20, 'v');
  Status(Entry("a", "install ok installed", "Depends: " + value + "\n") + Entry("b"));
  EXPECT_THAT(Read(), SizeIs(2));
}

TEST_F(StatusFileTest, TensOfThousandsOfPackagesAreRead) {
  std::string text;
  for (int number = 0; number < 40000; ++number) {
    text += Entry("package" + std::to_string(number));
  }
  Status(text);
  const PackageDatabase database(folder_.GetPath());
  EXPECT_THAT(database.GetPackages(), SizeIs(40000));
  EXPECT_EQ(database.Require("package39999").name, "package39999");
}

TEST_F(StatusFileTest, AnUpdateWithoutAnEmptyLineIsReadAsByDpkg) {
  Status(Entry("a"));
  std::string update = Entry("a", "install ok unpacked", "", "2.0");
  update.pop_back();
  folder_.Write("updates/0000", update);
  EXPECT_THAT(Read(), ElementsAre("a|amd64|2.0|install|unpacked|made up|ok"));
  EXPECT_EQ(Read(), Ask());
}

TEST_F(StatusFileTest, ManyUpdatesAreReadInTheirOrder) {
  Status(Entry("a") + Entry("b"));
  for (int number = 0; number < 150; ++number) {
    const std::string digits = std::to_string(number);
    folder_.Write("updates/" + std::string(4 - digits.size(), '0') + digits,
                  Entry(number % 2 == 0 ? "a" : "b", "install ok unpacked", "", digits));
  }
  EXPECT_THAT(Read(), ElementsAre("a|amd64|148|install|unpacked|made up|ok",
                                  "b|amd64|149|install|unpacked|made up|ok"));
  EXPECT_EQ(Read(), Ask());
}

// ---- unreadable files

/// No file can be opened during the lifetime of this object.
class NoFiles {
 public:
  NoFiles() {
    EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &limit_), 0);
    struct rlimit none = limit_;
    none.rlim_cur = 0;
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  }
  NoFiles(const NoFiles&) = delete;
  NoFiles& operator=(const NoFiles&) = delete;
  ~NoFiles() { EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &limit_), 0); }

 private:
  struct rlimit limit_ = {};
};

TEST_F(StatusFileTest, TooManyOpenFilesAreAnError) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  Status(Entry("a"));
  folder_.Write("info/a.list", "/.\n");
  const PackageDatabase database(folder_.GetPath());
  const NoFiles none;
  ExpectError("/status: Too many open files");
  EXPECT_THAT([this] { PackageMarks marks("amd64", folder_.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + folder_.GetPath() +
                                              "/extended_states: Too many open files"));
  EXPECT_THAT([&] { ReadInstalledFiles(database.Require("a"), folder_.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + folder_.GetPath() +
                                              "/info/a.list: Too many open files"));
}

TEST_F(StatusFileTest, ALoopOfLinksIsAnError) {
  ASSERT_EQ(::symlink("status", folder_.GetPath("status").c_str()), 0);
  ExpectError("/status: Too many levels of symbolic links");
}

TEST_F(StatusFileTest, AFileInsteadOfTheUpdatesIsAnError) {
  Status(Entry("a"));
  ASSERT_EQ(::rmdir(folder_.GetPath("updates").c_str()), 0);
  folder_.Write("updates", "");
  ExpectError("/updates: Not a directory");
}

TEST_F(StatusFileTest, AFolderInsteadOfAnUpdateIsAnError) {
  Status(Entry("a"));
  folder_.MakeDirectory("updates/0001");
  ExpectError("/updates/0001: Is a directory");
}

TEST_F(StatusFileTest, WithoutAFolderForUpdatesThereAreNone) {
  Status(Entry("a"));
  ASSERT_EQ(::rmdir(folder_.GetPath("updates").c_str()), 0);
  EXPECT_THAT(Read(), SizeIs(1));
}

// ---- virtual packages

struct ProvidesCase {
  const char* provides;
  const char* name;
  bool isProvided;
};

TEST_F(StatusFileTest, ProvidedNamesAreFoundInEveryForm) {
  const ProvidesCase cases[] = {
      {"v", "v", true},           {"v (= 1)", "v", true}, {"v(=1)", "v", true},
      {"v:any", "v", true},       {"u, v", "v", true},    {"u,v", "v", true},
      {"u,\n v,\n w", "v", true}, {"u ,v ,", "v", true},  {"vv", "v", false},
      {"v-1", "v", false},        {"1-v", "v", false},    {"u (= v)", "v", false},
      {"V", "v", false},          {",", "", false},       {"v", "", false}};
  for (const ProvidesCase& each : cases) {
    Status(Entry("p", "install ok installed", "Provides: " + std::string(each.provides) + "\n"));
    const PackageDatabase database(folder_.GetPath());
    EXPECT_EQ(!database.FindProviders(each.name).empty(), each.isProvided)
        << each.provides << " and " << each.name;
  }
}

TEST_F(StatusFileTest, ALongListOfProvidersIsWhole) {
  std::string text;
  std::string names;
  for (int number = 100; number < 300; ++number) {
    const std::string name = "p" + std::to_string(number);
    text += Entry(name, "install ok installed", "Provides: v\n");
    names += (names.empty() ? "" : ", ") + name;
  }
  Status(text);
  const PackageDatabase database(folder_.GetPath());
  EXPECT_THAT([&] { database.Require("v"); },
              ThrowsMessage<KestrelException>(
                  "'v' is a virtual package, which these packages provide: " + names));
}

}  // namespace
}  // namespace Kestrel::Host
