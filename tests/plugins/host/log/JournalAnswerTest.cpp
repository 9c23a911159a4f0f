// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/log/Journal.h"
#include "plugins/shell-common/MadeUpTool.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// Output of journalctl that is incomplete, damaged or hostile.
namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::MadeUpTool;
using Testing::ScopedTempDir;
using ::testing::SizeIs;
using ::testing::ThrowsMessage;

constexpr char kCut[] = "journalctl's answer ends in the middle of an entry";

// Returns a field whose value follows its length. The export format uses this form for values that
// contain line feeds.
std::string Sized(const std::string& name, const std::string& value) {
  std::string field = name + "\n";
  std::uint64_t length = value.size();
  for (int byte = 0; byte < 8; ++byte, length >>= 8) {
    field += static_cast<char>(length & 0xff);
  }
  return field + value + "\n";
}

std::string Entry(const std::string& message) {
  return "__REALTIME_TIMESTAMP=1700000000000000\nPRIORITY=4\nMESSAGE=" + message + "\n\n";
}

LogFilter Lines(std::size_t count) {
  LogFilter filter;
  filter.lines = count;
  return filter;
}

class JournalAnswerTest : public ::testing::Test {
 protected:
  // Returns the entries in `answer`. No unit is requested, so systemctl is not needed.
  std::vector<LogLine> Read(const std::string& answer, std::size_t count = 1000) const {
    const MadeUpTool journalctl("journalctl", "cat '" + folder_.Write("answer", answer) + "'\n");
    return ReadJournal({}, Lines(count));
  }

  std::string TextIn(const std::string& fields) const {
    const auto lines = Read(fields + "\n");
    return lines.size() == 1 ? lines[0].text : "not one line";
  }

  const ScopedTempDir folder_;
};

TEST_F(JournalAnswerTest, TruncatedWithinAnEntryIsAnErrorAndNotAShorterList) {
  const std::string first = Entry("one");
  const std::string whole = first + Sized("MESSAGE", "two\nlines") + "PRIORITY=3\n\n";
  // A single shell for all lengths would be faster, but each output must come from its own program.
  for (std::size_t length = first.size() + 1; length < whole.size(); length += 3) {
    EXPECT_THAT([&] { Read(whole.substr(0, length)); }, ThrowsMessage<KestrelException>(kCut))
        << length;
  }
  EXPECT_THAT(Read(whole), SizeIs(2));
  EXPECT_THAT(Read(first), SizeIs(1));
}

TEST_F(JournalAnswerTest, MayBeTruncatedAfterTheWantedLines) {
  EXPECT_THAT(Read(Entry("new") + "MESSAGE=cu", 1), SizeIs(1));
}

TEST_F(JournalAnswerTest, WithAValueThatNeverEndsIsAnError) {
  const std::string endless = "MESSAGE\n" + std::string(8, '\xff') + "text\n\n";
  EXPECT_THAT([&] { Read(Entry("one") + endless); }, ThrowsMessage<KestrelException>(kCut));
  const std::string negative = "MESSAGE\n" + std::string(7, '\0') + "\x80text\n\n";
  EXPECT_THAT([&] { Read(negative); }, ThrowsMessage<KestrelException>(kCut));
}

TEST_F(JournalAnswerTest, KeepsMessagesOfAnyBytes) {
  const std::string odd("a\0b\r\n\x1b[1m\xff\n\n", 12);
  EXPECT_EQ(TextIn(Sized("MESSAGE", odd)), odd);
  EXPECT_EQ(TextIn(Sized("MESSAGE", "")), "");
  EXPECT_EQ(TextIn("MESSAGE=\n"), "");
  EXPECT_EQ(TextIn("MESSAGE==\n"), "=");
  EXPECT_EQ(TextIn("MESSAGE= a = b \n"), " a = b ");
}

TEST_F(JournalAnswerTest, AMessageMayBeAsLongAsAJournalAllows) {
  const std::string text(768 * 1024, 'm');
  EXPECT_TRUE(TextIn("MESSAGE=" + text + "\n") == text);
  EXPECT_TRUE(TextIn(Sized("MESSAGE", text + "\n")) == text + "\n");
}

TEST_F(JournalAnswerTest, AnEntryMayHaveNoMessage) {
  const auto lines = Read("__CURSOR=x\n\n" + Entry("next"));
  ASSERT_THAT(lines, SizeIs(2));  // the older one first
  EXPECT_EQ(lines[0].text, "next");
  EXPECT_EQ(lines[1].text, "");
  EXPECT_EQ(lines[1].time, std::nullopt);
  EXPECT_EQ(lines[1].source, "");
  EXPECT_EQ(lines[1].level, kInfoLevel);
}

