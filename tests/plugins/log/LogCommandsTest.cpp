// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugins/shell-common/DescriptorCall.h"
#include "plugins/shell-common/MadeUpTool.h"
#include "support/Witness.h"

// The commands below "log".
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

Row Line(const std::string& time, const std::string& level, const std::string& text,
         const std::string& source = "a.log") {
  return {{"Time", time}, {"Level", level}, {"Source", source}, {"Text", text}};
}

class LogFileTest : public ::testing::Test {
 protected:
  std::vector<Row> List(Parameters parameters = {}) const {
    parameters.emplace_back("file", path_);
    return CallRows("log list", parameters);
  }

  const ScopedTempDir folder_;
  const std::string path_ = folder_.Write("a.log",
                                          "no time yet\n"
                                          "2024-01-02 03:04:05 all & <well>\n"
                                          "2024-01-02T03:04:06 disk error\tbad\n"
                                          "  more of it\xFF\n"
                                          "2024-13-02 no such month, a warning\n"
                                          "2024-02-30 no such day\n"
                                          "2024-03-04 debug me");
  const Row first_ = Line("", "6", "no time yet");
  const Row well_ = Line("2024-01-02 03:04:05", "6", "2024-01-02 03:04:05 all & <well>");
  const Row error_ = Line("2024-01-02 03:04:06", "3", "2024-01-02T03:04:06 disk error\tbad");
  const Row more_ = Line("2024-01-02 03:04:06", "6", "  more of it\\xff");
  const Row month_ = Line("2024-01-02 03:04:06", "4", "2024-13-02 no such month, a warning");
  const Row day_ = Line("2024-01-02 03:04:06", "6", "2024-02-30 no such day");
  const Row debug_ = Line("2024-03-04 00:00:00", "7", "2024-03-04 debug me");
};

TEST_F(LogFileTest, IsListed) {
  EXPECT_THAT(List(), ElementsAre(first_, well_, error_, more_, month_, day_, debug_));
}

TEST_F(LogFileTest, IsListedFromATimeOn) {
  EXPECT_THAT(List({{"since", "2024-01-02 03:04:06"}}),
              ElementsAre(error_, more_, month_, day_, debug_));
  EXPECT_THAT(List({{"since", "2024-01-02 03:05"}}), ElementsAre(debug_));
  EXPECT_THAT(List({{"since", "2024-03-04"}}), ElementsAre(debug_));
  EXPECT_THAT(List({{"since", "2024-03-05"}}), IsEmpty());
}

TEST_F(LogFileTest, IsListedByLevel) {
  EXPECT_THAT(List({{"level", "3"}}), ElementsAre(error_));
  EXPECT_THAT(List({{"level", "+04"}}), ElementsAre(error_, month_));
  EXPECT_THAT(List({{"level", "0"}}), IsEmpty());
}

TEST_F(LogFileTest, IsListedFromItsEnd) {
  EXPECT_THAT(List({{"lines", "2"}}), ElementsAre(day_, debug_));
  EXPECT_THAT(List({{"lines", " 1"}, {"level", "3"}}), ElementsAre(error_));
}

TEST_F(LogFileTest, HasFiftyLinesWithoutACount) {
  std::string text;
  for (int i = 1; i <= 60; ++i) {
    text += std::to_string(i) + "\n";
  }
  const std::vector<Row> rows = CallRows("log list", {{"file", folder_.Write("b", text)}});
  ASSERT_THAT(rows, SizeIs(50));
  EXPECT_EQ(rows.front().at("Text"), "11");
}

TEST_F(LogFileTest, MayHaveTimesWithoutAYear) {
  const std::string now = Witness("date '+%b %e %H:%M:%S'");
  const std::vector<Row> rows =
      CallRows("log list", {{"file", folder_.Write("c", now)}, {"since", "2000-01-01"}});
  ASSERT_THAT(rows, SizeIs(1));
  EXPECT_EQ(rows[0].at("Time").substr(0, 5), Witness("date +%Y-").substr(0, 5));
}

TEST_F(LogFileTest, MayHoldAnything) {
  const std::string data("\0<\r>\n\x1B[1m\xC3\xA4\n\n", 13);
  EXPECT_THAT(CallColumn("log list", "Text", {{"file", folder_.Write("d", data)}}),
              ElementsAre("\\x00<\r>", "\\x1b[1m\xC3\xA4", ""));
}

TEST_F(LogFileTest, MustBeAFile) {
  EXPECT_THAT(CallErrors("log list", {{"file", folder_.GetPath()}}),
              ElementsAre(folder_.GetPath() + " is no file"));
}

TEST_F(LogFileTest, RefusesATimeThatIsNone) {
  for (const char* const time : {"2024-13-01", "2024-00-01", "2024-02-30", "2024-01-01 24:00"}) {
    EXPECT_THAT(CallErrors("log list", {{"file", path_}, {"since", time}}),
                ElementsAre("There is no such time: " + std::string(time)));
  }
}

// ---- the journal

constexpr char kJournal[] =
    "cat <<'END'\n"
    R"({"__REALTIME_TIMESTAMP":"1700000000123456","PRIORITY":"3","SYSLOG_IDENTIFIER":"cron",)"
    R"("MESSAGE":"say \"PRIORITY\":\"0\" & <b>\n\u001b\\"})"
    "\n"
    R"({ "MESSAGE" : [ 97, 255, 10 ], "__REALTIME_TIMESTAMP" : "1700000001000000" })"
    "\nEND\n";

TEST(JournalTest, IsRead) {
  const ScopedEnvironment zone("TZ", "UTC");
  const MadeUpTool journalctl("journalctl", kJournal);
  EXPECT_THAT(
      CallRows("log list"),
      ElementsAre(Line("2023-11-14 22:13:20", "3", "say \"PRIORITY\":\"0\" & <b>\n\\x1b\\", "cron"),
                  Line("2023-11-14 22:13:21", "6", "a\\xff\n", "")));
}

TEST(JournalTest, IsAskedForWhatTheUserWants) {
  const ScopedTempDir folder;
  const MadeUpTool journalctl("journalctl",
                              "printf '%s\\n' \"$@\" >'" + folder.GetPath("words") + "'\n");
  EXPECT_THAT(
      CallRows(
          "log list",
          {{"unit", "a@b.service"}, {"since", "2024-01-02 03:04"}, {"level", "4"}, {"lines", "7"}}),
      IsEmpty());
  EXPECT_EQ(folder.Read("words"),
            "--no-pager\n--quiet\n--output=json\n"
            "--output-fields=PRIORITY,SYSLOG_IDENTIFIER,MESSAGE\n--lines=7\n--priority=4\n"
            "--unit=a@b.service\n--since=2024-01-02 03:04\n");
}

TEST(JournalTest, MayFailAfterItsFirstLines) {
  const MadeUpTool journalctl("journalctl",
                              std::string(kJournal) + "echo 'Broken journal' >&2; exit 1\n");
  EXPECT_THAT(CallErrors("log list"), ElementsAre("Broken journal"));
}

TEST(JournalTest, MayFailSilently) {
  const MadeUpTool journalctl("journalctl", "exit 1\n");
  EXPECT_THAT(CallErrors("log list"), ElementsAre("journalctl failed"));
}

}  // namespace
}  // namespace Kestrel::Testing
