// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Tests which users' plug-ins the tool loads. Each test starts the tool in a root folder of its
// own, where files belong to several users.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "e2e/ThrowAwayRoot.h"
#include "support/Sanitizer.h"

namespace Kestrel::Testing {

namespace {

using ::testing::Combine;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::TestWithParam;
using ::testing::Values;
using ::testing::ValuesIn;

constexpr uid_t kStranger = 4711;
constexpr uid_t kToolOwner = 4712;
constexpr uid_t kCaller = 4713;

constexpr const char* kObject = "/samples/EchoPlugin.so";
const std::string kFolder = KESTREL_PLUGIN_DIR;
const std::string kAbove = std::filesystem::path(KESTREL_PLUGIN_DIR).parent_path();

constexpr const char* kDescriptor =
    "<plugin><version>1.0.0</version><namespaces><namespace path='echo'><description>Answers."
    "</description></namespace></namespaces><commands><command path='echo.say'><description>Answer."
    "</description><input-spec><parameter name='text' type='string' required='true' shortname='t'>"
    "<description>The text.</description></parameter></input-spec><output-spec><string/>"
    "</output-spec><format-parameters><formatter>simple</formatter></format-parameters><execute>"
    "printf '&lt;o>&lt;string>%s&lt;/string>&lt;/o>' '$val{text}'</execute></command></commands>"
    "</plugin>";

const std::vector<std::string> kCall = {"echo", "say", "-t", "hello"};

bool IsObject(const std::string& path) { return path.substr(path.rfind('.')) == ".so"; }

void MakePlugin(const std::string& path) {
  if (IsObject(path)) {
    Move(kObject, path);
  } else {
    WriteFile(path, kDescriptor);
  }
}

// Returns the dispatcher's message about a skipped plug-in of a folder.
std::string Skipped(const std::string& path, const std::string& reason) {
  return "Error loading plugin " + path + " skipping.  Error was: " +
         (IsObject(path)
              ? "Unable to load plugin from " + path + " : "
              : "Unable to handle XML Plugin " + path + ".  There was an error while parsing: ") +
         reason + "\n";
}

std::string Belongs(const std::string& path, uid_t user) {
  return path + " belongs to user " + std::to_string(user) +
         ", who is neither root nor the owner of this program";
}

std::string Group(const std::string& path) { return path + " can be written by its group"; }
std::string Everyone(const std::string& path) { return path + " can be written by every user"; }

class TrustTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const auto obstacle = WhyNoThrowAwayRoot()) {
      GTEST_SKIP() << *obstacle;
    }
  }
};

// How the tool is started: the users of the process, and the owner (root or `kToolOwner`), the mode
// and the group of the tool.
struct Start {
  uid_t real = 0;
  uid_t effective = 0;
  uid_t toolOwner = 0;
  mode_t toolMode = 0755;
  gid_t toolGroup = 0;
};

constexpr Start kRoot = {};
constexpr Start kRootWithToolOfAnother = {0, 0, kToolOwner};
constexpr Start kUser = {kCaller, kCaller};
constexpr Start kSetRoot = {kCaller, kCaller, 0, 04755};
constexpr Start kSetRootByRoot = {0, 0, 0, 04755};
constexpr Start kSetToolOwner = {kCaller, kCaller, kToolOwner, 04755};
constexpr Start kSetGroup = {kCaller, kCaller, 0, 02755, kToolOwner};
constexpr Start kUsersDiffer = {kCaller, 0};

struct TrustCase {
  const char* name;
  Start start;
  /// Changes a trusted plug-in or the folders above it, all of which belong to root. `file` is the
  /// path of the plug-in.
  void (*change)(const std::string& file);
  /// Returns why the plug-in is skipped, or an empty string if it is loaded.
  std::string (*reason)(const std::string& file);
};

void PrintTo(const TrustCase& trust, std::ostream* out) { *out << trust.name; }

std::string None(const std::string&) { return ""; }
std::string FileOfStranger(const std::string& file) { return Belongs(file, kStranger); }
std::string FileOfCaller(const std::string& file) { return Belongs(file, kCaller); }
std::string FileOfGroup(const std::string& file) { return Group(file); }
std::string FileOfEveryone(const std::string& file) { return Everyone(file); }
std::string FolderOfStranger(const std::string&) { return Belongs(kFolder, kStranger); }
std::string FolderOfGroup(const std::string&) { return Group(kFolder); }
std::string FolderOfEveryone(const std::string&) { return Everyone(kFolder); }
std::string OtherOfStranger(const std::string&) { return Belongs("/other", kStranger); }
std::string OtherOfGroup(const std::string&) { return Group("/other"); }

