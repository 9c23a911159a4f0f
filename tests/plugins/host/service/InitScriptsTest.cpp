// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/InitScripts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Lt;
using ::testing::ThrowsMessage;

class InitScriptsTest : public ::testing::Test {
 protected:
  InitScriptsTest() { files_.MakeDirectory("init.d"); }

  // Adds a script, which is executable unless `mode` says otherwise.
  void Add(const std::string& name, const std::string& text, mode_t mode = 0755) const {
    const std::string path = files_.Write("init.d/" + name, "#!/bin/sh\n" + text + "\n");
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
  }

  void Link(const std::string& link) const {
    files_.MakeDirectory(link.substr(0, link.rfind('/')));
    ASSERT_EQ(::symlink("../init.d/x", files_.GetPath(link).c_str()), 0);
  }

  std::string Folder() const { return files_.GetPath("init.d"); }
  std::vector<Service> Read() const { return InitScripts(Folder()).Read(); }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const Service& service : Read()) {
      names.push_back(service.name);
    }
    return names;
  }

  std::string StateOf(const std::string& script) const {
    Add("each", script);
    return InitScripts(Folder()).Read("each")->service.state;
  }

  std::string DescriptionOf(const std::string& head) const {
    Add("each", head);
    return InitScripts(Folder()).Read("each")->service.description;
  }

  const Testing::ScopedTempDir files_;
};

TEST_F(InitScriptsTest, AreServices) {
  Add("cron",
      "### BEGIN INIT INFO\n# Provides:          cron\n"
      "# Short-Description:  Regular background & <more>\tnow \n"
      "# Short-Description: no\n### END INIT INFO\n[ \"$1\" = status ]");
  const auto services = Read();
  ASSERT_EQ(services.size(), 1u);
  EXPECT_EQ(services[0].name, "cron");
  EXPECT_EQ(services[0].state, "running");
  EXPECT_EQ(services[0].subState, "");
  EXPECT_EQ(services[0].bootState, "disabled");
  EXPECT_EQ(services[0].source, kInitScripts);
  EXPECT_EQ(services[0].description, "Regular background & <more>\tnow");
}

TEST_F(InitScriptsTest, AreInTheOrderOfTheirNames) {
  for (const char* const name : {"b", "a", "B", "a-b", "odd\nname"}) {
    Add(name, "");
  }
  EXPECT_THAT(Names(), ElementsAre("B", "a", "a-b", "b", "odd\nname"));
}

TEST_F(InitScriptsTest, AreExecutableFiles) {
  Add("plain", "echo status", 0644);
  Add("script", "");
  files_.MakeDirectory("init.d/folder");
  Link("init.d/dangling");
  EXPECT_THAT(Names(), ElementsAre("script"));
}

TEST_F(InitScriptsTest, DoNotIncludeHiddenFilesAndFilesThatDpkgSetsAside) {
  Add("ssh.dpkg-old", "");
  Add("ssh.dpkg-dist", "");
  Add(".hidden", "");
  Add("ssh", "");
  EXPECT_THAT(Names(), ElementsAre("ssh"));
  EXPECT_FALSE(InitScripts(Folder()).Read("ssh.dpkg-old").has_value());
}

// The Linux Standard Base defines these states. A script is asked for its state only if it contains
// the word "status".
TEST_F(InitScriptsTest, ReportTheirStateByTheExitStatus) {
  EXPECT_EQ(StateOf("exit 0 # status"), "running");
  EXPECT_EQ(StateOf("exit 1 # status"), "failed");
  EXPECT_EQ(StateOf("exit 2 # status"), "failed");
  EXPECT_EQ(StateOf("exit 3 # status"), "stopped");
  EXPECT_EQ(StateOf("exit 4 # status"), "unknown");
  EXPECT_EQ(StateOf("exit 255 # status"), "unknown");
  EXPECT_EQ(StateOf("kill -KILL $$ # status"), "unknown");
}

TEST_F(InitScriptsTest, AreAskedForTheirStatusOnly) {
  Add("a", "echo \"$# $*\" >>'" + files_.GetPath("words") + "' # status");
  Read();
  EXPECT_EQ(files_.Read("words"), "1 status\n");
}

// A script that does not know "status" could treat it as another word, such as "start".
TEST_F(InitScriptsTest, AreNotAskedWhenTheyDoNotKnowTheWord) {
  Add("silent", "touch '" + files_.GetPath("touched") + "'");
  EXPECT_EQ(Read().at(0).state, "unknown");
  EXPECT_NE(::access(files_.GetPath("touched").c_str(), F_OK), 0);
}

TEST_F(InitScriptsTest, HaveAnEmptyStandardInput) {
  EXPECT_EQ(StateOf("[ \"$1\" = status ] && [ -z \"$(cat)\" ]"), "running");
}

TEST_F(InitScriptsTest, HaveAnUnknownStateIfTheyCannotBeRun) {
  Add("each", "");
  files_.Write("init.d/each", "#!/nosuch/shell\n# status\n");
  EXPECT_EQ(Read().at(0).state, "unknown");
}

TEST_F(InitScriptsTest, AreNotAwaitedForever) {
  Add("slow", "sleep 60 # status");
  Add("well", "exit 0 # status");
  const auto start = std::chrono::steady_clock::now();
  const auto services = InitScripts(Folder(), std::chrono::milliseconds(200)).Read();
  EXPECT_THAT(std::chrono::steady_clock::now() - start, Lt(std::chrono::seconds(20)));
  ASSERT_EQ(services.size(), 2u);
  EXPECT_EQ(services[0].state, "unknown");
  EXPECT_EQ(services[1].state, "running");
}

