// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <functional>
#include <string>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/Namespaces.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands in the namespace "package" on a machine with simulated packages.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kStatus[] =
    "Package: dpkg\nStatus: install ok installed\nInstalled-Size: 6000\nArchitecture: amd64\n"
    "Version: 1.21\nDescription: manages packages\n\n"
    "Package: odd\nStatus: hold ok installed\nInstalled-Size: 1\nArchitecture: all\n"
    "Version: 1:2-3\nMaintainer: Ann \x1b[1m Other <ann@example.org>\n"
    "Depends: dpkg (>= 1), a | b\nProvides: oddity (= 2)\nConffiles:\n"
    " /etc/odd 0123456789abcdef0123456789abcdef\n"
    " /etc/odd file 0123456789abcdef0123456789abcdef obsolete\n"
    "Description: odd \xff bytes\n first\n .\n   indented\n\n"
    "Package: left\nStatus: deinstall ok config-files\nArchitecture: i386\nVersion: 1\n\n"
    "Package: foreign\nStatus: install ok installed\nArchitecture: i386\nVersion: 1\n\n"
    "Package: broken\nStatus: install reinstreq half-installed\nArchitecture: amd64\n"
    "Version: 3\n\n";

// Prints an answer in the form of apt-cache for each name. Version 2 of "foreign" is available; no
// other package has a newer version.
constexpr char kAptCache[] =
    "#!/bin/sh\n"
    "[ \"$1 $2\" = 'policy --' ] || exit 9\n"
    "shift 2\n"
    "for name; do\n"
    "  version=0.1; [ \"$name\" != foreign:i386 ] || version=2\n"
    "  printf '%s:\\n  Installed: 1\\n  Candidate: %s\\n  Version table:\\n' \"$name\" $version\n"
    "  printf '     %s 500\\n        500 http://example.org/ x Packages\\n' $version\n"
    "done\n";

class PackageMachineTest : public ::testing::Test {
 protected:
  PackageMachineTest() {
    files_.Write("dpkg/status", kStatus);
    files_.Write("apt/extended_states", "Package: odd\nArchitecture: amd64\nAuto-Installed: 1\n\n");
    Program(kAptCache);
  }

  void Program(const std::string& text) {
    ::chmod(files_.Write("bin/apt-cache", text).c_str(), 0755);
  }

  // Runs `body` on a machine whose dpkg and apt have the test's data.
  void RunThere(const std::function<void()>& body) const {
    GetDispatcher();  // loads the plug-in before the machine is replaced
    const std::string refusal = RunInNamespaces(CLONE_NEWNS, [this, &body] {
      for (const char* const name : {"dpkg", "apt"}) {
        ASSERT_EQ(::mount(files_.GetPath(name).c_str(), (std::string("/var/lib/") + name).c_str(),
                          nullptr, MS_BIND, nullptr),
                  0)
            << name;
      }
      const ScopedEnvironment path("PATH", files_.GetPath("bin") + ":/usr/bin:/bin");
      body();
    });
    if (!refusal.empty()) {
      GTEST_SKIP() << refusal;
    }
  }

  void ExpectErrors(const std::string& path, const Parameters& parameters,
                    const std::string& message) const {
    RunThere([&] { EXPECT_THAT(CallErrors(path, parameters), ElementsAre(message)); });
  }

  const ScopedTempDir files_;
};

TEST_F(PackageMachineTest, PrintsATable) {
  RunThere([] {
    EXPECT_EQ(Print("package list", {}, 80),
              "Name     Size Bytes  Version\n"
              "-------  ----------  -------\n"
              "dpkg        6144000  1.21\n"
              "foreign           0  1\n"
              "odd            1024  1:2-3\n");
  });
}

TEST_F(PackageMachineTest, PrintsSizesForPeople) {
  RunThere([] {
    EXPECT_EQ(Print("package list", {{"human", ""}, {"name", "*d*"}, {"manual", "true"}}, 80),
              "Name  Size     Version\n"
              "----  -------  -------\n"
              "dpkg  5.9 MiB  1.21\n");
  });
}