void Keep(const std::string&) {}

template <mode_t mode>
void SetFileMode(const std::string& file) {
  SetMode(file, mode);
}

template <uid_t user>
void OwnFile(const std::string& file) {
  Own(file, user);
}

template <mode_t mode>
void SetFolderMode(const std::string&) {
  SetMode(kFolder, mode);
}

template <uid_t user>
void OwnFolder(const std::string&) {
  Own(kFolder, user);
}

// Moves the file to the new folder /other, which has the mode `mode`. In the default folder, a link
// takes the place of the file.
template <mode_t mode>
void LinkInto(const std::string& file) {
  MakeFolder("/other");
  Move(file, "/other/file");
  MakeLink("/other/file", file);
  SetMode("/other", mode);
}

// Makes the default folder a link to /other/plugins. The folder /other has the mode `mode`.
template <mode_t mode>
void LinkFolder(const std::string&) {
  MakeFolder("/other");
  Move(kFolder, "/other/plugins");
  MakeLink("/other/plugins", kFolder);
  SetMode("/other", mode);
}

const TrustCase kCases[] = {
    // The file.
    {"AFileOfRoot", kRoot, Keep, None},
    {"AFileThatOnlyRootMayRead", kRoot, SetFileMode<0600>, None},
    {"AFileThatNoOneMayWrite", kRoot, SetFileMode<0444>, None},
    {"ASetUserIdFile", kRoot, SetFileMode<04755>, None},
    {"AFileThatItsGroupMayWrite", kRoot, SetFileMode<0664>, FileOfGroup},
    {"AFileThatItsGroupMayOnlyWrite", kRoot, SetFileMode<0620>, FileOfGroup},
    {"AFileThatOthersMayWrite", kRoot, SetFileMode<0646>, FileOfEveryone},
    {"AFileThatEveryoneMayWrite", kRoot, SetFileMode<0666>, FileOfEveryone},
    {"AStickyFileThatEveryoneMayWrite", kRoot, SetFileMode<01666>, FileOfEveryone},
    {"AFileOfAnotherUser", kRoot, OwnFile<kStranger>, FileOfStranger},
    {"AFileOfAnotherUserThatNoOneMayWrite", kRoot,
     [](const std::string& file) {
       Own(file, kStranger);
       SetMode(file, 0444);
     },
     FileOfStranger},
    {"AFileOfAnotherGroup", kRoot, [](const std::string& file) { Own(file, 0, kStranger); }, None},
    {"AFileOfTheToolsOwner", kRootWithToolOfAnother, OwnFile<kToolOwner>, None},
    {"AFileOfRootForAToolOfAnother", kRootWithToolOfAnother, Keep, None},
    {"AFileOfAThirdUser", kRootWithToolOfAnother, OwnFile<kStranger>, FileOfStranger},
    {"AFileOfTheToolsOwnerThatItsGroupMayWrite", kRootWithToolOfAnother,
     [](const std::string& file) {
       Own(file, kToolOwner);
       SetMode(file, 0664);
     },
     FileOfGroup},
    // The folder.
    {"AFolderThatItsGroupMayWrite", kRoot, SetFolderMode<0775>, FolderOfGroup},
    {"AFolderThatOthersMayWrite", kRoot, SetFolderMode<0757>, FolderOfEveryone},
    {"AFolderThatEveryoneMayWrite", kRoot, SetFolderMode<0777>, FolderOfEveryone},
    {"AFolderThatOnlyRootMayEnter", kRoot, SetFolderMode<0700>, None},
    {"AStickyFolderThatEveryoneMayWrite", kRoot, SetFolderMode<01777>, None},
    {"AStickyFolderThatItsGroupMayWrite", kRoot, SetFolderMode<01775>, None},
    {"AStickyFolderWithAFileOfAnother", kRoot,
     [](const std::string& file) {
       SetMode(kFolder, 01777);
       Own(file, kStranger);
     },
     FileOfStranger},
    {"AFolderOfAnotherUser", kRoot, OwnFolder<kStranger>, FolderOfStranger},
    {"AStickyFolderOfAnotherUser", kRoot,
     [](const std::string&) {
       Own(kFolder, kStranger);
       SetMode(kFolder, 01777);
     },
     FolderOfStranger},
    {"AFolderOfTheToolsOwner", kRootWithToolOfAnother, OwnFolder<kToolOwner>, None},
    {"AHomeOfTheToolsOwner", kRootWithToolOfAnother,
     [](const std::string& file) {
       Own(kAbove, kToolOwner);
       Own(kFolder, kToolOwner);
       Own(file, kToolOwner);
     },
     None},
    // The folders above it.
    {"ARootFolderThatEveryoneMayWrite", kRoot, [](const std::string&) { SetMode("/", 0777); },
     [](const std::string&) { return Everyone("/"); }},
    {"AStickyRootFolder", kRoot, [](const std::string&) { SetMode("/", 01777); }, None},
    {"ARootFolderOfAnother", kRoot, [](const std::string&) { Own("/", kStranger); },
     [](const std::string&) { return Belongs("/", kStranger); }},
    {"AFolderInOneThatItsGroupMayWrite", kRoot, [](const std::string&) { SetMode(kAbove, 0775); },
     [](const std::string&) { return Group(kAbove); }},
    {"AFolderInOneOfAnother", kRoot, [](const std::string&) { Own(kAbove, kStranger); },
     [](const std::string&) { return Belongs(kAbove, kStranger); }},
    {"AFolderInAStickyOne", kRoot, [](const std::string&) { SetMode(kAbove, 01777); }, None},
    {"AFolderOfAnotherInAStickyOne", kRoot,
     [](const std::string&) {
       SetMode(kAbove, 01777);
       Own(kFolder, kStranger);
     },
     FolderOfStranger},
    // Symbolic links.
    {"ALink", kRoot, LinkInto<0755>, None},
    {"ALinkOfAnother", kRoot,
     [](const std::string& file) {
       LinkInto<0755>(file);
       Own(file, kStranger);
     },
     FileOfStranger},
    {"ALinkToAFileOfAnother", kRoot,
     [](const std::string& file) {
       LinkInto<0755>(file);
       Own("/other/file", kStranger);
     },
     [](const std::string&) { return Belongs("/other/file", kStranger); }},
    {"ALinkIntoAFolderThatItsGroupMayWrite", kRoot, LinkInto<0775>, OtherOfGroup},
    {"ALinkIntoAFolderOfAnother", kRoot,
     [](const std::string& file) {
       LinkInto<0755>(file);
       Own("/other", kStranger);
     },
     OtherOfStranger},
    {"ALinkIntoAStickyFolder", kRoot, LinkInto<01777>, None},
    {"ALinkOfAnotherInAStickyFolder", kRoot,
     [](const std::string& file) {
       LinkInto<0755>(file);
       SetMode(kFolder, 01777);
       Own(file, kStranger);
     },
     FileOfStranger},
    {"ALinkToALinkOfAnother", kRoot,
     [](const std::string& file) {
       LinkInto<01777>(file);
       Move("/other/file", "/other/last");
       MakeLink("last", "/other/file");
       Own("/other/file", kStranger);
     },
     [](const std::string&) { return Belongs("/other/file", kStranger); }},
    {"ARelativeLink", kRoot,
     [](const std::string& file) {
       MakeFolder(kFolder + "/files");
       Move(file, kFolder + "/files/.file");
       MakeLink("files/.//../files/.file", file);
     },
     None},
    {"ALinkToTheFolder", kRoot, LinkFolder<0755>, None},
    {"ALinkToTheFolderBelowOneThatItsGroupMayWrite", kRoot, LinkFolder<0775>, OtherOfGroup},
    // Other rights.
    {"AnythingForAUser", kUser,
     [](const std::string& file) {
       Own(file, kStranger);
       SetMode(file, 0666);
       SetMode(kFolder, 0777);
     },
     None},
    {"AFileOfRootForASetUserIdTool", kSetRoot, Keep, None},
    {"AFileOfTheCallerForASetUserIdTool", kSetRoot, OwnFile<kCaller>, FileOfCaller},
    {"AFileThatEveryoneMayWriteForASetUserIdTool", kSetRoot, SetFileMode<0666>, FileOfEveryone},
    {"AFolderThatItsGroupMayWriteForASetUserIdTool", kSetRoot, SetFolderMode<0775>, FolderOfGroup},
    {"ASetUserIdToolThatRootCalls", kSetRootByRoot, OwnFile<kStranger>, FileOfStranger},
    {"AFileOfTheUserThatIsSet", kSetToolOwner, OwnFile<kToolOwner>, None},
    {"AFileOfRootForTheUserThatIsSet", kSetToolOwner, Keep, None},
    {"AFileOfTheCallerForTheUserThatIsSet", kSetToolOwner, OwnFile<kCaller>, FileOfCaller},
    {"AFileOfRootForASetGroupIdTool", kSetGroup, Keep, None},
    {"AFileOfTheCallerForASetGroupIdTool", kSetGroup, OwnFile<kCaller>, FileOfCaller},
    {"AFileOfRootForUsersThatDiffer", kUsersDiffer, Keep, None},
    {"AFileOfTheCallerForUsersThatDiffer", kUsersDiffer, OwnFile<kCaller>, FileOfCaller},
};

