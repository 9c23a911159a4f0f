// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/Journal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <optional>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "plugins/shell-common/MadeUpTool.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::MadeUpTool;
using Testing::ScopedTempDir;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

// Two entries. The second contains a value with a line feed, which the export format writes after
// its length.
const std::string kExport(
    "__CURSOR=s=1;i=2\n__REALTIME_TIMESTAMP=1700000001000000\nPRIORITY=3\n_COMM=crond\n"
    "SYSLOG_IDENTIFIER=cron\nMESSAGE=a=b \xFF\n\n"
    "__REALTIME_TIMESTAMP=1700000000999999\n_COMM=sh\n"
    "MESSAGE\n\x07\0\0\0\0\0\0\0x\n\nA=b\n\n\n",
    188);

std::vector<LogLine> Parse(const std::string& text, std::size_t pieceSize) {
  JournalParser parser;
  std::vector<LogLine> lines;
  for (std::size_t start = 0; start < text.size(); start += pieceSize) {
    parser.Append(std::string_view(text).substr(start, pieceSize));
    while (auto line = parser.Next()) {
      lines.push_back(*line);
    }
  }
  return lines;
}

TEST(JournalParserTest, ReadsEntriesInPiecesOfAnySize) {
  ASSERT_THAT(kExport, ::testing::EndsWith("A=b\n\n\n"));
  for (std::size_t size = 1; size <= kExport.size(); ++size) {
    const auto lines = Parse(kExport, size);
    ASSERT_EQ(lines.size(), 2u) << size;
    EXPECT_EQ(lines[0].time, 1700000001);
    EXPECT_EQ(lines[0].level, 3);
    EXPECT_EQ(lines[0].source, "cron");
    EXPECT_EQ(lines[0].text, "a=b \xFF");
    EXPECT_EQ(lines[1].time, 1700000000);
    EXPECT_EQ(lines[1].level, 6);
    EXPECT_EQ(lines[1].source, "sh");
    EXPECT_EQ(lines[1].text, "x\n\nA=b\n");
  }
}

TEST(JournalParserTest, IgnoresWhatIsNotAnEntry) {
  EXPECT_THAT(Parse("-- No entries --\n", 100), IsEmpty());
  EXPECT_THAT(Parse("\n\n\n", 100), IsEmpty());
  EXPECT_THAT(Parse("MESSAGE=not at its end\n", 100), IsEmpty());
}