TEST_F(PackageMachineTest, ListsStatesAndMarks) {
  RunThere([] {
    EXPECT_THAT(CallColumn("package list", "Name", {{"state", "any"}}),
                ElementsAre("broken", "dpkg", "foreign", "left", "odd"));
    EXPECT_THAT(CallColumn("package list", "Name", {{"state", "half-installed"}}),
                ElementsAre("broken"));
    EXPECT_THAT(CallColumn("package list", "Manual"), ElementsAre("true", "true", "false"));
    EXPECT_THAT(CallColumn("package list", "Held"), ElementsAre("false", "false", "true"));
    EXPECT_THAT(CallColumn("package list", "Name", {{"state", "unpacked"}}), IsEmpty());
  });
}

TEST_F(PackageMachineTest, ShowsTheFieldsOfAPackage) {
  RunThere([] {
    const Row row = CallStruct("package get", {{"name", "odd"}});
    EXPECT_EQ(row.at("Version"), "1:2-3");
    EXPECT_EQ(row.at("Wanted"), "hold");
    EXPECT_EQ(row.at("Manual"), "false");
    EXPECT_EQ(row.at("Size"), "1.0 KiB");
    EXPECT_EQ(row.at("Size Bytes"), "1024");
    EXPECT_EQ(row.at("Depends"), "dpkg (>= 1), a | b");
    EXPECT_EQ(row.at("Provides"), "oddity (= 2)");
    EXPECT_EQ(row.at("Settings"), "/etc/odd, /etc/odd file");
    EXPECT_EQ(row.at("Section"), "none");
    EXPECT_EQ(row.at("Homepage"), "none");
    EXPECT_EQ(row.at("Summary"), "odd \\xff bytes");
    EXPECT_EQ(row.at("Description"), "first\n\n  indented");
  });
}

TEST_F(PackageMachineTest, PrintsTheFieldsOfAPackage) {
  RunThere([] {
    EXPECT_EQ(Print("package get", {{"name", "odd"}}, 80),
              "Package odd:\n"
              "   Version     : 1:2-3\n"
              "   Architecture: all\n"
              "   State       : installed\n"
              "   Wanted      : hold\n"
              "   Manual      : false\n"
              "   Size        : 1.0 KiB\n"
              "   Section     : none\n"
              "   Priority    : none\n"
              "   Source      : none\n"
              "   Origin      : none\n"
              "   Homepage    : none\n"
              "   Maintainer  : \n"
              "         Address: ann@example.org\n"
              "         Name   : Ann \\x1b[1m Other\n"
              "   Depends     : dpkg (>= 1), a | b\n"
              "   Recommends  : \n"
              "   Provides    : oddity (= 2)\n"
              "   Summary     : odd \\xff bytes\n"
              "   Description : first\n\n  indented\n");
  });
}

TEST_F(PackageMachineTest, ShowsAPackageThatIsBroken) {
  RunThere([] {
    const Row row = CallStruct("package get", {{"name", "broken"}});
    EXPECT_EQ(row.at("State"), "half-installed");
    EXPECT_EQ(row.at("Reinstall Required"), "true");
    EXPECT_EQ(row.at("Summary"), "none");
    EXPECT_EQ(row.at("Description"), "none");
  });
}

TEST_F(PackageMachineTest, ChecksWhetherAPackageIsInstalled) {
  RunThere([] {
    EXPECT_EQ(CallText("package check", {{"name", "odd"}}), "true");
    EXPECT_EQ(CallText("package check", {{"name", "left"}}), "false");
    EXPECT_EQ(CallText("package check", {{"name", "broken"}}), "false");
    EXPECT_EQ(CallText("package check", {{"name", "foreign:i386"}}), "true");
  });
}

