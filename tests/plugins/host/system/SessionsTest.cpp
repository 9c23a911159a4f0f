// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Sessions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <utmpx.h>

#include <cstring>
#include <ctime>

#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using Testing::WitnessLines;

// Texts may fill their place, and then have no NUL.
template <std::size_t Size>
void Fill(char (&field)[Size], const std::string& text) {
  std::memcpy(field, text.data(), std::min(text.size(), Size));
}

std::string Record(short type, const std::string& user, const std::string& line,
                   const std::string& host, pid_t process, long start) {
  utmpx record = {};
  record.ut_type = type;
  Fill(record.ut_user, user);
  Fill(record.ut_line, line);
  Fill(record.ut_host, host);
  record.ut_pid = process;
  record.ut_tv.tv_sec = static_cast<decltype(record.ut_tv.tv_sec)>(start);
  return std::string(reinterpret_cast<const char*>(&record), sizeof(record));
}

// The months are those of the C locale, whose words who uses there.
std::string MomentAsWho(std::time_t moment) {
  std::tm parts = {};
  ::localtime_r(&moment, &parts);
  char text[64];
  return std::string(text, std::strftime(text, sizeof(text), "%b %d %H:%M", &parts));
}

// A process number that no kernel gives.
constexpr pid_t kGone = 0x7ffffff0;

TEST(SessionsTest, ReadsTheRecordsOfPeopleAsWhoDoes) {
  const ScopedTempDir folder;
  const std::string path = folder.Write(
      "utmp", Record(BOOT_TIME, "reboot", "~", "6.1", 0, 1700000000) +
                  Record(USER_PROCESS, "anna", "pts/0", "203.0.113.9", kGone, 1700000100) +
                  Record(DEAD_PROCESS, "", "pts/1", "", 78, 1700000200) +
                  Record(USER_PROCESS, "bo", "tty1", "", kGone, 1700000300));
  const auto sessions = ReadSessionRecords(path, false);
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

TEST(SessionsTest, ReadsTextsThatFillTheirPlace) {
  const ScopedTempDir folder;
  const std::string user(sizeof(utmpx::ut_user), 'u');
  const std::string line(sizeof(utmpx::ut_line), 'l');
  const std::string host(sizeof(utmpx::ut_host), 'h');
  const auto sessions =
      ReadSessionRecords(folder.Write("utmp", Record(USER_PROCESS, user, line, host, 1, 0)), false);
  ASSERT_EQ(sessions.size(), 1u);
  EXPECT_EQ(sessions[0].user, user);
  EXPECT_EQ(sessions[0].terminal, line);
  EXPECT_EQ(sessions[0].host, host);
}

TEST(SessionsTest, LeavesOutSessionsWhoseProcessIsGoneWhenTold) {
  const ScopedTempDir folder;
  const std::string path =
      folder.Write("utmp", Record(USER_PROCESS, "gone", "pts/0", "", kGone, 1) +
                               Record(USER_PROCESS, "here", "pts/1", "", ::getpid(), 2) +
                               Record(USER_PROCESS, "odd", "pts/2", "", 0, 3));
  const auto sessions = ReadSessionRecords(path, true);
  ASSERT_EQ(sessions.size(), 1u);
  EXPECT_EQ(sessions[0].user, "here");
}

TEST(SessionsTest, ReadsNothingFromWhatIsNoRecord) {
  const ScopedTempDir folder;
  EXPECT_THAT(ReadSessionRecords(folder.GetPath("absent"), false), IsEmpty());
  EXPECT_THAT(ReadSessionRecords(folder.Write("short", "x"), false), IsEmpty());
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

}  // namespace
}  // namespace Kestrel::Host
