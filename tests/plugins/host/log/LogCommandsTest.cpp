// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/JsonWitness.h"
#include "plugins/host/support/PlainUser.h"
#include "plugins/host/support/Rows.h"
#include "plugins/shell-common/MadeUpTool.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands in the namespace "log".
namespace Kestrel::Testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

Row Line(const std::string& time, const std::string& level, const std::string& levelName,
         const std::string& text, const std::string& source = "a.log") {
  return {{"Time", time},
          {"Level", level},
          {"Level Name", levelName},
          {"Source", source},
          {"Text", text}};
}

std::string Refused(const std::string& path, const Parameters& parameters) {
  const auto errors = CallErrors(path, parameters);
  return errors.size() == 1 ? errors[0] : ::testing::PrintToString(errors);
}

class LogFileListTest : public ::testing::Test {
 protected:
  std::vector<Row> List(Parameters parameters = {}) const {
    parameters.emplace_back("file", path_);
    return CallRows("log list", parameters);
  }

  std::vector<std::string> TextsOf(const std::string& content, Parameters parameters = {}) const {
    parameters.emplace_back("file", folder_.Write("log", content));
    return CallColumn("log list", "Text", parameters);
  }

  const ScopedEnvironment zone_{"TZ", "UTC"};
  const ScopedTempDir folder_;
  const std::string path_ = folder_.Write("a.log",
                                          "no time yet\n"
                                          "2024-01-02 03:04:05 all & <well>\n"
                                          "2024-01-02T03:04:06 disk error\n"
                                          "  more of it\n"
                                          "2024-13-02 no such month, a warning\n"
                                          "2024-03-04 debug me");
  const Row first_ = Line("none", "6", "info", "no time yet");
  const Row well_ = Line("2024-01-02 03:04:05", "6", "info", "2024-01-02 03:04:05 all & <well>");
  const Row error_ = Line("2024-01-02 03:04:06", "3", "err", "2024-01-02T03:04:06 disk error");
  const Row more_ = Line("none", "6", "info", "  more of it");
  const Row month_ = Line("none", "4", "warning", "2024-13-02 no such month, a warning");
  const Row debug_ = Line("2024-03-04 00:00:00", "7", "debug", "2024-03-04 debug me");
};

TEST_F(LogFileListTest, HasEachLineWithItsOwnTime) {
  EXPECT_THAT(List(), ElementsAre(first_, well_, error_, more_, month_, debug_));
}

TEST_F(LogFileListTest, MayBeginAtATime) {
  EXPECT_THAT(List({{"since", "2024-01-02 03:04:06"}}), ElementsAre(error_, more_, month_, debug_));
  EXPECT_THAT(List({{"since", "2024-01-02 03:05"}}), ElementsAre(debug_));
  EXPECT_THAT(List({{"since", "2024-03-04"}}), ElementsAre(debug_));
  EXPECT_THAT(List({{"since", "2024-03-05"}}), IsEmpty());
}

TEST_F(LogFileListTest, MayBeginAtANamedDayOrSomeTimeAgo) {
  const std::string old = Witness("date -d '3 days ago' +'%F %T old'");
  const std::string yesterday = Witness("date -d yesterday +'%F 12:00:00 yesterday'");
  const std::string now = Witness("date +'%F %T now'");
  const std::string content = old + yesterday + now;
  const std::string nowLine = now.substr(0, now.size() - 1);
  EXPECT_THAT(TextsOf(content, {{"since", "-90s"}}), ElementsAre(nowLine));
  EXPECT_THAT(TextsOf(content, {{"since", "yesterday"}}), SizeIs(2));
  EXPECT_THAT(TextsOf(content, {{"since", "-1w"}}), SizeIs(3));
}

TEST_F(LogFileListTest, ShowsTimesInTheZoneOfTheMachine) {
  const std::string content =
      "2026-11-22T10:00:00+05:00 a\n"
      "h - - [22/Nov/2026:10:00:00 +0000] b\n"
      "2026/11/22 10:00:00 [error] c\n"
      "2026-11-22 10:00:00 status installed d\n";
  const std::string path = folder_.Write("b", content);
  EXPECT_THAT(CallColumn("log list", "Time", {{"file", path}}),
              ElementsAre("2026-11-22 05:00:00", "2026-11-22 10:00:00", "2026-11-22 10:00:00",
                          "2026-11-22 10:00:00"));
  const ScopedEnvironment zone("TZ", "America/New_York");
  EXPECT_THAT(CallColumn("log list", "Time", {{"file", path}}),
              ElementsAre("2026-11-22 00:00:00", "2026-11-22 05:00:00", "2026-11-22 10:00:00",
                          "2026-11-22 10:00:00"));
}