TEST_F(PackageMachineTest, NamesTheProvidersOfAVirtualPackage) {
  ExpectErrors("package check", {{"name", "oddity"}},
               "'oddity' is a virtual package, which these packages provide: odd");
}

TEST_F(PackageMachineTest, ListsFiles) {
  files_.Write("dpkg/info/odd.list", "/.\n/etc\n/etc/odd\n");
  files_.Write("dpkg/diversions", "/etc/odd\n/etc/odd.real\n:\n");
  RunThere([] {
    EXPECT_EQ(Print("package files", {{"name", "odd"}}, 80), "/.\n/etc\n/etc/odd\n");
    EXPECT_THAT(CallColumn("package files", "Diverted To", {{"name", "odd"}}),
                ElementsAre("none", "none", "/etc/odd.real"));
  });
}

// ---- a package whose installation was interrupted before its files were unpacked

class InterruptedPackageTest : public PackageMachineTest {
 protected:
  InterruptedPackageTest() {
    files_.Write("dpkg/status", std::string(kStatus) +
                                    "Package: new\nStatus: install reinstreq half-installed\n\n");
  }
};

TEST_F(InterruptedPackageTest, DoesNotHideTheOthers) {
  RunThere([] {
    EXPECT_THAT(CallColumn("package list", "Name"), ElementsAre("dpkg", "foreign", "odd"));
    EXPECT_THAT(CallColumn("package list", "Name", {{"state", "any"}}),
                ElementsAre("broken", "dpkg", "foreign", "left", "new", "odd"));
  });
}

TEST_F(InterruptedPackageTest, HasNeitherAVersionNorAnArchitecture) {
  RunThere([] {
    for (const Row& row : CallRows("package list", {{"name", "new"}, {"state", "any"}})) {
      EXPECT_EQ(row.at("Version"), "none");
      EXPECT_EQ(row.at("Architecture"), "none");
      EXPECT_EQ(row.at("State"), "half-installed");
      EXPECT_EQ(row.at("Size Bytes"), "0");
      EXPECT_EQ(row.at("Summary"), "none");
    }
    const Row row = CallStruct("package get", {{"name", "new"}});
    EXPECT_EQ(row.at("Version"), "none");
    EXPECT_EQ(row.at("Reinstall Required"), "true");
    EXPECT_EQ(CallText("package check", {{"name", "new"}}), "false");
  });
}

TEST_F(InterruptedPackageTest, IsNotUpgradable) {
  // Although apt would install the package, there is no installed version that it would upgrade.
  RunThere(
      [] { EXPECT_THAT(CallColumn("package upgradable list", "Name"), ElementsAre("foreign")); });
}

TEST_F(PackageMachineTest, NoFieldOfAListIsEmpty) {
  RunThere([] {
    for (const Row& row : CallRows("package list", {{"state", "any"}})) {
      for (const auto& [field, text] : row) {
        EXPECT_NE(text, "") << row.at("Name") << " " << field;
      }
    }
    for (const Row& row : CallRows("package upgradable list")) {
      for (const auto& [field, text] : row) {
        EXPECT_NE(text, "") << row.at("Name") << " " << field;
      }
    }
  });
}

// ---- missing or damaged data, which must never result in an empty list

TEST_F(PackageMachineTest, ReportsThatThereIsNoDpkg) {
  Witness("rm '" + files_.GetPath("dpkg/status") + "'");
  const std::string message =
      "This machine has no packages of dpkg: there is no file /var/lib/dpkg/status";
  for (const char* const path : {"package list", "package upgradable list"}) {
    ExpectErrors(path, {}, message);
  }
  for (const char* const path : {"package get", "package check", "package files"}) {
    ExpectErrors(path, {{"name", "odd"}}, message);
  }
}

TEST_F(PackageMachineTest, RefusesATruncatedDatabase) {
  files_.Write("dpkg/status", std::string(kStatus).substr(0, sizeof kStatus - 10));
  ExpectErrors("package list", {},
               "Unable to read /var/lib/dpkg/status: it ends in the middle of an entry");
}