class TrustCaseTest : public TrustTest,
                      public ::testing::WithParamInterface<std::tuple<const char*, TrustCase>> {};

TEST_P(TrustCaseTest, LoadsOrSkipsThePluginWithTheReason) {
  const auto& [suffix, trust] = GetParam();
  const std::string file = kFolder + "/echo" + suffix;
  const Start& start = trust.start;
  if (kIsSanitized && (start.toolMode & (S_ISUID | S_ISGID)) != 0) {
    GTEST_SKIP() << "the leak sanitizer cannot trace a process with other rights";
  }
  const auto prepare = [&file, &start, change = trust.change] {
    MakePlugin(file);
    change(file);
    Own(KESTREL_TOOL, start.toolOwner, start.toolGroup);
    SetMode(KESTREL_TOOL, start.toolMode);
  };
  const VexilResult result = ThrowAwayRoot(prepare).As(start.real, start.effective).Run(kCall);
  const std::string reason = trust.reason(file);
  if (reason.empty()) {
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "hello\n");
    EXPECT_EQ(result.status, 0);
  } else {
    EXPECT_THAT(result.err, StartsWith(Skipped(file, reason)));
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, TrustCaseTest, Combine(Values(".so", ".xml"), ValuesIn(kCases)),
                         [](const auto& test) {
                           const std::string suffix = std::get<0>(test.param);
                           return (suffix == ".so" ? "Object" : "Descriptor") +
                                  std::string(std::get<1>(test.param).name);
                         });

