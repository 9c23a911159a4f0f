// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/SystemctlOutput.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "support/ScopedEnvironment.h"

// The outputs have the form of systemd 252 unless a comment says otherwise.
namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;
using ::testing::UnorderedElementsAre;

constexpr char kUnexpected[] = "systemctl printed something unexpected: '";

std::vector<std::string> Words(const LoadedUnit& unit) {
  return {unit.unit, unit.load, unit.active, unit.sub, unit.description};
}

template <typename Function>
void ExpectRefused(Function function, const std::string& shown) {
  EXPECT_THAT(function, ThrowsMessage<KestrelException>(kUnexpected + shown + "'"));
}

// ---- units

TEST(ParseUnitsTest, ReadsJson) {
  const auto units = ParseUnits(
      R"([{"unit":"cron.service","load":"loaded","active":"active","sub":"running","description":)"
      R"("Regular background program processing daemon"},{"unit":"auditd.service","load":)"
      R"("not-found","active":"inactive","sub":"dead","description":"auditd.service"}])"
      "\n");
  ASSERT_THAT(units, SizeIs(2));
  EXPECT_THAT(Words(units[0]), ElementsAre("cron.service", "loaded", "active", "running",
                                           "Regular background program processing daemon"));
  EXPECT_THAT(Words(units[1]),
              ElementsAre("auditd.service", "not-found", "inactive", "dead", "auditd.service"));
}

TEST(ParseUnitsTest, KeepsEscapesAndLineFeeds) {
  const auto units = ParseUnits(
      R"([{"unit":"we\\x2dird.service","load":"loaded","active":"active","sub":"running",)"
      R"("description":"a\nb  c \"d\" \u001b[31m \u0000 caf\u00e9"}])");
  ASSERT_THAT(units, SizeIs(1));
  EXPECT_EQ(units[0].unit, "we\\x2dird.service");
  EXPECT_EQ(units[0].description,
            std::string("a\nb  c \"d\" \x1b[31m ") + std::string(1, '\0') + " caf\xc3\xa9");
}

TEST(ParseUnitsTest, ReadsAnEmptyList) {
  EXPECT_THAT(ParseUnits("[]\n"), IsEmpty());
  EXPECT_THAT(ParseUnits(" [ ] "), IsEmpty());
}

TEST(ParseUnitsTest, NeedsOnlyTheName) {
  const auto units = ParseUnits(R"([{"unit":"a.service"},{"unit":"b.service","sub":null}])");
  ASSERT_THAT(units, SizeIs(2));
  EXPECT_THAT(Words(units[0]), ElementsAre("a.service", "", "", "", ""));
  EXPECT_THAT(Words(units[1]), ElementsAre("b.service", "", "", "", ""));
}

TEST(ParseUnitsTest, RefusesJsonOfAnotherForm) {
  ExpectRefused([] { ParseUnits("[1]"); }, "[1]");
  ExpectRefused([] { ParseUnits("[[]]"); }, "[[]]");
  ExpectRefused([] { ParseUnits(R"([{"unit":"a.service"},null])"); },
                R"([{"unit":"a.service"},null])");
  ExpectRefused([] { ParseUnits(R"([{"unit":7}])"); }, R"({"unit":7})");
  ExpectRefused([] { ParseUnits(R"([{"load":"x"}])"); }, R"({"load":"x"})");
}

// A list is truncated if the program was killed, or if its output was recorded on a full disk.
TEST(ParseUnitsTest, RefusesATruncatedList) {
  const std::string whole =
      R"([{"unit":"a.service","load":"loaded","active":"active","sub":"x","description":"d"}])";
  ASSERT_THAT(ParseUnits(whole), SizeIs(1));
  for (std::size_t size = 1; size < whole.size(); ++size) {
    EXPECT_THAT([&] { ParseUnits(whole.substr(0, size)); },
                ThrowsMessage<KestrelException>(StartsWith(kUnexpected)))
        << size;
  }
}