TEST_F(PackageMachineTest, RefusesTruncatedMarks) {
  files_.Write("apt/extended_states", "Package: odd\nArch");
  ExpectErrors("package list", {},
               "Unable to read /var/lib/apt/extended_states: it ends in the middle of an entry");
}

TEST_F(PackageMachineTest, RefusesAMissingListOfFiles) {
  ExpectErrors("package files", {{"name", "odd"}},
               "Unable to read /var/lib/dpkg/info/odd.list: No such file or directory");
}

// ---- package upgradable list

TEST_F(PackageMachineTest, ListsWhatIsUpgradable) {
  RunThere([] {
    EXPECT_EQ(Print("package upgradable list", {}, 80),
              "Name     Version  Available Version  Held\n"
              "-------  -------  -----------------  ----\n"
              "foreign  1        2                  false\n");
    EXPECT_THAT(CallColumn("package upgradable list", "Source"),
                ElementsAre("http://example.org/ x Packages"));
    EXPECT_THAT(CallColumn("package upgradable list", "Name", {{"name", "o*"}}), IsEmpty());
    EXPECT_THAT(CallColumn("package upgradable list", "Name", {{"match", "reign$"}}),
                ElementsAre("foreign"));
  });
}

TEST_F(PackageMachineTest, DoesNotRunAptIfNoPackageIsSelected) {
  Program("#!/bin/sh\nexit 3\n");
  RunThere([] {
    EXPECT_THAT(CallColumn("package upgradable list", "Name", {{"name", "nosuch"}}), IsEmpty());
  });
}

TEST_F(PackageMachineTest, ReportsThatAptHasNoLists) {
  Program(
      "#!/bin/sh\nshift 2\nfor name; do printf '%s:\\n  Installed: 1\\n  Candidate: 1\\n' $name\n"
      "printf '  Version table:\\n *** 1 100\\n        100 /var/lib/dpkg/status\\n'; done\n");
  ExpectErrors("package upgradable list", {},
               "apt has no lists of available packages; 'apt-get update' fetches them");
}

TEST_F(PackageMachineTest, RefusesAnAnswerThatLacksAPackage) {
  Program("#!/bin/sh\nprintf 'dpkg:\\n  Candidate: 9\\n     9 1\\n        500 x\\n'\n");
  ExpectErrors("package upgradable list", {},
               "apt-cache returned nothing about the package 'broken'");
}

TEST_F(PackageMachineTest, RefusesAnAnswerWithoutACandidate) {
  Program(
      "#!/bin/sh\nshift 2\nfor name; do printf '%s:\\n  Installed: 1\\n  Version table:\\n' $name\n"
      "printf '     2 500\\n        500 http://example.org/ x Packages\\n'; done\n");
  ExpectErrors("package upgradable list", {},
               "apt-cache returned nothing about the package 'broken'");
}

TEST_F(PackageMachineTest, RefusesAnAnswerThatEndsWithinALine) {
  Program("#!/bin/sh\nprintf 'broken:\\n  Installed: 1\\n  Candidate: 1'\n");
  ExpectErrors("package upgradable list", {}, "apt-cache's answer ends in the middle of a line");
}

TEST_F(PackageMachineTest, ReportsWhyAptFails) {
  Program("#!/bin/sh\necho 'E: it is locked' >&2\nexit 100\n");
  ExpectErrors("package upgradable list", {}, "apt-cache failed: E: it is locked");
}

TEST_F(PackageMachineTest, ReportsThatThereIsNoApt) {
  RunThere([] {
    const ScopedEnvironment path("PATH", "/nosuch");
    EXPECT_THAT(CallErrors("package upgradable list", {}),
                ElementsAre("There is no program apt-cache (package apt) in PATH, which knows the "
                            "available versions"));
  });
}

}  // namespace
}  // namespace Kestrel::Testing
