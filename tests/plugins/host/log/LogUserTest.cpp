// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/HostRun.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// Logs from the user's view: which lines are listed, what is printed, and what is reported.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class LogUserTest : public ::testing::Test {
 protected:
  std::vector<std::string> Column(const char* field, const std::string& content,
                                  Parameters parameters = {}) const {
    parameters.emplace_back("file", folder_.Write("x.log", content));
    return CallColumn("log list", field, parameters);
  }

  std::vector<std::string> Texts(const std::string& content, Parameters parameters = {}) const {
    return Column("Text", content, std::move(parameters));
  }

  const ScopedEnvironment zone_{"TZ", "UTC"};
  const ScopedTempDir folder_;
};

// ---- selection of lines

TEST_F(LogUserTest, WithSinceTheNumberOfLinesIsNotLimited) {
  const std::string path = folder_.GetPath("many");
  Witness("yes '2024-01-02 03:04:05 line' | head -n 120000 >'" + path + "'");
  EXPECT_THAT(CallColumn("log list", "Level", {{"file", path}, {"since", "2024-01-01"}}),
              SizeIs(120000));
}

TEST_F(LogUserTest, LimitsTheNumberOfLinesAfterAllOtherFilters) {
  std::string content;
  for (int minute = 10; minute < 60; ++minute) {
    const std::string stamp = "2024-01-02 03:" + std::to_string(minute) + ":00 ";
    content += stamp + (minute % 2 == 0 ? "error" : "fine") + "\n";
  }
  EXPECT_THAT(Column("Time", content, {{"level", "err"}, {"lines", "2"}}),
              ElementsAre("2024-01-02 03:56:00", "2024-01-02 03:58:00"));
  EXPECT_THAT(Column("Time", content, {{"match", "fine"}, {"lines", "2"}}),
              ElementsAre("2024-01-02 03:57:00", "2024-01-02 03:59:00"));
  EXPECT_THAT(Texts(content, {{"match", "fine"}, {"level", "err"}}), IsEmpty());
  EXPECT_THAT(Texts(content, {{"since", "2024-01-02 03:50"}, {"level", "err"}}), SizeIs(5));
  EXPECT_THAT(Texts(content, {{"since", "2024-01-02 03:50"}, {"lines", "3"}}), SizeIs(3));
}

TEST_F(LogUserTest, TheLimitKeepsTheFirstRowsAfterSorting) {
  const std::string content = "b error\na debug\nc warning\n";
  EXPECT_THAT(Texts(content, {{"sort", "Text"}}), ElementsAre("a debug", "b error", "c warning"));
  EXPECT_THAT(Texts(content, {{"sort", "Level"}, {"descending", ""}, {"limit", "1"}}),
              ElementsAre("a debug"));
  EXPECT_THAT(Texts(content, {{"lines", "2"}, {"sort", "Level"}, {"limit", "1"}}),
              ElementsAre("c warning"));
}

TEST_F(LogUserTest, ALevelIsAWordInAnyCaseOrItsNumber) {
  const std::string content =
      "emerg\nalert\ncritical\nan error\na warning\na notice\nplain\ndebug\n";
  const std::vector<std::string> all = {"emerg",     "alert",    "critical", "an error",
                                        "a warning", "a notice", "plain",    "debug"};
  const std::vector<std::vector<std::string>> names = {
      {"0", "emerg", "EMERG", "Emergency", "panic"},
      {"1", "alert", "Alert"},
      {"2", "crit", "CRIT", "critical"},
      {"3", "err", "ERR", "error", "Error"},
      {"4", "warning", "warn", "WARN"},
      {"5", "notice", "Notice"},
      {"6", "info", "INFO", "informational"},
      {"7", "debug", "DEBUG"}};
  for (std::size_t level = 0; level < names.size(); ++level) {
    const std::vector<std::string> expected(all.begin(),
                                            all.begin() + static_cast<std::ptrdiff_t>(level) + 1);
    for (const std::string& name : names[level]) {
      EXPECT_THAT(Texts(content, {{"level", name}}), ElementsAreArray(expected)) << name;
    }
  }
}