TEST_F(TrustTest, EveryDefaultFolderIsChecked) {
  for (const char* const folder : {"/lib64", "/ext", "/ext/lib64"}) {
    const std::string file = kFolder + folder + "/echo.so";
    const VexilResult result = ThrowAwayRoot([&file] {
                                 MakeFolder(std::filesystem::path(file).parent_path());
                                 MakePlugin(file);
                                 Own(file, kStranger);
                               }).Run(kCall);
    EXPECT_THAT(result.err, StartsWith(Skipped(file, Belongs(file, kStranger))));
  }
}

TEST_F(TrustTest, WhatRootNamesIsLoaded) {
  const std::vector<std::vector<std::string>> options = {
      {"--plugin", "/other/echo.so"}, {"--plugin", "/other/echo.xml"}, {"--plugin-dir", "/other"}};
  for (std::vector<std::string> arguments : options) {
    arguments.insert(arguments.end(), kCall.begin(), kCall.end());
    const VexilResult result = ThrowAwayRoot([&arguments] {
                                 const std::string file =
                                     arguments[1] == "/other" ? "/other/echo.so" : arguments[1];
                                 MakeFolder("/other");
                                 MakePlugin(file);
                                 Own(file, kStranger);
                                 SetMode(file, 0666);
                                 SetMode("/other", 0777);
                               }).Run(arguments);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "hello\n");
  }
}

TEST_F(TrustTest, AnOptionAfterThePathLoadsNothing) {
  for (const char* const option : {"--plugin", "--plugin-dir", "--input"}) {
    const VexilResult result =
        ThrowAwayRoot([] {
          MakeFolder("/other");
        }).Run({"vexil", "command", "list", option, "/samples/EchoPlugin.so"});
    EXPECT_EQ(result.err, "Errors: \nUnknown parameter : " + std::string(option + 2) + "\n");
    EXPECT_EQ(result.out, "");
  }
}

