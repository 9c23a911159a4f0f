// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Sessions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utmpx.h>

#include <cstring>
#include <ctime>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;
using Testing::WitnessLines;

// A string that fills its field has no NUL.
template <std::size_t Size>
void Fill(char (&field)[Size], const std::string& text) {
  std::memcpy(field, text.data(), std::min(text.size(), Size));
}

std::string LoginEntry(short type, const std::string& user, const std::string& line,
                       const std::string& host, pid_t process, long start) {
  utmpx entry = {};
  entry.ut_type = type;
  Fill(entry.ut_user, user);
  Fill(entry.ut_line, line);
  Fill(entry.ut_host, host);
  entry.ut_pid = process;
  entry.ut_tv.tv_sec = static_cast<decltype(entry.ut_tv.tv_sec)>(start);
  return std::string(reinterpret_cast<const char*>(&entry), sizeof(entry));
}

// Formats a time in the format of who(1): "Nov 22 10:00".
std::string MomentAsWho(std::time_t moment) {
  std::tm parts = {};
  ::localtime_r(&moment, &parts);
  char text[64];
  return std::string(text, std::strftime(text, sizeof(text), "%b %d %H:%M", &parts));
}

// A number that no process has.
constexpr pid_t kGone = 0x7ffffff0;

TEST(SessionsTest, ReadsLoginEntriesAsWhoDoes) {
  const ScopedTempDir folder;
  const std::string records =
      LoginEntry(BOOT_TIME, "reboot", "~", "6.1", 0, 1700000000) +
      LoginEntry(USER_PROCESS, "anna", "pts/0", "203.0.113.9", kGone, 1700000100) +
      LoginEntry(DEAD_PROCESS, "", "pts/1", "", 78, 1700000200) +
      LoginEntry(USER_PROCESS, "bo", "tty1", "", kGone, 1700000300);
  const std::string path = folder.Write("utmp", records);
  const auto sessions = ParseSessionRecords(records);
  std::vector<std::string> found;
  for (const Session& session : sessions) {
    found.push_back(session.user + " " + session.terminal + " " + MomentAsWho(session.start) +
                    (session.host.empty() ? "" : " (" + session.host + ")"));
  }
  std::vector<std::string> expected;
  for (const std::string& line : WitnessLines("who --ips " + path)) {
    std::string joined;
    for (const std::string& word : Testing::WordsIn(line)) {
      joined += (joined.empty() ? "" : " ") + word;
    }
    expected.push_back(joined);
  }
  ASSERT_EQ(sessions.size(), 2u);
  EXPECT_EQ(sessions[1].process, kGone);
  EXPECT_EQ(found, expected);
}

TEST(SessionsTest, ReadsStringsThatFillTheirField) {
  const std::string user(sizeof(utmpx::ut_user), 'u');
  const std::string line(sizeof(utmpx::ut_line), 'l');
  const std::string host(sizeof(utmpx::ut_host), 'h');
  const auto sessions = ParseSessionRecords(LoginEntry(USER_PROCESS, user, line, host, 1, 0));
  ASSERT_EQ(sessions.size(), 1u);
  EXPECT_EQ(sessions[0].user, user);
  EXPECT_EQ(sessions[0].terminal, line);
  EXPECT_EQ(sessions[0].host, host);
}

std::vector<std::string> UsersOf(const std::vector<Session>& sessions) {
  std::vector<std::string> users;
  for (const Session& session : sessions) {
    users.push_back(session.user);
  }
  return users;
}

TEST(SessionsTest, ListsByTimeTheSessionsWhoseProcessIsAlive) {
  const ScopedTempDir root;
  root.Write("run/utmp", LoginEntry(USER_PROCESS, "gone", "pts/0", "", kGone, 1) +
                             LoginEntry(USER_PROCESS, "late", "pts/1", "", ::getpid(), 3) +
                             LoginEntry(USER_PROCESS, "early", "pts/1", "", ::getpid(), 2) +
                             LoginEntry(USER_PROCESS, "odd", "pts/2", "", 0, 4));
  root.Write("run/systemd/sessions/1", "USER=unused\nCLASS=user\n");
  EXPECT_THAT(UsersOf(ReadSessions(root.GetPath())), ElementsAre("early", "late"));
}

TEST(SessionsTest, SessionFilesReplaceMissingLoginEntries) {
  const ScopedTempDir root;
  EXPECT_THAT(ReadSessions(root.GetPath()), IsEmpty());
  root.Write("run/systemd/sessions/1", "USER=anna\nCLASS=user\nREALTIME=2000000\n");
  root.Write("run/systemd/sessions/2", "USER=bo\nCLASS=user\nREALTIME=1000000\n");
  EXPECT_THAT(UsersOf(ReadSessions(root.GetPath())), ElementsAre("bo", "anna"));
}

TEST(SessionsTest, ReportsWhatCannotBeRead) {
  for (const char* const hidden : {"run/systemd/sessions/1", "run/systemd/sessions", "run/utmp"}) {
    const ScopedTempDir root;
    ::chmod(root.GetPath().c_str(), 0755);
    root.Write("run/systemd/sessions/1", "USER=anna\nCLASS=user\n");
    if (std::string(hidden) == "run/utmp") {
      root.Write(hidden, "");
    }
    ASSERT_EQ(::chmod(root.GetPath(hidden).c_str(), 0), 0);
    const PlainUser user;
    EXPECT_THAT([&root] { ReadSessions(root.GetPath()); },
                ThrowsMessage<KestrelException>("Unable to read " + root.GetPath(hidden) +
                                                ": Permission denied"));
  }
}

