// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/ResolverSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>

#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

// Formats each setting as "kind position value", in brackets if it is not used.
std::vector<std::string> Texts(const std::vector<ResolverSetting>& settings) {
  std::vector<std::string> texts;
  for (const ResolverSetting& setting : settings) {
    const std::string text =
        setting.kind + " " + std::to_string(setting.position) + " " + setting.value;
    texts.push_back(setting.isUsed ? text : "[" + text + "]");
  }
  return texts;
}

std::vector<std::string> TextsOf(std::string_view text) {
  return Texts(ParseResolverSettings(text, "file"));
}

TEST(ResolverSettingsTest, ReadsEveryKindOfLine) {
  const std::string text =
      "# made by hand\n"
      "nameserver 192.0.2.53\n"
      "nameserver\t2001:db8::53\n"
      "search example.org  lab.example.org\n"
      "options timeout:1 rotate\n"
      "sortlist 192.0.2.0/255.255.255.0 10.0.0.0\n";
  EXPECT_THAT(TextsOf(text),
              ElementsAre("server 1 192.0.2.53", "server 2 2001:db8::53", "search 1 example.org",
                          "search 2 lab.example.org", "option 1 timeout:1", "option 2 rotate",
                          "sortlist 1 192.0.2.0/255.255.255.0", "sortlist 2 10.0.0.0"));
  EXPECT_EQ(ParseResolverSettings(text, "/etc/x").back().source, "/etc/x");
}

TEST(ResolverSettingsTest, OnlyTheFirstThreeValidServersAreUsed) {
  EXPECT_THAT(TextsOf("nameserver 10.0.0.1\nnameserver 10.0.0.300\nnameserver 10.0.0.2\n"
                      "nameserver fe80::1%eth0\nnameserver 10.0.0.4\n"),
              ElementsAre("server 1 10.0.0.1", "[server 2 10.0.0.300]", "server 3 10.0.0.2",
                          "server 4 fe80::1%eth0", "[server 5 10.0.0.4]"));
}

TEST(ResolverSettingsTest, OnlyTheLastSearchListIsUsed) {
  EXPECT_THAT(TextsOf("search a b\ndomain c d\n"),
              ElementsAre("[search 1 a]", "[search 2 b]", "search 3 c"));
  EXPECT_THAT(TextsOf("domain c\nsearch a\noptions x\nsearch\n"),
              ElementsAre("[search 1 c]", "search 2 a", "option 1 x"));
}

struct IgnoredCase {
  const char* name;
  std::string line;
};

class IgnoredResolverLineTest : public ::testing::TestWithParam<IgnoredCase> {};

TEST_P(IgnoredResolverLineTest, ContainsNoSetting) {
  EXPECT_THAT(TextsOf(GetParam().line), IsEmpty());
  EXPECT_THAT(TextsOf(GetParam().line + "\nnameserver 10.0.0.1"), ElementsAre("server 1 10.0.0.1"));
}

const IgnoredCase kIgnoredLines[] = {
    {"Empty", ""},
    {"Comment", "# nameserver 10.0.0.9"},
    {"CommentWithoutSpace", "#nameserver 10.0.0.9"},
    {"Semicolon", ";nameserver 10.0.0.9"},
    {"SpaceBefore", " nameserver 10.0.0.9"},
    {"NoValue", "nameserver"},
    {"NoValueButSpaces", "nameserver  \t "},
    {"NoDomain", "search "},
    {"NoSpaceBetween", "nameserver10.0.0.9"},
    {"UpperCase", "NAMESERVER 10.0.0.9"},
    {"OtherKeyword", "lookup file bind"},
    {"BytesOfAnyKind", std::string("\0\xff\x1b", 3)},
};
INSTANTIATE_TEST_SUITE_P(Lines, IgnoredResolverLineTest, ::testing::ValuesIn(kIgnoredLines),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ResolverSettingsTest, WithoutAServerTheLibraryUsesThisMachine) {
  const ScopedTempDir root;
  const auto missing = ReadResolverSettings(root.GetPath());
  EXPECT_THAT(Texts(missing), ElementsAre("server 1 127.0.0.1"));
  EXPECT_EQ(missing[0].source, "default");
  root.Write("etc/resolv.conf", "search a\nnameserver none\n");
  EXPECT_THAT(Texts(ReadResolverSettings(root.GetPath())),
              ElementsAre("search 1 a", "[server 1 none]", "server 1 127.0.0.1"));
}

TEST(ResolverSettingsTest, TheServersThatSystemdResolvedUsesAreListed) {
  const ScopedTempDir root;
  root.Write("etc/resolv.conf", "nameserver 127.0.0.53\noptions edns0\n");
  EXPECT_THAT(Texts(ReadResolverSettings(root.GetPath())),
              ElementsAre("server 1 127.0.0.53", "option 1 edns0"));
  root.Write("run/systemd/resolve/resolv.conf",
             "nameserver 10.0.0.1\nnameserver 10.0.0.2\nnameserver 10.0.0.3\n"
             "nameserver 10.0.0.4\nnameserver x\nsearch lab\n");
  const auto settings = ReadResolverSettings(root.GetPath());
  EXPECT_THAT(
      Texts(settings),
      ElementsAre("server 1 127.0.0.53", "option 1 edns0", "server 1 10.0.0.1", "server 2 10.0.0.2",
                  "server 3 10.0.0.3", "server 4 10.0.0.4", "[server 5 x]"));
  EXPECT_EQ(settings[0].source, "/etc/resolv.conf");
  EXPECT_EQ(settings[2].source, "/run/systemd/resolve/resolv.conf");
}

TEST(ResolverSettingsTest, TheFileOfSystemdResolvedIsNotReadForAnotherServer) {
  const ScopedTempDir root;
  root.Write("etc/resolv.conf", "nameserver 127.0.0.1\n");
  root.Write("run/systemd/resolve/resolv.conf", "nameserver 10.0.0.1\n");
  EXPECT_THAT(Texts(ReadResolverSettings(root.GetPath())), ElementsAre("server 1 127.0.0.1"));
}

TEST(ResolverSettingsTest, AFileThatCannotBeReadIsAnError) {
  const ScopedTempDir root;
  root.MakeDirectory("etc/resolv.conf");
  EXPECT_THAT([&] { ReadResolverSettings(root.GetPath()); },
              ThrowsMessage<KestrelException>("Unable to read " + root.GetPath("etc/resolv.conf") +
                                              ": Is a directory"));
}

}  // namespace
}  // namespace Kestrel::Host
