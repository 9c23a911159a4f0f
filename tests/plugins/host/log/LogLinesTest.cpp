// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::ThrowsMessage;

constexpr std::int64_t kSecond = 1704164645;  // 2024-01-02 03:04:05 in UTC

class LogLinesTest : public ::testing::Test {
 protected:
  std::vector<LogLine> Read(const std::string& text, const LogFilter& filter) const {
    LogFile file(folder_.Write("log", text));
    LogTimeReader times(zone_);
    std::vector<LogLine> lines;
    ForEachLastLine(file, filter, times, [&lines](const FileLine& line) {
      lines.push_back({line.time, line.level, "", std::string(line.text)});
    });
    std::reverse(lines.begin(), lines.end());
    return lines;
  }

  std::vector<std::string> Texts(const std::string& text, const LogFilter& filter) const {
    std::vector<std::string> texts;
    for (const LogLine& line : Read(text, filter)) {
      texts.push_back(line.text);
    }
    return texts;
  }

  static LogFilter Since(std::int64_t since, std::size_t lines = 100) {
    LogFilter filter;
    filter.lines = lines;
    filter.since = since;
    return filter;
  }

  static LogFilter Last(std::size_t lines) {
    LogFilter filter;
    filter.lines = lines;
    return filter;
  }

  const Testing::ScopedEnvironment variable_{"TZ", "UTC"};
  const LocalZone zone_;
  const Testing::ScopedTempDir folder_;
  const std::string log_ =
      "start\n"
      "2024-01-02 03:04:05 one\n"
      "2024-01-02 03:04:06 two error\n"
      " of two\n"
      "of two warning\n"
      "2024-01-02 03:04:07 three\n"
      " of three\n";
};

TEST_F(LogLinesTest, AreTheLastOnesInTheOrderOfTheFile) {
  EXPECT_THAT(Texts(log_, Last(2)), ElementsAre("2024-01-02 03:04:07 three", " of three"));
  EXPECT_EQ(Texts(log_, Last(100)).size(), 7u);
  EXPECT_THAT(Texts(log_, Last(0)), IsEmpty());
  EXPECT_THAT(Texts("", Last(5)), IsEmpty());
}

TEST_F(LogLinesTest, HaveTheirOwnTimeOrNone) {
  const auto lines = Read(log_, Last(100));
  ASSERT_EQ(lines.size(), 7u);
  EXPECT_EQ(lines[0].time, std::nullopt);
  EXPECT_EQ(lines[1].time, kSecond);
  EXPECT_EQ(lines[2].time, kSecond + 1);
  EXPECT_EQ(lines[3].time, std::nullopt);
  EXPECT_EQ(lines[5].time, kSecond + 2);
  EXPECT_EQ(lines[6].time, std::nullopt);
}

TEST_F(LogLinesTest, HaveALevelAndMayBeChosenByIt) {
  LogFilter filter = Last(100);
  filter.level = 4;
  const auto lines = Read(log_, filter);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].level, 3);
  EXPECT_EQ(lines[1].level, 4);
  filter.lines = 1;
  EXPECT_THAT(Texts(log_, filter), ElementsAre("of two warning"));
}

TEST_F(LogLinesTest, MayBeChosenByTheirText) {
  const Regex pattern("^ of t(wo|hree)$");
  LogFilter filter = Last(100);
  filter.match = &pattern;
  EXPECT_THAT(Texts(log_, filter), ElementsAre(" of two", " of three"));
  filter.since = kSecond + 2;
  EXPECT_THAT(Texts(log_, filter), ElementsAre(" of three"));
}

TEST_F(LogLinesTest, WithoutATimeFollowTheLastLineThatHasOne) {
  EXPECT_THAT(Texts(log_, Since(kSecond + 2)),
              ElementsAre("2024-01-02 03:04:07 three", " of three"));
  EXPECT_THAT(Texts(log_, Since(kSecond + 1)),
              ElementsAre("2024-01-02 03:04:06 two error", " of two", "of two warning",
                          "2024-01-02 03:04:07 three", " of three"));
  EXPECT_EQ(Texts(log_, Since(kSecond)).size(), 6u);  // the time of the first line is unknown
  EXPECT_THAT(Texts(log_, Since(kSecond + 3)), IsEmpty());
}

TEST_F(LogLinesTest, AreTheLastOnesSinceATime) {
  EXPECT_THAT(Texts(log_, Since(kSecond + 1, 3)),
              ElementsAre("of two warning", "2024-01-02 03:04:07 three", " of three"));
  EXPECT_THAT(Texts(log_, Since(kSecond + 1, 1)), ElementsAre(" of three"));
}

TEST_F(LogLinesTest, AreFoundEvenIfTheOrderIsDisturbed) {
  EXPECT_THAT(Texts("2024-01-02 03:04:06 a\n2024-01-02 03:04:00 b\n of b\n2024-01-02 03:04:07 c\n",
                    Since(kSecond)),
              ElementsAre("2024-01-02 03:04:06 a", "2024-01-02 03:04:07 c"));
}

TEST_F(LogLinesTest, IgnoresLinesBeforeALongRunOfOlderLines) {
  std::string text = "2024-01-02 03:04:07 lost\n";
  for (std::size_t count = 0; count < kMaxOlderRun; ++count) {
    text += "2024-01-02 03:04:05 old\n";
  }
  text += "2024-01-02 03:04:07 new\n";
  EXPECT_THAT(Texts(text, Since(kSecond + 1)), ElementsAre("2024-01-02 03:04:07 new"));
}

TEST_F(LogLinesTest, CannotBeChosenByTimeWhenNoneHasOne) {
  EXPECT_THAT([&] { Read("a\nb\n", Since(kSecond)); },
              ThrowsMessage<KestrelException>(
                  "No line has a recognizable time, so lines cannot be selected by time"));
  EXPECT_THAT(Texts("", Since(kSecond)), IsEmpty());
}

}  // namespace
}  // namespace Kestrel::Host