TEST(ParseUnitsTest, RefusesInvalidUtf8) {
  EXPECT_THAT([] { ParseUnits("[{\"unit\":\"a\xff.service\"}]"); },
              ThrowsMessage<KestrelException>(StartsWith(kUnexpected)));
}

TEST(ParseUnitsTest, ShowsOnlyTheBeginningOfGarbage) {
  ExpectRefused([] { ParseUnits("\x1b[2Jgarbage\n"); }, "\\x1b[2Jgarbage");
  ExpectRefused([] { ParseUnits(std::string(1000, 'x')); }, std::string(60, 'x'));
}

TEST(ParseUnitsTest, RefusesJsonThatIsNestedTooDeeply) {
  EXPECT_THAT([] { ParseUnits(std::string(1000000, '[')); },
              ThrowsMessage<KestrelException>(StartsWith(kUnexpected)));
}

TEST(ParseUnitsTest, ReadsManyUnits) {
  std::string list = "[";
  for (int number = 0; number < 20000; ++number) {
    list.append(number == 0 ? "" : ",").append("{\"unit\":\"u").append(std::to_string(number));
    list.append(".service\",\"load\":\"loaded\",\"active\":\"active\",\"sub\":\"running\",");
    list.append("\"description\":\"one of many\"}");
  }
  const auto units = ParseUnits(list + "]");
  ASSERT_THAT(units, SizeIs(20000));
  EXPECT_EQ(units.back().unit, "u19999.service");
}

// The output of versions that do not support --output for this command. The options were --plain,
// --full and --no-legend.
TEST(ParseUnitsTest, ReadsATable) {
  const auto units = ParseUnits(
      "cron.service                   loaded    active   running Regular  background daemon \n"
      "getty@tty1.service             loaded    failed   failed  Getty on tty1\n"
      "systemd-fsck@dev-disk-by\\x2dlabel-UEFI.service loaded active exited File check\n"
      "gone.service                   not-found inactive dead    gone.service\n"
      "bare.service                   loaded    inactive dead\n");
  ASSERT_THAT(units, SizeIs(5));
  EXPECT_THAT(Words(units[0]), ElementsAre("cron.service", "loaded", "active", "running",
                                           "Regular  background daemon"));
  EXPECT_THAT(Words(units[1]),
              ElementsAre("getty@tty1.service", "loaded", "failed", "failed", "Getty on tty1"));
  EXPECT_EQ(units[2].unit, "systemd-fsck@dev-disk-by\\x2dlabel-UEFI.service");
  EXPECT_THAT(Words(units[3]),
              ElementsAre("gone.service", "not-found", "inactive", "dead", "gone.service"));
  EXPECT_THAT(Words(units[4]), ElementsAre("bare.service", "loaded", "inactive", "dead", ""));
}

// The description is found even if it repeats the state.
TEST(ParseUnitsTest, FindsTheDescriptionInATable) {
  const auto units = ParseUnits("a.service loaded active running loaded active running\n");
  ASSERT_THAT(units, SizeIs(1));
  EXPECT_EQ(units[0].description, "loaded active running");
}

TEST(ParseUnitsTest, ReadsAnEmptyTable) {
  EXPECT_THAT(ParseUnits(""), IsEmpty());
  EXPECT_THAT(ParseUnits("\n\n"), IsEmpty());
}

TEST(ParseUnitsTest, RefusesLinesThatAreNotUnits) {
  ExpectRefused([] { ParseUnits("a.service loaded active\n"); }, "a.service loaded active");
  ExpectRefused([] { ParseUnits("0 loaded units listed.\n"); }, "0 loaded units listed.");
  // The first line of a table with a header.
  ExpectRefused([] { ParseUnits("  UNIT LOAD ACTIVE SUB DESCRIPTION\n"); },
                "UNIT LOAD ACTIVE SUB DESCRIPTION");
}

