// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/ControlFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::ThrowsMessage;

constexpr char kSample[] =
    "Package: sample\n"
    "Description: the first line\n"
    " the second\n"
    " .\n"
    "\tthe last\n"
    "Depends: libc6 (>= 2.36), a | b,\n"
    " c\n"
    "Empty:\n"
    "Spaces: \t x \t";

TEST(ControlStanzaTest, ReturnsValuesTrimmed) {
  const ControlStanza stanza(kSample);
  EXPECT_EQ(stanza.Get("Package"), "sample");
  EXPECT_EQ(stanza.Get("Spaces"), "x");
  EXPECT_EQ(stanza.Get("Empty"), "");
  EXPECT_EQ(stanza.GetText(), kSample);
}

TEST(ControlStanzaTest, ReturnsNothingForAnAbsentField) {
  const ControlStanza stanza(kSample);
  EXPECT_EQ(stanza.Get("Version"), "");
  EXPECT_EQ(stanza.GetFirstLine("Version"), "");
  EXPECT_THAT(stanza.GetList("Version"), IsEmpty());
  // Neither a prefix of a field's name nor a longer word finds the field.
  EXPECT_EQ(stanza.Get("Pack"), "");
  EXPECT_EQ(stanza.Get("Packages"), "");
}

TEST(ControlStanzaTest, IgnoresTheCaseOfNames) {
  EXPECT_EQ(ControlStanza("PACKAGE: a").Get("package"), "a");
  EXPECT_EQ(ControlStanza("package: a").Get("Package"), "a");
}

TEST(ControlStanzaTest, KeepsTheLinesOfAValue) {
  const ControlStanza stanza(kSample);
  EXPECT_EQ(stanza.Get("Description"), "the first line\n the second\n .\n\tthe last");
  EXPECT_EQ(stanza.GetFirstLine("Description"), "the first line");
}

TEST(ControlStanzaTest, SplitsLists) {
  EXPECT_THAT(ControlStanza(kSample).GetList("Depends"),
              ElementsAre("libc6 (>= 2.36)", "a | b", "c"));
  EXPECT_THAT(ControlStanza("A: ,, b ,").GetList("A"), ElementsAre("b"));
}

TEST(ControlStanzaTest, KeepsAColonInAValue) {
  EXPECT_EQ(ControlStanza("Homepage: https://example.org/").Get("Homepage"),
            "https://example.org/");
}

TEST(ControlStanzaTest, ReturnsTheFirstOfTwoFields) {
  EXPECT_EQ(ControlStanza("A: 1\nA: 2").Get("A"), "1");
}

struct BadStanza {
  const char* test;
  std::string text;
  std::string message;
};

class BadStanzaTest : public ::testing::TestWithParam<BadStanza> {};

TEST_P(BadStanzaTest, IsRefused) {
  EXPECT_THAT([] { ControlStanza stanza(GetParam().text); },
              ThrowsMessage<KestrelException>(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, BadStanzaTest,
    ::testing::Values(
        BadStanza{"NoColon", "Package: a\nVersion", "a line is no field: Version"},
        BadStanza{"NoName", ": a", "a line is no field: : a"},
        BadStanza{"SpaceInTheName", "A b: c", "a line is no field: A b: c"},
        BadStanza{"StartsIndented", " a: b\nc: d", "a line is no field:  a: b"},
        BadStanza{"ColonOnTheNextLine", "Package\n a: b", "a line is no field: Package"},
        BadStanza{"NulBytes", std::string(3, '\0'), "a line is no field: \\x00\\x00\\x00"}),
    [](const auto& each) { return std::string(each.param.test); });

std::vector<std::string> Names(std::string_view text, LastStanza last = LastStanza::EmptyLine) {
  std::vector<std::string> names;
  ReadControlFile("/made/up", text, last, [&names](const ControlStanza& stanza) {
    names.emplace_back(stanza.Get("Package"));
  });
  return names;
}

TEST(ReadControlFileTest, CallsTheFunctionForEachStanza) {
  EXPECT_THAT(Names(""), IsEmpty());
  EXPECT_THAT(Names("\n\n"), IsEmpty());
  EXPECT_THAT(Names("Package: a\n\n"), ElementsAre("a"));
  EXPECT_THAT(Names("\nPackage: a\n\n\n\nPackage: b\nVersion: 1\n\n"), ElementsAre("a", "b"));
}

TEST(ReadControlFileTest, RefusesAFileThatEndsWithinAStanza) {
  const std::string whole = "Package: a\nVersion: 1\n\nPackage: b\nVersion: 2\n\n";
  const std::size_t boundary = whole.find("\n\n") + 2;
  for (std::size_t length = 1; length < whole.size(); ++length) {
    if (length != boundary) {
      EXPECT_THAT([&] { Names(whole.substr(0, length)); },
                  ThrowsMessage<KestrelException>(
                      "Unable to read /made/up: it ends in the middle of an entry"))
          << length;
    }
  }
}

TEST(ReadControlFileTest, AcceptsOneLineFeedAtTheEndIfTheCallerAllowsIt) {
  const std::string text = "Package: a\n\nPackage: b\nVersion: 1\n";
  EXPECT_THAT(Names(text, LastStanza::LineFeed), ElementsAre("a", "b"));
  EXPECT_THAT(Names(text + "\n", LastStanza::LineFeed), ElementsAre("a", "b"));
  EXPECT_THAT([&] { Names("Package: a", LastStanza::LineFeed); },
              ThrowsMessage<KestrelException>(
                  "Unable to read /made/up: it ends in the middle of an entry"));
}

TEST(ReadControlFileTest, NamesTheFileOfABadLine) {
  EXPECT_THAT([] { Names("Package: a\n\noops\n\n"); },
              ThrowsMessage<KestrelException>("Unable to read /made/up: a line is no field: oops"));
}

}  // namespace
}  // namespace Kestrel::Host