TEST_F(InitScriptsTest, StartWithTheMachineIfLinksSaySo) {
  for (const char* const name : {"both", "early", "kill", "late", "none"}) {
    Add(name, "");
  }
  Link("rc2.d/S01both");
  Link("rc0.d/K01both");
  Link("rcS.d/S02early");
  Link("rc5.d/S99late");
  Link("rc2.d/K01kill");
  Link("rc6.d/S01none");
  Link("rc2.d/S01");
  std::vector<std::string> started;
  for (const Service& service : Read()) {
    if (service.bootState == "enabled") {
      started.push_back(service.name);
    } else {
      EXPECT_EQ(service.bootState, "disabled") << service.name;
    }
  }
  EXPECT_THAT(started, ElementsAre("both", "early", "late"));
}

TEST_F(InitScriptsTest, NeedNotDescribeThemselves) {
  EXPECT_EQ(DescriptionOf("echo"), "");
  EXPECT_EQ(DescriptionOf("# Short-Description:"), "");
  EXPECT_EQ(DescriptionOf("echo '# Short-Description: no'"), "");
  EXPECT_EQ(DescriptionOf("# Short-Description:yes"), "yes");
}

TEST_F(InitScriptsTest, MayBeAbsent) { EXPECT_THAT(Read(), IsEmpty()); }

TEST_F(InitScriptsTest, MayLackTheirFolder) {
  EXPECT_THAT(InitScripts(files_.GetPath("nosuch")).Read(), IsEmpty());
}

TEST_F(InitScriptsTest, AreAnErrorWhenTheFolderCannotBeRead) {
  ASSERT_EQ(::chmod(files_.GetPath().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(Folder().c_str(), 0700), 0);
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can become another user";
  }
  const Testing::PlainUser user;
  EXPECT_THAT([this] { Read(); }, ThrowsMessage<KestrelException>("Unable to read " + Folder() +
                                                                  ": Permission denied"));
}

// ---- a single script

TEST_F(InitScriptsTest, HaveDetails) {
  Add("ssh", "# Short-Description: Remote logins\nexit 3 # status");
  Link("rc3.d/S01ssh");
  const auto ssh = InitScripts(Folder()).Read("ssh");
  ASSERT_TRUE(ssh.has_value());
  EXPECT_EQ(ssh->service.name, "ssh");
  EXPECT_EQ(ssh->service.state, "stopped");
  EXPECT_EQ(ssh->service.bootState, "enabled");
  EXPECT_EQ(ssh->service.description, "Remote logins");
  EXPECT_EQ(ssh->file, Folder() + "/ssh");
  EXPECT_EQ(ssh->loadState, "");
  EXPECT_EQ(ssh->mainProcess, 0);
  EXPECT_EQ(ssh->since, "");
  EXPECT_EQ(ssh->memoryBytes, std::nullopt);
}

TEST_F(InitScriptsTest, AreNotRunWhenAnotherOneIsRequested) {
  Add("a", "exit 0 # status");
  Add("b", "touch '" + files_.GetPath("touched") + "' # status");
  EXPECT_TRUE(InitScripts(Folder()).Read("a").has_value());
  EXPECT_NE(::access(files_.GetPath("touched").c_str(), F_OK), 0);
}

TEST_F(InitScriptsTest, AreFoundOnlyByTheirNamesInTheFolder) {
  Add("a", "");
  files_.MakeDirectory("init.d/sub");
  files_.Write("outside", "#!/bin/sh\n");
  ASSERT_EQ(::chmod(files_.GetPath("outside").c_str(), 0755), 0);
  for (const char* const name : {"", ".", "..", "sub", "../outside", "./a", "/bin/sh", "A"}) {
    EXPECT_FALSE(InitScripts(Folder()).Read(name).has_value()) << name;
  }
}

// ---- changes

TEST_F(InitScriptsTest, AreRunWithOneWord) {
  Add("a", "echo \"$#: $1\"; echo wrong >&2; exit 7");
  const ProgramResult result = InitScripts(Folder()).Run("a", "restart", std::chrono::seconds(20));
  EXPECT_EQ(result.output, "1: restart\n");
  EXPECT_EQ(result.errorOutput, "wrong\n");
  EXPECT_EQ(result.status, 7);
}

// The server keeps the streams of the script open. If the command waited for the end of these
// streams, the script would seem not to end.
TEST_F(InitScriptsTest, MayLeaveAServerRunning) {
  Add("a", "sleep 30 & echo $! >'" + files_.GetPath("server") + "'; echo started");
  const auto start = std::chrono::steady_clock::now();
  const ProgramResult result = InitScripts(Folder()).Run("a", "start", std::chrono::seconds(25));
  EXPECT_THAT(std::chrono::steady_clock::now() - start, Lt(std::chrono::seconds(20)));
  EXPECT_EQ(result.output, "started\n");
  EXPECT_FALSE(result.isTimedOut);
  const int server = std::stoi(files_.Read("server"));
  EXPECT_EQ(::kill(server, 0), 0) << "the server was ended with the script";
  ::kill(server, SIGKILL);
}

TEST_F(InitScriptsTest, AreKilledWhenTheyTakeTooLong) {
  Add("a", "echo begin; sleep 60; echo end");
  const ProgramResult result =
      InitScripts(Folder()).Run("a", "start", std::chrono::milliseconds(300));
  EXPECT_TRUE(result.isTimedOut);
  EXPECT_EQ(result.output, "begin\n");
}

}  // namespace
}  // namespace Kestrel::Host