TEST_F(JournalAnswerTest, FieldsOfAnEntryDoNotAffectTheNextOne) {
  const auto lines = Read(
      "__REALTIME_TIMESTAMP=1700000000000000\nPRIORITY=0\nSYSLOG_IDENTIFIER=a\n_COMM=b\n"
      "MESSAGE=one\n\nMESSAGE=two\n\n");
  ASSERT_THAT(lines, SizeIs(2));
  EXPECT_EQ(lines[0].text, "two");
  EXPECT_EQ(lines[0].time, std::nullopt);
  EXPECT_EQ(lines[0].level, kInfoLevel);
  EXPECT_EQ(lines[0].source, "");
}

struct FieldCase {
  const char* field;
  std::optional<std::int64_t> time;
  int level;
};

TEST_F(JournalAnswerTest, AnInvalidTimeIsUnknownAndAnInvalidLevelIsInfo) {
  const FieldCase cases[] = {
      {"__REALTIME_TIMESTAMP=1700000000999999", 1700000000, 6},
      {"__REALTIME_TIMESTAMP=0", 0, 6},
      {"__REALTIME_TIMESTAMP=", std::nullopt, 6},
      {"__REALTIME_TIMESTAMP=soon", std::nullopt, 6},
      {"__REALTIME_TIMESTAMP=1e9", std::nullopt, 6},
      {"__REALTIME_TIMESTAMP=99999999999999999999999", std::nullopt, 6},
      {"_SOURCE_REALTIME_TIMESTAMP=1700000000999999", std::nullopt, 6},
      {"REALTIME_TIMESTAMP=1700000000999999", std::nullopt, 6},
      {"PRIORITY=0", std::nullopt, 0},
      {"PRIORITY=7", std::nullopt, 7},
      {"PRIORITY=8", std::nullopt, 6},
      {"PRIORITY=-1", std::nullopt, 6},
      {"PRIORITY=", std::nullopt, 6},
      {"priority=0", std::nullopt, 6},
  };
  for (const FieldCase& each : cases) {
    const auto lines = Read(std::string(each.field) + "\nMESSAGE=x\n\n");
    ASSERT_THAT(lines, SizeIs(1)) << each.field;
    EXPECT_EQ(lines[0].time, each.time) << each.field;
    EXPECT_EQ(lines[0].level, each.level) << each.field;
  }
}

TEST_F(JournalAnswerTest, TheNameFromTheProgramTakesPrecedenceOverTheNameFromTheSystem) {
  EXPECT_EQ(Read("_COMM=sh\nSYSLOG_IDENTIFIER=cron\n\n").at(0).source, "cron");
  EXPECT_EQ(Read("SYSLOG_IDENTIFIER=cron\n_COMM=sh\n\n").at(0).source, "cron");
  EXPECT_EQ(Read("_COMM=sh\n\n").at(0).source, "sh");
  EXPECT_EQ(Read("_COMM=sh\nSYSLOG_IDENTIFIER=\n\n").at(0).source, "sh");
}

TEST_F(JournalAnswerTest, LinesThatAreNotFieldsAreSkipped) {
  const auto lines = Read("-- Boot 0123 --\nnot a field\nMESSAGE=x\n\n-- No entries --\n");
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_EQ(lines[0].text, "x");
}

// ---- how the program ends

TEST_F(JournalAnswerTest, IsAnErrorIfTheProgramWasKilled) {
  const MadeUpTool journalctl("journalctl",
                              "cat '" + folder_.Write("a", Entry("one")) + "'\nkill -9 $$\n");
  EXPECT_THAT([] { ReadJournal({}, Lines(9)); },
              ThrowsMessage<KestrelException>("journalctl failed: exit status 137"));
}

struct EndCase {
  const char* script;
  const char* message;
};

TEST_F(JournalAnswerTest, AFailureOfTheProgramIsAnErrorWhateverItsReason) {
  const EndCase cases[] = {
      {"echo 'Failed to open root directory' >&2; exit 1",
       "journalctl failed: Failed to open root directory"},
      {"printf 'first\\nsecond\\n' >&2; exit 1", "journalctl failed: first"},
      {"exit 255", "journalctl failed: exit status 255"},
      {"echo 'No journal files were opened due to insufficient permissions.' >&2",
       "Only root and members of the group systemd-journal may read the whole journal"},
      {"printf 'MESSAGE=a\\n'", kCut},
      {"printf 'MESSAGE'", kCut},
  };
  for (const EndCase& each : cases) {
    const MadeUpTool journalctl("journalctl", std::string(each.script) + "\n");
    EXPECT_THAT([] { ReadJournal({}, Lines(9)); }, ThrowsMessage<KestrelException>(each.message))
        << each.script;
  }
}