TEST(JournalParserTest, WaitsForAValueOfAnyLength) {
  const std::string header("MESSAGE\n\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 16);
  EXPECT_THAT(Parse(header + "text\n\n", 3), IsEmpty());
}

// `Script` returns a program that writes its arguments to a file, prints `output` and runs `more`.
class JournalTest : public ::testing::Test {
 protected:
  std::string Script(const std::string& output, const std::string& more = "") const {
    return "printf '%s\\n' \"$@\" >>'" + folder_.GetPath("words") + "'\ncat '" +
           folder_.Write("output", output) + "'\n" + more;
  }

  static LogFilter Filter(std::size_t lines) {
    LogFilter filter;
    filter.lines = lines;
    return filter;
  }

  static std::vector<std::string> Texts(const std::vector<std::string>& units,
                                        const LogFilter& filter) {
    std::vector<std::string> texts;
    for (const LogLine& line : ReadJournal(units, filter)) {
      texts.push_back(line.text);
    }
    return texts;
  }

  const ScopedTempDir folder_;
};

TEST_F(JournalTest, IsReadFromItsEnd) {
  const MadeUpTool journalctl("journalctl", Script(kExport));
  EXPECT_THAT(Texts({}, Filter(9)), ElementsAre("x\n\nA=b\n", "a=b \xFF"));
  EXPECT_THAT(Texts({}, Filter(1)), ElementsAre("a=b \xFF"));
}

TEST_F(JournalTest, IsAskedForWhatIsWanted) {
  const MadeUpTool journalctl("journalctl", Script(kExport));
  LogFilter filter = Filter(7);
  filter.level = 4;
  filter.since = 1700000000;
  ReadJournal({"a@b.service"}, filter);
  EXPECT_EQ(folder_.Read("words"),
            "--no-pager\n--reverse\n--output=export\n"
            "--output-fields=PRIORITY,SYSLOG_IDENTIFIER,_COMM,MESSAGE\n--lines=7\n--priority=4\n"
            "--since=@1700000000\n--unit=a@b.service\n");
}

TEST_F(JournalTest, IsSearchedUntilThereAreEnoughLines) {
  // The program writes entries until its output is closed.
  const MadeUpTool journalctl("journalctl",
                              "while printf 'MESSAGE=no\\n\\nMESSAGE=yes\\n\\n'; do :; done");
  const Regex pattern("^y");
  LogFilter filter = Filter(3);
  filter.match = &pattern;
  EXPECT_THAT(Texts({}, filter), ElementsAre("yes", "yes", "yes"));
}

TEST_F(JournalTest, MayBeEmpty) {
  const MadeUpTool journalctl("journalctl", Script("-- No entries --\n"));
  EXPECT_THAT(Texts({}, Filter(9)), IsEmpty());
}

TEST_F(JournalTest, IsMissingWithoutItsProgram) {
  const Testing::ScopedEnvironment path("PATH", folder_.GetPath());
  EXPECT_THAT([&] { ReadJournal({}, Filter(9)); },
              ThrowsMessage<KestrelException>(StartsWith(
                  "There is no journal: the program journalctl (package systemd) is not in PATH. "
                  "Read a log file with --file instead")));
}

// When asked to export entries, the program does not report that there are no journal files.
TEST_F(JournalTest, IsMissingWithoutItsFiles) {
  const MadeUpTool journalctl(
      "journalctl",
      "case \"$*\" in *export*) ;; *) echo 'No journal files were found.' >&2 ;; esac\n");
  EXPECT_THAT([&] { ReadJournal({}, Filter(9)); },
              ThrowsMessage<KestrelException>(
                  StartsWith("There is no journal: no journal files were found. Read a log file")));
}

TEST_F(JournalTest, MustBeReadableCompletely) {
  constexpr char kRefusal[] =
      "Only root and members of the group systemd-journal may read the whole journal";
  {
    // The program is in a folder that other users may enter.
    const ScopedTempDir tools;
    const std::string tool = tools.Write(
        "journalctl",
        "#!/bin/sh\ncase \"$*\" in *export*) printf 'MESSAGE=a\\n\\n' ;; *) echo 'Hint: You are "
        "currently not seeing messages from other users' >&2 ;; esac\n");
    ASSERT_EQ(::chmod(tools.GetPath().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(tool.c_str(), 0755), 0);
    const Testing::ScopedEnvironment path("PATH", tools.GetPath());
    const Testing::PlainUser user;
    EXPECT_THAT([&] { ReadJournal({}, Filter(9)); }, ThrowsMessage<KestrelException>(kRefusal));
  }
  const MadeUpTool refusing("journalctl",
                            "echo 'No journal files were opened due to insufficient permissions.' "
                            ">&2; exit 1\n");
  EXPECT_THAT([&] { ReadJournal({}, Filter(9)); }, ThrowsMessage<KestrelException>(kRefusal));
}

TEST_F(JournalTest, ReportsAFailureOfTheProgramAfterTheFirstLines) {
  const MadeUpTool journalctl("journalctl", Script(kExport, "echo 'Broken' >&2; exit 1\n"));
  EXPECT_THAT([&] { ReadJournal({}, Filter(9)); },
              ThrowsMessage<KestrelException>("journalctl failed: Broken"));
}

TEST_F(JournalTest, ReportsASilentFailureOfTheProgram) {
  const MadeUpTool journalctl("journalctl", "exit 1\n");
  EXPECT_THAT([&] { ReadJournal({}, Filter(9)); },
              ThrowsMessage<KestrelException>("journalctl failed: exit status 1"));
}

// ---- units

constexpr char kNoUnit[] = "Neither the journal nor systemctl knows the unit nosuch";

TEST_F(JournalTest, KnowsUnitsWithoutAnEntryThatPassesTheFilter) {
  // There is no entry of the requested level, but there are others.
  const MadeUpTool journalctl("journalctl",
                              "case \"$*\" in *--priority*) ;; *) " + Script(kExport) + ";; esac");
  LogFilter filter = Filter(9);
  filter.level = 0;
  EXPECT_THAT(Texts({"quiet"}, filter), IsEmpty());
}

TEST_F(JournalTest, KnowsUnitsThatSystemctlKnows) {
  const MadeUpTool journalctl("journalctl", "exit 0\n");
  for (const char* const state : {"loaded", "masked"}) {
    const MadeUpTool systemctl("systemctl", "printf '%s\\n' \"$@\" >'" + folder_.GetPath("words") +
                                                "'; echo " + state + "\n");
    EXPECT_THAT(Texts({"-quiet"}, Filter(9)), IsEmpty());
    EXPECT_EQ(folder_.Read("words"), "show\n--property=LoadState\n--value\n--\n-quiet\n");
  }
}

TEST_F(JournalTest, ReportsAnUnknownUnit) {
  const MadeUpTool journalctl("journalctl", "exit 0\n");
  for (const char* const script : {"echo not-found\n", "exit 1\n", "echo loaded; exit 1\n", ""}) {
    const MadeUpTool systemctl("systemctl", script);
    EXPECT_THAT([&] { ReadJournal({"nosuch"}, Filter(9)); },
                ThrowsMessage<KestrelException>(kNoUnit))
        << script;
  }
}

TEST_F(JournalTest, ReportsAnUnknownUnitBesideAKnownOne) {
  const MadeUpTool journalctl("journalctl",
                              "case \"$*\" in *known*) " + Script(kExport) + ";; esac");
  const MadeUpTool systemctl("systemctl", "echo not-found\n");
  EXPECT_EQ(Texts({"known"}, Filter(9)).size(), 2u);
  EXPECT_THAT(
      [&] {
        ReadJournal({"known", "nosuch"}, Filter(9));
      },
      ThrowsMessage<KestrelException>(kNoUnit));
}

TEST_F(JournalTest, ReportsAPatternThatMatchesNoUnit) {
  const MadeUpTool journalctl(
      "journalctl", "echo 'Failed to add filter for units: No data available' >&2; exit 1\n");
  EXPECT_THAT([&] { ReadJournal({"nosuch*"}, Filter(9)); },
              ThrowsMessage<KestrelException>("The journal has no unit whose name matches --unit"));
}

}  // namespace
}  // namespace Kestrel::Host