TEST(SessionsTest, ReadsAFolderOfSessions) {
  const ScopedTempDir folder;
  folder.Write("1",
               "# made by the system\nUID=1000\nUSER=anna\nACTIVE=1\nTTY=pts/0\nREMOTE=1\n"
               "REMOTE_HOST=203.0.113.9\nCLASS=user\nLEADER=77\nREALTIME=1700000100999999\n");
  folder.Write("c2", "USER=gdm\nCLASS=greeter\nLEADER=78\n");
  folder.Write("3", "CLASS=user\nLEADER=79\n");
  folder.Write("4", "");
  const auto sessions = ReadSessionFolder(folder.GetPath());
  ASSERT_EQ(sessions.size(), 1u);
  EXPECT_EQ(sessions[0].user, "anna");
  EXPECT_EQ(sessions[0].terminal, "pts/0");
  EXPECT_EQ(sessions[0].host, "203.0.113.9");
  EXPECT_EQ(sessions[0].process, 77);
  EXPECT_EQ(sessions[0].start, 1700000100);
  EXPECT_THAT(ReadSessionFolder(folder.GetPath("absent")), IsEmpty());
}

struct SessionCase {
  const char* name;
  const char* text;
  std::vector<std::string> sessions;
};

// The sessions are in the format "USER TERMINAL HOST PROCESS START".
const SessionCase kSessionFiles[] = {
    {"Complete",
     "USER=anna\nTTY=pts/0\nREMOTE_HOST=h\nCLASS=user\nLEADER=7\nREALTIME=1000000\n",
     {"anna pts/0 h 7 1"}},
    {"WithoutTerminalAndHost",
     "USER=anna\nCLASS=user\nLEADER=7\nREALTIME=1999999\n",
     {"anna   7 1"}},
    {"WithoutNumbers", "USER=anna\nCLASS=user\n", {"anna   0 0"}},
    {"NumbersThatAreWords", "USER=anna\nCLASS=user\nLEADER=x\nREALTIME=y\n", {"anna   0 0"}},
    {"NumbersBeyond64Bits",
     "USER=anna\nCLASS=user\nLEADER=99999999999999999999\nREALTIME=99999999999999999999\n",
     {"anna   0 0"}},
    {"LargestNumbers",
     "USER=anna\nCLASS=user\nLEADER=9223372036854775807\nREALTIME=9223372036854775807\n",
     {"anna   9223372036854775807 9223372036854"}},
    {"QuotedValues", "USER='an na'\nCLASS=\"user\"\n", {"an na   0 0"}},
    {"WithoutUser", "CLASS=user\nTTY=tty1\n", {}},
    {"Greeter", "USER=gdm\nCLASS=greeter\n", {}},
    {"LockScreen", "USER=anna\nCLASS=lock-screen\n", {}},
    {"WithoutClass", "USER=anna\n", {}},
    {"Empty", "", {}},
    {"NoText", "\xff\xfe\n", {}},
};

class SessionFileTest : public ::testing::TestWithParam<SessionCase> {};

TEST_P(SessionFileTest, IsRead) {
  const ScopedTempDir folder;
  folder.Write("1", GetParam().text);
  std::vector<std::string> found;
  for (const Session& session : ReadSessionFolder(folder.GetPath())) {
    found.push_back(session.user + " " + session.terminal + " " + session.host + " " +
                    std::to_string(session.process) + " " + std::to_string(session.start));
  }
  EXPECT_EQ(found, GetParam().sessions);
}

INSTANTIATE_TEST_SUITE_P(Files, SessionFileTest, ::testing::ValuesIn(kSessionFiles),
                         [](const auto& test) { return test.param.name; });

TEST(SessionsTest, SkipsWhatIsNotASession) {
  const ScopedTempDir folder;
  folder.MakeDirectory("1.ref");
  ASSERT_EQ(::mkfifo(folder.GetPath("2.ref").c_str(), 0600), 0);
  folder.Write("2", "USER=anna\nCLASS=user\n");
  EXPECT_EQ(ReadSessionFolder(folder.GetPath()).size(), 1u);
}

TEST(SessionsTest, ReportsAnIncompleteEntry) {
  const std::string records = LoginEntry(USER_PROCESS, "anna", "pts/0", "", kGone, 1) +
                              LoginEntry(USER_PROCESS, "bo", "pts/1", "", kGone, 2);
  EXPECT_EQ(ParseSessionRecords(records).size(), 2u);
  EXPECT_EQ(ParseSessionRecords(records.substr(0, records.size() / 2)).size(), 1u);
  EXPECT_THAT(ParseSessionRecords(""), IsEmpty());
  for (const std::size_t size : {records.size() - 1, records.size() / 2 + 1, std::size_t(1)}) {
    EXPECT_THAT([&] { ParseSessionRecords(records.substr(0, size)); },
                ThrowsMessage<KestrelException>(
                    "Unable to understand the login entries: the last one is incomplete"));
  }
}

}  // namespace
}  // namespace Kestrel::Host
