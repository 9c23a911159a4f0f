// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/CommandLine.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "kestrel/autocli/OptionParser.h"
#include "support/Random.h"

namespace Kestrel::Testing {

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using Vexil::CommandLine;
using Vexil::SplitCommandLine;
using Vexil::TypedOption;

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs GetPairs(const std::vector<TypedOption>& options) {
  Pairs pairs;
  for (const TypedOption& option : options) {
    pairs.emplace_back(option.name, option.value);
  }
  return pairs;
}

TEST(CommandLineTest, RemembersHowAnOptionWasTyped) {
  const CommandLine line =
      SplitCommandLine({"--formatter=xml", "--debug", "storage", "list", "-s", "--sort", "a=b"});
  ASSERT_EQ(2U, line.dispatcherOptions.size());
  EXPECT_EQ("--formatter", line.dispatcherOptions[0].spelling);
  EXPECT_FALSE(line.dispatcherOptions[0].tookWord);
  EXPECT_TRUE(line.dispatcherOptions[1].tookWord);
  EXPECT_THAT(line.path, ElementsAre("list"));
  ASSERT_EQ(2U, line.commandOptions.size());
  EXPECT_EQ("-s", line.commandOptions[0].spelling);
  EXPECT_FALSE(line.commandOptions[0].tookWord);
  EXPECT_EQ("a=b", line.commandOptions[1].value);
}

TEST(CommandLineTest, SplitsAsTheParserDoes) {
  const std::vector<std::string> tokens = {"-a",  "--bc", "--bc=d", "--bc=", "word", "",
                                           "--x", "--",   "-",      "-ab",   "-1"};
  Random random;
  for (int round = 0; round < Rounds(500, 20000); ++round) {
    std::vector<std::string> arguments(random.Below(8));
    for (std::string& argument : arguments) {
      argument = random.Pick(tokens);
    }
    AutoCli::OptionParser parser;
    parser.ParseVector(arguments);
    const CommandLine line = SplitCommandLine(arguments);
    EXPECT_EQ(parser.GetDispatcherParameters(), GetPairs(line.dispatcherOptions))
        << random.HowToRepeat();
    EXPECT_THAT(line.path, ElementsAreArray(parser.GetCommandPath())) << random.HowToRepeat();
    EXPECT_EQ(parser.GetCommandParameters(), GetPairs(line.commandOptions)) << random.HowToRepeat();
    EXPECT_EQ(parser.GetParseErrors().empty(), line.extraWords.empty()) << random.HowToRepeat();
  }
}

}  // namespace

}  // namespace Kestrel::Testing