void SetUserId() { SetMode(KESTREL_TOOL, 04755); }

TEST_F(TrustTest, ASetUserIdToolRefusesOptionsThatNameFiles) {
  const std::string reason =
      " is not allowed, because this process has rights that its user does not have\n";
  for (const std::string option : {"--input", "--plugin", "--plugin-dir"}) {
    const VexilResult result = ThrowAwayRoot(SetUserId)
                                   .As(kCaller, kCaller)
                                   .Run({option, "/samples/EchoPlugin.so", "vexil"});
    EXPECT_EQ(result.err, "Errors: \nThe option " + option + reason);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 1);
  }
  const VexilResult all = ThrowAwayRoot(SetUserId)
                              .As(kCaller, kCaller)
                              .Run({"--plugin=a.so", "--input=b", "--plugin-dir=c"});
  EXPECT_EQ(all.err, "Errors: \nThe option --input" + reason + "The option --plugin" + reason +
                         "The option --plugin-dir" + reason);
}

TEST_F(TrustTest, ASetUserIdToolRunsCallsThatNameNoFile) {
  const VexilResult result = ThrowAwayRoot(SetUserId)
                                 .As(kCaller, kCaller)
                                 .Run({"--formatter", "csv", "vexil", "command", "list"});
  EXPECT_EQ(result.err, "");
  EXPECT_THAT(result.out, HasSubstr("List all of the vexil commands."));
  EXPECT_EQ(result.status, 0);
}

// Runs a command of a descriptor that prints its environment and its file mode mask.
VexilResult PrintEnvironment(const std::function<void()>& prepare, uid_t user) {
  return ThrowAwayRoot([&prepare] {
           std::string text = kDescriptor;
           text.replace(text.find("printf"), text.find("</execute>") - text.find("printf"),
                        "printf '&lt;o>&lt;string>'; env; umask; printf '&lt;/string>&lt;/o>'");
           WriteFile(kFolder + "/echo.xml", text);
           umask(0);
           prepare();
         })
      .As(user, user)
      .WithEnvironment("PATH", "/tmp:/usr/bin")
      .WithEnvironment("OPR_USERNAME", "somebody")
      .WithEnvironment("ICU_DATA", "/tmp")
      .WithEnvironment("LANG", "C.UTF-8")
      .WithEnvironment("LC_TIME", "/tmp/locale")
      .WithEnvironment("LC_NUMERIC", std::string(65, 'C'))
      .WithEnvironment("TERM", "xterm-256color")
      .WithEnvironment("TZ", ":/tmp/zone")
      .Run(kCall);
}

TEST_F(TrustTest, ASetUserIdToolCleansTheEnvironment) {
  const std::string out = PrintEnvironment(SetUserId, kCaller).out;
  EXPECT_THAT(out, HasSubstr("PATH=/usr/sbin:/usr/bin:/sbin:/bin\n"));
  EXPECT_THAT(out, HasSubstr("LANG=C.UTF-8\n"));
  EXPECT_THAT(out, HasSubstr("TERM=xterm-256color\n"));
  EXPECT_THAT(out, HasSubstr("\n0022\n"));
  for (const char* const name : {"OPR_USERNAME", "ICU_DATA", "LC_TIME", "LC_NUMERIC", "TZ"}) {
    EXPECT_THAT(out, Not(HasSubstr(name)));
  }
}

TEST_F(TrustTest, AToolWithoutForeignRightsKeepsTheEnvironment) {
  for (const uid_t user : {uid_t{0}, kCaller}) {
    const std::string out = PrintEnvironment([] {}, user).out;
    for (const char* const line :
         {"PATH=/tmp:/usr/bin\n", "OPR_USERNAME=somebody\n", "ICU_DATA=/tmp\n",
          "LC_TIME=/tmp/locale\n", "TZ=:/tmp/zone\n", "\n0000\n"}) {
      EXPECT_THAT(out, HasSubstr(line));
    }
  }
}

TEST_F(TrustTest, WithoutProcNoFileThatMustBeCheckedIsLoaded) {
  if (kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs /proc";
  }
  for (const char* const suffix : {".so", ".xml"}) {
    const std::string file = kFolder + "/echo" + suffix;
    const VexilResult result =
        ThrowAwayRoot([&file] { MakePlugin(file); }).WithoutProc().Run(kCall);
    EXPECT_THAT(result.err,
                StartsWith(Skipped(file, "it can be loaded safely only where /proc is mounted")));
  }
}