TEST_F(LogFileListTest, MayBeChosenByLevel) {
  for (const char* const level : {"3", "err", "ERR", "Error"}) {
    EXPECT_THAT(List({{"level", level}}), ElementsAre(error_)) << level;
  }
  EXPECT_THAT(List({{"level", "warning"}}), ElementsAre(error_, month_));
  EXPECT_THAT(List({{"level", "emerg"}}), IsEmpty());
}

TEST_F(LogFileListTest, MayBeChosenByText) {
  EXPECT_THAT(List({{"match", "^202.*(error|debug)"}}), ElementsAre(error_, debug_));
}

TEST_F(LogFileListTest, HasItsLastLines) {
  EXPECT_THAT(List({{"lines", "2"}}), ElementsAre(month_, debug_));
  EXPECT_THAT(List({{"lines", "1"}, {"level", "err"}}), ElementsAre(error_));
}

TEST_F(LogFileListTest, HasFiftyLinesUnlessANumberOrATimeIsGiven) {
  const std::string path = folder_.GetPath("many");
  Witness("seq -f '2024-01-01 00:00:00 %g' 60 >'" + path + "'");
  EXPECT_EQ(CallColumn("log list", "Text", {{"file", path}}), WitnessLines("tail -50 " + path));
  EXPECT_EQ(CallColumn("log list", "Text", {{"file", path}, {"lines", "55"}}),
            WitnessLines("tail -55 " + path));
  EXPECT_THAT(CallRows("log list", {{"file", path}, {"since", "2024-01-01"}}), SizeIs(60));
}

TEST_F(LogFileListTest, EscapesWhatCouldControlATerminal) {
  const std::string data("\0<\r>\n\x1B[1m\xC3\xA4\xFF\tx\n\n", 16);
  EXPECT_THAT(TextsOf(data), ElementsAre("\\x00<\\x0d>", "\\x1b[1m\xC3\xA4\\xff\\x09x", ""));
}

TEST_F(LogFileListTest, MayBeEmpty) {
  EXPECT_THAT(TextsOf(""), IsEmpty());
  EXPECT_THAT(TextsOf("", {{"since", "today"}}), IsEmpty());
}

TEST_F(LogFileListTest, TakesAnyPath) {
  folder_.Write("it's \"a\" {log}\n*", "odd\n");
  const std::string before = Witness("pwd");
  ASSERT_EQ(::chdir(folder_.GetPath().c_str()), 0);
  EXPECT_THAT(CallColumn("log list", "Text", {{"file", "it's \"a\" {log}\n*"}}),
              ElementsAre("odd"));
  EXPECT_THAT(CallColumn("log list", "Text", {{"file", "./it's \"a\" {log}\n*"}}),
              ElementsAre("odd"));
  EXPECT_THAT(CallColumn("log list", "Source", {{"file", "./it's \"a\" {log}\n*"}}),
              ElementsAre("it's \"a\" {log}\\x0a*"));
  ASSERT_EQ(::chdir(before.substr(0, before.size() - 1).c_str()), 0);
}

TEST_F(LogFileListTest, ReportsWhatCannotBeRead) {
  const std::string absent = folder_.GetPath("absent");
  EXPECT_EQ(Refused("log list", {{"file", absent}}),
            "Unable to read " + absent + ": No such file or directory");
  EXPECT_EQ(Refused("log list", {{"file", folder_.GetPath()}}),
            "Unable to read " + folder_.GetPath() + ": Is a directory");
  EXPECT_EQ(Refused("log list", {{"file", "/dev/zero"}}),
            "Unable to read /dev/zero: Not a regular file");
  const std::string pipe = folder_.GetPath("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(Refused("log list", {{"file", pipe}}),
            "Unable to read " + pipe + ": Not a regular file");
}