// ---- unit files

TEST(ParseUnitFilesTest, ReadsJson) {
  EXPECT_THAT(
      ParseUnitFiles(R"([{"unit_file":"apt-daily.service","state":"static","preset":null},)"
                     R"({"unit_file":"autovt@.service","state":"alias","preset":null},)"
                     R"({"unit_file":"cryptdisks.service","state":"masked","preset":"enabled"}])"),
      ElementsAre(Pair("apt-daily.service", "static"), Pair("autovt@.service", "alias"),
                  Pair("cryptdisks.service", "masked")));
}

TEST(ParseUnitFilesTest, ReadsATable) {
  EXPECT_THAT(ParseUnitFiles("apt-daily.service  static   -\n"
                             "cron.service       enabled  enabled\n"
                             "old.service        disabled\n"),
              ElementsAre(Pair("apt-daily.service", "static"), Pair("cron.service", "enabled"),
                          Pair("old.service", "disabled")));
}

TEST(ParseUnitFilesTest, ReadsEmptyLists) {
  EXPECT_THAT(ParseUnitFiles("[]"), IsEmpty());
  EXPECT_THAT(ParseUnitFiles(""), IsEmpty());
}

TEST(ParseUnitFilesTest, RefusesOtherForms) {
  ExpectRefused([] { ParseUnitFiles(R"([{"unit":"a.service"}])"); }, R"({"unit":"a.service"})");
  ExpectRefused([] { ParseUnitFiles("a.service\n"); }, "a.service");
  ExpectRefused([] { ParseUnitFiles("[}"); }, "[}");
}

// ---- timers

std::vector<std::string> Words(const Timer& timer) {
  const auto text = [](const std::optional<std::int64_t>& time) {
    return time ? std::to_string(*time) : "none";
  };
  return {timer.unit, timer.activates, text(timer.next), text(timer.last)};
}

TEST(ParseTimersTest, ReadsTimesInSeconds) {
  const auto timers =
      ParseTimers(R"([{"next":1795392000999999,"left":1,"last":1795305600000000,"passed":2,)"
                  R"("unit":"apt-daily.timer","activates":"apt-daily.service"}])");
  ASSERT_THAT(timers, SizeIs(1));
  EXPECT_THAT(Words(timers[0]),
              ElementsAre("apt-daily.timer", "apt-daily.service", "1795392000", "1795305600"));
}

TEST(ParseTimersTest, RecognizesMissingTimes) {
  const auto timers = ParseTimers(
      R"([{"next":null,"left":null,"last":0,"passed":0,"unit":"a.timer","activates":null},)"
      R"({"next":"n/a","last":-1,"unit":"b.timer","activates":"b.service"},)"
      R"({"unit":"c.timer"}])");
  ASSERT_THAT(timers, SizeIs(3));
  EXPECT_THAT(Words(timers[0]), ElementsAre("a.timer", "", "none", "none"));
  EXPECT_THAT(Words(timers[1]), ElementsAre("b.timer", "b.service", "none", "none"));
  EXPECT_THAT(Words(timers[2]), ElementsAre("c.timer", "", "none", "none"));
}

TEST(ParseTimersTest, ReadsTheLargestNumber) {
  const auto timers = ParseTimers(R"([{"next":18446744073709551615,"unit":"a.timer"}])");
  ASSERT_THAT(timers, SizeIs(1));
  EXPECT_THAT(Words(timers[0]), ElementsAre("a.timer", "", "18446744073709", "none"));
}

TEST(ParseTimersTest, ReadsAnEmptyList) { EXPECT_THAT(ParseTimers("[]\n"), IsEmpty()); }

