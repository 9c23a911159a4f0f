// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Messages that quote input must not control a terminal. Files and pipes receive the bytes
// unchanged.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "e2e/Plugins.h"
#include "support/PseudoTerminal.h"
#include "support/ScopedTempDir.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const std::string kEscape = "\x1b[2J";

std::string ShownOnATerminal(const VexilRun& run) {
  PseudoTerminal terminal;
  terminal.Start([&run]() -> int { run.Exec(); });
  terminal.WaitForEnd();
  return terminal.ReadRest();
}

struct Message {
  const char* name;
  std::vector<std::string> arguments;
};

class TerminalMessageTest : public ::testing::TestWithParam<Message> {};

TEST_P(TerminalMessageTest, ShowsControlCharactersByTheirCode) {
  const VexilRun run = Try(GetParam().arguments);
  EXPECT_THAT(run.Run().err, HasSubstr(kEscape));
  const std::string shown = ShownOnATerminal(run);
  EXPECT_THAT(shown, HasSubstr("\\x1B[2J"));
  EXPECT_THAT(shown, Not(HasSubstr(kEscape)));
}

const Message kMessages[] = {
    {"UnknownWord", {"try", "x" + kEscape}},
    {"ExtraWord", {"try", "say", "--text", "x", "y" + kEscape}},
};

INSTANTIATE_TEST_SUITE_P(Messages, TerminalMessageTest, ::testing::ValuesIn(kMessages),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(TerminalTest, ADiagnosticOfTheParserDoesNotControlATerminal) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("a.xml", "<x " + kEscape + "\xC2\x9B>");
  const VexilRun run({"--plugin=" + path});
  EXPECT_THAT(run.Run().err, HasSubstr(kEscape));
  const std::string shown = ShownOnATerminal(run);
  EXPECT_THAT(shown, HasSubstr("\\x1B[2J\\x9B"));
  EXPECT_THAT(shown, Not(HasSubstr(kEscape)));
}

}  // namespace

}  // namespace Kestrel::Testing