TEST_F(LogFileListTest, ReportsAFileThatMayNotBeRead) {
  ASSERT_EQ(::chmod(folder_.GetPath().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(path_.c_str(), 0600), 0);
  const PlainUser user;
  if (::access(path_.c_str(), R_OK) == 0 && ::geteuid() == ::getuid()) {
    GTEST_SKIP() << "The file belongs to the user";
  }
  EXPECT_EQ(Refused("log list", {{"file", path_}}),
            "Unable to read " + path_ + ": Permission denied");
}

TEST_F(LogFileListTest, ReportsMistakes) {
  EXPECT_EQ(Refused("log list", {{"file", path_}, {"unit", "ssh"}}),
            "--unit and --file exclude each other: a file has no units");
  EXPECT_THAT(Refused("log list", {{"file", path_}, {"since", "2024-02-30"}}),
              StartsWith("There is no such time: '2024-02-30'; --since is today, yesterday, "));
  EXPECT_THAT(Refused("log list", {{"file", path_}, {"level", "loud"}}),
              StartsWith("There is no such level: 'loud'; --level is emerg, alert, "));
  EXPECT_THAT(Refused("log list", {{"file", path_}, {"match", "("}}),
              HasSubstr("'(' is not a regular expression"));
  EXPECT_THAT(Refused("log list", {{"file", path_}, {"lines", "0"}}), HasSubstr("lines"));
}

TEST_F(LogFileListTest, ReportsAllMistakesTogether) {
  EXPECT_THAT(
      CallErrors(
          "log list",
          {{"file", path_}, {"unit", "ssh"}, {"since", "soon"}, {"level", "loud"}, {"match", "["}}),
      ElementsAre(HasSubstr("'soon'"), HasSubstr("'loud'"), HasSubstr("'['"),
                  HasSubstr("--unit and --file")));
  EXPECT_THAT(CallErrors("log kernel list", {{"since", "soon"}, {"level", "loud"}, {"match", "["}}),
              ElementsAre(HasSubstr("'soon'"), HasSubstr("'loud'"), HasSubstr("'['")));
}

TEST_F(LogFileListTest, ReportsThatNoLineHasATime) {
  const std::string path = folder_.Write("b", "a\nb\n");
  EXPECT_EQ(Refused("log list", {{"file", path}, {"since", "today"}}),
            "No line has a recognizable time, so lines cannot be selected by time");
}

// A log that is as long as one of several months. Only its end is read.
TEST_F(LogFileListTest, ReadsTheEndOfALongLogImmediately) {
  const std::string path = folder_.GetPath("long");
  Witness(
      "seq -f '2024-01-01 00:00:00 host program[123]: message number %.0f of a log that is long"
      ", and longer' 180000 >'" +
      path + "'");
  const auto expected = WitnessLines("tail -5 '" + path + "'");
  // Takes the best of several runs, so that other programs do not affect the result.
  auto best = std::chrono::steady_clock::duration::max();
  for (int run = 0; run < 5; ++run) {
    const auto start = std::chrono::steady_clock::now();
    const auto texts = CallColumn("log list", "Text", {{"file", path}, {"lines", "5"}});
    best = std::min(best, std::chrono::steady_clock::now() - start);
    EXPECT_EQ(texts, expected);
  }
  EXPECT_LT(best, std::chrono::milliseconds(50));
}

// ---- the journal

std::string ExportedEntry(const std::string& fields) {
  return "__REALTIME_TIMESTAMP=1700000000123456\n" + fields + "\n";
}

TEST(LogJournalListTest, ReversesTheOrderOfJournalctl) {
  const ScopedEnvironment zone("TZ", "UTC");
  const ScopedTempDir folder;
  const std::string output =
      folder.Write("output", ExportedEntry("PRIORITY=3\nSYSLOG_IDENTIFIER=cron\nMESSAGE=new\n") +
                                 ExportedEntry("MESSAGE=old\x1B\n"));
  const MadeUpTool journalctl("journalctl", "cat '" + output + "'\n");
  EXPECT_THAT(CallRows("log list"),
              ElementsAre(Line("2023-11-14 22:13:20", "6", "info", "old\\x1b", "unknown"),
                          Line("2023-11-14 22:13:20", "3", "err", "new", "cron")));
}

TEST(LogJournalListTest, ReportsWhatJournalctlReports) {
  const MadeUpTool journalctl("journalctl", "echo 'Broken journal' >&2; exit 1\n");
  EXPECT_EQ(Refused("log list", {}), "journalctl failed: Broken journal");
}

TEST(LogJournalListTest, ReportsAnUnknownUnit) {
  const MadeUpTool journalctl("journalctl", "exit 0\n");
  const MadeUpTool systemctl("systemctl", "echo not-found\n");
  EXPECT_EQ(Refused("log list", {{"unit", "nosuch"}}),
            "Neither the journal nor systemctl knows the unit nosuch");
}

TEST(LogJournalListTest, HasTheTimesThatJournalctlShows) {
  const std::string show =
      "journalctl --quiet --no-pager --lines=20 --output=short-unix 2>/dev/null";
  const std::string seconds = " | grep -o '^[0-9]*' || true";
  std::vector<std::string> times;
  std::vector<std::string> expected;
  do {
    expected = WitnessLines(show + seconds);
    if (expected.empty()) {
      GTEST_SKIP() << "This machine has no journal";
    }
    times = CallColumn("log list", "Time", {{"lines", "20"}});
  } while (WitnessLines(show + seconds) != expected);
  for (std::string& second : expected) {
    second = Witness("date -d @" + second + " +'%F %T'");
    second.pop_back();
  }
  EXPECT_EQ(times, expected);
}

// ---- the kernel

bool IsKernelLogReadable() {
  const int log = ::open("/dev/kmsg", O_RDONLY | O_CLOEXEC);
  return log >= 0 && ::close(log) == 0;
}

std::vector<Row> DmesgRows() {
  const Json log = JsonWitness("dmesg --json --decode");
  std::vector<Row> rows;
  for (const auto& [key, message] : log.get_child("dmesg")) {
    const std::string level = MemberText(message, "pri");
    rows.push_back({{"Facility", MemberText(message, "fac")},
                    {"Level Name", level == "warn" ? "warning" : level},
                    {"Text", Shown(MemberText(message, "msg"))}});
  }
  return rows;
}

// The messages that the command lists, without empty ones: dmesg leaves them out of JSON.
std::vector<Row> KernelRows() {
  std::vector<Row> rows = OnlyFields(CallRows("log kernel list", {{"lines", "100000"}}),
                                     {"Facility", "Level Name", "Text"});
  rows.erase(std::remove_if(rows.begin(), rows.end(),
                            [](const Row& row) { return row.at("Text").empty(); }),
             rows.end());
  return rows;
}

TEST(LogKernelListTest, HasTheMessagesThatDmesgHas) {
  if (!IsKernelLogReadable()) {
    GTEST_SKIP() << "The kernel's log may not be read here";
  }
  const Agreement agreement = Compare(KernelRows, DmesgRows);
  EXPECT_EQ(agreement.command, agreement.witness);
}

// Compares the time of the first message. The two times may differ slightly, because the programs
// read the clock at different moments.
TEST(LogKernelListTest, HasTheTimeOfTheFirstMessageThatDmesgHas) {
  if (!IsKernelLogReadable()) {
    GTEST_SKIP() << "The kernel's log may not be read here";
  }
  const ScopedEnvironment zone("TZ", "UTC");
  const auto rows = CallRows("log kernel list", {{"lines", "1"}, {"match", "^Linux version "}});
  if (rows.empty()) {
    GTEST_SKIP() << "The kernel's first message was overwritten";
  }
  const std::string time =
      Witness("dmesg --time-format iso | sed -n '/ Linux version /{s/,.*//;p;q}'");
  const std::string seconds = Witness("date +%s -d '" + rows[0].at("Time") + "'");
  EXPECT_NEAR(std::stod(seconds), std::stod(Witness("date +%s -d '" + time + "'")), 2);
}

TEST(LogKernelListTest, SelectsMessagesByCountTextTimeAndLevel) {
  if (!IsKernelLogReadable()) {
    GTEST_SKIP() << "The kernel's log may not be read here";
  }
  const auto all = CallRows("log kernel list", {{"lines", "100000"}});
  ASSERT_FALSE(all.empty());
  EXPECT_THAT(CallRows("log kernel list", {{"lines", "1"}}), SizeIs(1));
  EXPECT_THAT(CallRows("log kernel list", {{"match", "no message has this text"}}), IsEmpty());
  // The kernel may log another message between the two calls.
  EXPECT_GE(CallRows("log kernel list", {{"since", "2000-01-01"}}).size(), all.size());
  EXPECT_THAT(CallRows("log kernel list", {{"since", "9999-01-01"}}), IsEmpty());
  EXPECT_THAT(CallColumn("log kernel list", "Level", {{"level", "notice"}}),
              Each(::testing::AnyOf("0", "1", "2", "3", "4", "5")));
}

TEST(LogKernelListTest, ReportsThatAPlainUserMayNotReadIt) {
  const PlainUser user;
  if (IsKernelLogReadable()) {
    GTEST_SKIP() << "Everybody may read the kernel's log here";
  }
  EXPECT_THAT(Refused("log kernel list", {}), StartsWith("Unable to read /dev/kmsg: "));
}

}  // namespace
}  // namespace Kestrel::Testing