// The formats of versions that cannot print timers as JSON, and of later versions.
TEST(ParseTimersTest, ReadsATable) {
  const Testing::ScopedEnvironment zone("TZ", "UTC");
  ::tzset();
  const auto timers = ParseTimers(
      "Mon 2026-11-23 00:00:00 UTC 15h left Sun 2026-11-22 00:00:00 UTC 1 day 8h ago "
      "apt-daily.timer apt-daily.service\n"
      "Mon 2026-11-23 00:00:00 UTC  15h     -                           -      b.timer b.service\n"
      "n/a  n/a  n/a  n/a  c.timer  c.service\n"
      "-    -    Sun 2026-11-22 00:00:00 UTC 8h ago d.timer\n");
  ASSERT_THAT(timers, SizeIs(4));
  EXPECT_THAT(Words(timers[0]),
              ElementsAre("apt-daily.timer", "apt-daily.service", "1795392000", "1795305600"));
  EXPECT_THAT(Words(timers[1]), ElementsAre("b.timer", "b.service", "1795392000", "none"));
  EXPECT_THAT(Words(timers[2]), ElementsAre("c.timer", "c.service", "none", "none"));
  EXPECT_THAT(Words(timers[3]), ElementsAre("d.timer", "", "none", "1795305600"));
}

TEST(ParseTimersTest, ReadsTheTimesOfATableInTheZoneOfTheMachine) {
  const Testing::ScopedEnvironment zone("TZ", "Asia/Kolkata");
  ::tzset();
  const auto timers = ParseTimers("Mon 2026-11-23 05:30:00 IST 15h left - - a.timer a.service\n");
  ASSERT_THAT(timers, SizeIs(1));
  EXPECT_EQ(timers[0].next, 1795392000);
}

TEST(ParseTimersTest, ReadsAnEmptyTable) { EXPECT_THAT(ParseTimers("\n"), IsEmpty()); }

TEST(ParseTimersTest, RefusesLinesThatAreNotTimers) {
  for (const char* const line :
       {"0 timers listed.", "x", "n/a", "n/a n/a n/a n/a a.service", "n/a n/a n/a n/a",
        "Mon 2026-11-23", "Mon 2026-11-23 25:00:00 UTC 1h - - a.timer a.service",
        "Mon 2026-11-23 00:00:00x UTC 1h - - a.timer a.service"}) {
    ExpectRefused([line] { ParseTimers(line); }, line);
  }
}

// ---- properties

TEST(ParsePropertiesTest, ReadsOneUnit) {
  EXPECT_THAT(ParseProperties("Id=a.service\nDescription=x=y\nSourcePath=\n"),
              ElementsAre(UnorderedElementsAre(Pair("Id", "a.service"), Pair("Description", "x=y"),
                                               Pair("SourcePath", ""))));
}

TEST(ParsePropertiesTest, ReadsSeveralUnits) {
  const auto units = ParseProperties("Id=a.service\nUnitFileState=\n\nId=b.service\n\n\nId=c\n");
  ASSERT_THAT(units, SizeIs(3));
  EXPECT_EQ(units[0].at("UnitFileState"), "");
  EXPECT_THAT(units[1], ElementsAre(Pair("Id", "b.service")));
  EXPECT_THAT(units[2], ElementsAre(Pair("Id", "c")));
}

TEST(ParsePropertiesTest, MayBeEmpty) {
  EXPECT_THAT(ParseProperties(""), IsEmpty());
  EXPECT_THAT(ParseProperties("\n\n"), IsEmpty());
}

// If a value forges a second line with the same name, the value on the first line is used.
TEST(ParsePropertiesTest, KeepsTheFirstOfTwoValues) {
  const auto units = ParseProperties("LoadState=loaded\nLoadState=not-found\n");
  ASSERT_THAT(units, SizeIs(1));
  EXPECT_EQ(units[0].at("LoadState"), "loaded");
}

TEST(ParsePropertiesTest, RefusesOtherLines) {
  ExpectRefused([] { ParseProperties("Id=a\nno property\n"); }, "no property");
}

}  // namespace
}  // namespace Kestrel::Host