TEST_F(JournalAnswerTest, MayComeWithWarnings) {
  const MadeUpTool journalctl("journalctl",
                              "echo 'Journal file x is truncated, ignoring.' >&2\n"
                              "cat '" +
                                  folder_.Write("a", Entry("one")) + "'\n");
  EXPECT_THAT(ReadJournal({}, Lines(9)), SizeIs(1));
}

TEST_F(JournalAnswerTest, MayComeWithMoreWarningsThanAPipeHolds) {
  const MadeUpTool journalctl("journalctl", "head -c 300000 /dev/zero | tr '\\0' 'w' >&2\ncat '" +
                                                folder_.Write("a", Entry("one")) + "'\n");
  EXPECT_THAT(ReadJournal({}, Lines(9)), SizeIs(1));
}

// ---- how the program is called

class JournalQuestionTest : public ::testing::Test {
 protected:
  // Returns the arguments that select entries, one per line.
  std::string Ask(const std::vector<std::string>& units, const LogFilter& filter) const {
    const MadeUpTool journalctl("journalctl", "printf '%s\\n' \"$@\" >'" +
                                                  folder_.GetPath("words") + "'\ncat '" +
                                                  folder_.Write("answer", Entry("one")) + "'\n");
    ReadJournal(units, filter);
    const std::string words = folder_.Read("words");
    const std::string last = "MESSAGE\n";
    return words.substr(words.find(last) + last.size());
  }

  const ScopedTempDir folder_;
};

TEST_F(JournalQuestionTest, HasOnlyTheNumberOfLinesWithoutOtherFilters) {
  EXPECT_EQ(Ask({}, Lines(5)), "--lines=5\n");
}

TEST_F(JournalQuestionTest, HasNoNumberOfLinesWhenAllAreWanted) {
  LogFilter filter = Lines(kAllLines);
  filter.since = -1;
  EXPECT_EQ(Ask({}, filter), "--since=@-1\n");
}

TEST_F(JournalQuestionTest, HasNeitherThePatternNorTheNumberOfLinesIfAPatternIsGiven) {
  const Regex pattern("o");
  LogFilter filter = Lines(5);
  filter.match = &pattern;
  EXPECT_EQ(Ask({}, filter), "");
}

TEST_F(JournalQuestionTest, NamesALevelUnlessEveryLevelIsWanted) {
  LogFilter filter = Lines(5);
  for (int level = 0; level < kLowestLevel; ++level) {
    filter.level = level;
    EXPECT_EQ(Ask({}, filter), "--lines=5\n--priority=" + std::to_string(level) + "\n");
  }
  filter.level = kLowestLevel;
  EXPECT_EQ(Ask({}, filter), "--lines=5\n");
}

TEST_F(JournalQuestionTest, PassesNamesOfUnitsUnchanged) {
  for (const char* const unit :
       {"ssh", "getty@tty1.service", "a b", "$(id)", "`id`", "'", "\"", "--lines=1", "*", "a;b"}) {
    EXPECT_EQ(Ask({unit}, Lines(5)), std::string("--lines=5\n--unit=") + unit + "\n");
  }
}

TEST_F(JournalQuestionTest, IsAskedWithoutTheSettingsOfTheUser) {
  const Testing::ScopedEnvironment pager("SYSTEMD_PAGER", std::string("false"));
  const Testing::ScopedEnvironment colors("SYSTEMD_COLORS", std::string("1"));
  const Testing::ScopedEnvironment locale("LC_ALL", std::string("de_DE.UTF-8"));
  const Testing::ScopedEnvironment options("LESS", std::string("-X"));
  const MadeUpTool journalctl(
      "journalctl",
      "printf 'MESSAGE=%s|%s|%s|%s\\n\\n' \"$SYSTEMD_PAGER\" \"$SYSTEMD_COLORS\" "
      "\"$LC_ALL\" \"$LESS\"\n");
  EXPECT_EQ(ReadJournal({}, Lines(1)).at(0).text, "||C|");
}

TEST_F(JournalQuestionTest, MayReadMoreLinesThanTheMaximumOfTheLinesOption) {
  // With "--since", the number of lines is not limited: it may exceed the maximum of "--lines".
  const MadeUpTool journalctl("journalctl", "yes 'MESSAGE=x\n' | head -n 240000\n");
  LogFilter filter = Lines(kAllLines);
  filter.since = 1;
  EXPECT_THAT(ReadJournal({}, filter), SizeIs(120000));
}

TEST_F(JournalQuestionTest, EndsAProgramThatContinues) {
  const MadeUpTool journalctl("journalctl", "while :; do printf 'MESSAGE=x\\n\\n'; done\n");
  const Regex pattern("x");
  LogFilter filter = Lines(4);
  filter.match = &pattern;
  EXPECT_THAT(ReadJournal({}, filter), SizeIs(4));
}

}  // namespace
}  // namespace Kestrel::Host