// When lines are selected by time, a line without a time is treated like the line before it.
TEST_F(LogUserTest, ATraceStaysWithItsLine) {
  const std::string content =
      "2024-01-01 00:00:00 old failure\n"
      "Traceback:\n"
      "  of the old one\n"
      "2024-01-03 00:00:00 new failure\n"
      "Traceback:\n"
      "  of the new one\n"
      "\n"
      "2024-01-02 00:00:00 from the middle\n"
      "  of the middle\n";
  EXPECT_THAT(Texts(content, {{"since", "2024-01-03"}}),
              ElementsAre("2024-01-03 00:00:00 new failure", "Traceback:", "  of the new one", ""));
  EXPECT_THAT(Texts(content, {{"since", "2024-01-02"}}), SizeIs(6));
  EXPECT_THAT(Column("Time", content, {{"since", "2024-01-03"}}),
              ElementsAre("2024-01-03 00:00:00", "none", "none", "none"));
  EXPECT_THAT(Texts(content, {{"since", "2024-01-03"}, {"lines", "2"}}),
              ElementsAre("  of the new one", ""));
  EXPECT_THAT(Texts(content, {{"since", "2024-01-03"}, {"match", "one"}}),
              ElementsAre("  of the new one"));
}

// One line in each of many styles, all written at 10:00 UTC.
TEST_F(LogUserTest, LinesOfManyProgramsAreUnderstoodInOneFile) {
  const std::string content =
      "Nov 22 10:00:00 host sshd[1]: syslog\n"
      "2024-11-22T10:00:00.123456+00:00 host sshd[1]: syslog\n"
      "<34>1 2024-11-22T10:00:00Z host app - - - protocol\n"
      "2024-11-22T15:30:00+05:30 iso\n"
      "2024-11-22 05:00:00-0500 iso\n"
      "h - - [22/Nov/2024:11:00:00 +0100] \"GET / HTTP/1.1\" 200 1\n"
      "2024/11/22 10:00:00 [error] 7#7: *1 web server\n"
      "2024-11-22 10:00:00 status installed base-files:amd64 12\n"
      "[Fri Nov 22 10:00:00.123456 2024] [core:notice] [pid 1] web server\n"
      "2024-11-22 10:00:00,123 INFO program\n"
      "Start-Date: 2024-11-22  10:00:00\n"
      "time=\"2024-11-22T10:00:00Z\" level=info msg=x\n"
      "[2024-11-22T10:00:00.000+0000] x\n"
      "2024-11-22 10:00:00.000 UTC [1] LOG:  data base\n";
  auto times = Column("Time", content);
  ASSERT_THAT(times, SizeIs(14));
  EXPECT_THAT(times.front(), ::testing::EndsWith("-11-22 10:00:00"));  // its line has no year
  times.erase(times.begin());
  EXPECT_THAT(times, ::testing::Each("2024-11-22 10:00:00"));
}

// ---- independent of the time zone