TEST_F(TrustTest, WithoutProcAUserLoadsPlugins) {
  if (kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs /proc";
  }
  for (const char* const suffix : {".so", ".xml"}) {
    const VexilResult result = ThrowAwayRoot([&] { MakePlugin(kFolder + "/echo" + suffix); })
                                   .As(kCaller, kCaller)
                                   .WithoutProc()
                                   .Run(kCall);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "hello\n");
  }
}

TEST_F(TrustTest, WithoutProcTheOwnerOfTheToolIsNotKnown) {
  if (kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs /proc";
  }
  const std::string file = kFolder + "/echo.so";
  const VexilResult result = ThrowAwayRoot([&file] {
                               MakePlugin(file);
                               Own(KESTREL_TOOL, kToolOwner);
                               Own(file, kToolOwner);
                             })
                                 .WithoutProc()
                                 .Run(kCall);
  EXPECT_THAT(result.err, StartsWith(Skipped(file, Belongs(file, kToolOwner))));
}

// If a trusted file cannot be loaded, root sees the same message of the loader or of libxml2 as a
// user does.

struct BrokenFile {
  const char* name;
  void (*make)(const std::string& file);
};

const BrokenFile kBrokenFiles[] = {
    {"ALinkToNothing", [](const std::string& file) { MakeLink("nothing", file); }},
    {"ALinkToItself", [](const std::string& file) { MakeLink(file, file); }},
    {"ALinkThroughAFile", [](const std::string& file) { MakeLink(file + "/x", file); }},
    {"AFolder", [](const std::string& file) { MakeFolder(file); }},
    {"APipe", [](const std::string& file) { MakePipe(file); }},
    {"AnEmptyFile", [](const std::string& file) { WriteFile(file, ""); }},
    {"AText", [](const std::string& file) { WriteFile(file, std::string(5000, 'x')); }},
    {"ALibraryThatIsNotAPlugin",
     [](const std::string& file) { Move("/samples/helpers/libOriginHelper.so", file); }},
};

class BrokenFileTest : public TrustTest,
                       public ::testing::WithParamInterface<std::tuple<const char*, BrokenFile>> {};

TEST_P(BrokenFileTest, IsReportedForRootAsForAUser) {
  const auto& [suffix, broken] = GetParam();
  const auto prepare = [file = kFolder + "/echo" + suffix, make = broken.make] { make(file); };
  const VexilResult user = ThrowAwayRoot(prepare).As(kCaller, kCaller).Run(kCall);
  const VexilResult root = ThrowAwayRoot(prepare).Run(kCall);
  EXPECT_THAT(user.err, HasSubstr("Error loading plugin " + kFolder));
  EXPECT_EQ(root.err, user.err);
}

INSTANTIATE_TEST_SUITE_P(Files, BrokenFileTest,
                         Combine(Values(".so", ".xml"), ValuesIn(kBrokenFiles)),
                         [](const auto& test) {
                           const std::string suffix = std::get<0>(test.param);
                           return (suffix == ".so" ? "Object" : "Descriptor") +
                                  std::string(std::get<1>(test.param).name);
                         });

TEST_F(TrustTest, AnObjectFindsLibrariesBesideIt) {
  for (const uid_t user : {uid_t{0}, kCaller}) {
    const VexilResult result = ThrowAwayRoot([] {
                                 Move("/samples/OriginPlugin.so", kFolder + "/origin.so");
                                 Move("/samples/helpers", kFolder + "/helpers");
                               })
                                   .As(user, user)
                                   .Run(kCall);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "hello\n");
  }
}

// The first library stays in memory, and its file descriptor is used again for the plug-in.
TEST_F(TrustTest, AnObjectIsLoadedAfterOneThatCannotBeUnloaded) {
  const std::string library = kFolder + "/a.so";
  const VexilResult result = ThrowAwayRoot([&library] {
                               Move("/samples/helpers/libOriginHelper.so", library);
                               MakePlugin(kFolder + "/b.so");
                             }).Run(kCall);
  EXPECT_THAT(result.err, HasSubstr(library + ": undefined symbol: AutoCli_RegisterNamespaces\n"));
  EXPECT_EQ(result.out, "hello\n");
}

}  // namespace

}  // namespace Kestrel::Testing