class LogZoneUserTest : public LogUserTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(LogZoneUserTest, ATimeSelectsTheSameLinesInEveryZone) {
  const ScopedEnvironment zone("TZ", std::string(GetParam()));
  const std::string content =
      "2026-03-29T00:30:00Z a\n2026-03-29T01:30:00Z b\n2026-03-29T02:30:00Z c\n"
      "2026-10-25T00:30:00Z d\n2026-10-25T01:30:00Z e\n2026-10-25T02:30:00Z f\n";
  const std::vector<std::string> letters = {"a", "b", "c", "d", "e", "f"};
  const std::vector<std::string> moments = {"2026-03-29T00:30:00Z",     "2026-03-29 02:30:00+01:00",
                                            "2026-03-29T02:30Z",        "2026-10-25 02:30:00+02:00",
                                            "2026-10-25T02:30:00+0100", "2026-10-25T02:30:00+00"};
  for (std::size_t index = 0; index < moments.size(); ++index) {
    const auto lines = Texts(content, {{"since", moments[index]}});
    ASSERT_EQ(lines.size(), letters.size() - index) << moments[index];
    EXPECT_EQ(lines.front().back(), letters[index][0]) << moments[index];
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, LogZoneUserTest,
                         ::testing::Values("UTC", "Europe/Berlin", "America/New_York",
                                           "Asia/Kathmandu", "Australia/Lord_Howe",
                                           "Pacific/Kiritimati"),
                         [](const auto& zone) {
                           std::string name = zone.param;
                           name.erase(std::remove_if(name.begin(), name.end(),
                                                     [](char c) { return c == '/' || c == '_'; }),
                                      name.end());
                           return name;
                         });

TEST_F(LogUserTest, TextIsChangedOnlyToProtectTheTerminal) {
  constexpr char kRaw[] =
      "a\r\n\x1b[31mred\n\xc3\xa9\n\xff\n\0\n\x7f\xc2\x9b"
      "31m\n";
  const std::string content(kRaw, sizeof(kRaw) - 1);
  EXPECT_THAT(Texts(content), ElementsAre("a\\x0d", "\\x1b[31mred", "\xc3\xa9", "\\xff", "\\x00",
                                          "\\x7f\\xc2\\x9b31m"));
}

TEST_F(LogUserTest, AGiganticLineIsShownWhole) {
  const std::string line(3000000, 'x');
  const auto texts = Texts("before\n" + line + "\nafter");
  ASSERT_THAT(texts, SizeIs(3));
  EXPECT_TRUE(texts[1] == line);
}

TEST_F(LogUserTest, TheLevelOfAGiganticLineIsThatOfItsWords) {
  EXPECT_THAT(Column("Level Name", std::string(2000000, ' ') + "error\n"), ElementsAre("err"));
  EXPECT_THAT(Column("Level Name", std::string(2000000, 'e') + "rror\n"), ElementsAre("info"));
}

// ---- the tool

TEST_F(LogUserTest, ThePathIsUsedUnchanged) {
  for (const char* const name :
       {"a b", "it's", "\"q\"", "$(id)", "`id`", "*", "[a]", "a\nb", "-f", "--help", "\xc3\xa4",
        "\xff", "%s", "{x}", "a,b", "a;b", "a|b", "\\", "~"}) {
    const std::string path = folder_.Write(name, "text\n");
    const VexilResult result =
        HostRun({"--formatter", "json", "log", "list", "--file=" + path}).Run();
    EXPECT_EQ(result.err, "") << name;
    EXPECT_EQ(result.status, 0) << name;
    EXPECT_THAT(result.out, HasSubstr("\"Text\": \"text\"")) << name;
  }
}

struct WidthCase {
  const char* width;
  const char* table;
};

TEST_F(LogUserTest, TheTextWrapsOnANarrowScreen) {
  const std::string path =
      folder_.Write("s.log", "2024-01-02 03:04:05 one two three four five six seven eight\n");
  const WidthCase cases[] = {
      {"--screen-width=200",
       "Time                 Source  Text\n"
       "-------------------  ------  ----\n"
       "2024-01-02 03:04:05  s.log   2024-01-02 03:04:05 one two three four five six seven "
       "eight\n"},
      {"--screen-width=60",
       "Time                 Source  Text\n"
       "-------------------  ------  ----\n"
       "2024-01-02 03:04:05  s.log   2024-01-02 03:04:05 one two \n"
       "                             three four five six seven \n"
       "                             eight\n"},
  };
  for (const WidthCase& each : cases) {
    const VexilResult result = HostRun({each.width, "log", "list", "--file", path}).Run();
    EXPECT_EQ(result.out, each.table);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
  }
}

struct MistakeCase {
  std::vector<std::string> arguments;
  std::string message;
};

TEST_F(LogUserTest, MistakesAreMessagesWithoutAPrefix) {
  const std::string path = folder_.Write("x.log", "plain\n");
  const MistakeCase cases[] = {
      {{"log", "list", "--file", path, "--unit", "ssh"},
       "--unit and --file exclude each other: a file has no units\n"},
      {{"log", "list", "--file", path, "--since", "today"},
       "No line has a recognizable time, so lines cannot be selected by time\n"},
      {{"log", "list", "--file", path, "--since", "2h"},
       "There is no such time: '2h'; --since is today, yesterday, now, -90s, -30m, -2h, -7d, -2w, "
       "2026-11-01 or \"2026-11-01 10:00\"\n"},
      {{"log", "list", "--file", path, "--level", "8"},
       "There is no such level: '8'; --level is emerg, alert, crit, err, warning, notice, info, "
       "debug or a number from 0 to 7\n"},
      {{"log", "list", "--file", folder_.GetPath("no")},
       "Unable to read " + folder_.GetPath("no") + ": No such file or directory\n"},
      {{"log", "list", "--file", folder_.GetPath()},
       "Unable to read " + folder_.GetPath() + ": Is a directory\n"},
      {{"log", "list", "--file", path, "--sort", "text"},
       "There is no field 'text' to sort by. Sort by one of: Level, Level Name, Source, Text, "
       "Time.\n"},
      {{"log", "list", "--file", path, "--descending"},
       "--descending needs --sort with the name of a field.\n"},
  };
  for (const MistakeCase& each : cases) {
    const VexilResult result = HostRun(each.arguments).Run();
    EXPECT_EQ(result.out, "") << each.message;
    EXPECT_EQ(result.err, "Errors: \n" + each.message);
    EXPECT_EQ(result.status, 1) << each.message;
  }
}

TEST_F(LogUserTest, EveryFieldHasAValueInEveryRow) {
  for (const Row& row : CallRows("log list", {{"file", folder_.Write("y", "a\n[  1.5] b\n")}})) {
    EXPECT_THAT(row, SizeIs(5));
    for (const auto& [field, text] : row) {
      EXPECT_NE(text, "") << field;
    }
  }
}

}  // namespace
}  // namespace Kestrel::Testing
