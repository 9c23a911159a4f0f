// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Compares the scanner of --format-param with the regular expression that it implements.

#include <gtest/gtest.h>

#include <boost/regex.hpp>
#include <string>
#include <vector>

#include "kestrel/autocli/CliDispatcher.h"

namespace Kestrel::AutoCli {

namespace {

void ExpectSameAnswers(const std::vector<std::string>& texts) {
  const boost::regex pattern("^([a-zA-Z0-9 .\\-:]+)=(.+)$");
  CliDispatcher dispatcher;
  for (const std::string& text : texts) {
    OptionParser parser;
    // The text is placed after "=", where every string except the empty one is a value.
    parser.ParseVector({"--format-param=" + text});
    FormatParameters params;
    const auto output = CommandOutput::New();
    ASSERT_TRUE(dispatcher.HandleDispatcherOptions(parser, params, output));
    boost::smatch match;
    if (boost::regex_match(text, match, pattern)) {
      ASSERT_FALSE(output->HasError()) << text;
      ASSERT_EQ(1u, params.GetParameters().size()) << text;
      ASSERT_EQ(match[1], params.GetParameters().begin()->first) << text;
      ASSERT_EQ(match[2], params.GetParameters().begin()->second) << text;
    } else {
      ASSERT_EQ(std::vector<std::string>{"Unable to read format parameter " + text},
                output->GetErrors());
      ASSERT_TRUE(params.GetParameters().empty()) << text;
    }
  }
}

TEST(FormatParamPatternTest, ChecksEveryShortStringAsTheExpressionDoes) {
  std::vector<std::string> texts;
  std::vector<std::string> longest = {""};
  for (int length = 1; length <= 5; ++length) {
    std::vector<std::string> longer;
    for (const std::string& text : longest) {
      for (const char c : std::string("=-:. aZ1\n_")) {
        longer.push_back(text + c);
      }
    }
    texts.insert(texts.end(), longer.begin(), longer.end());
    longest = std::move(longer);
  }
  ExpectSameAnswers(texts);
}

TEST(FormatParamPatternTest, ChecksEveryByteInEachPlaceAsTheExpressionDoes) {
  std::vector<std::string> texts;
  for (int byte = 0; byte < 256; ++byte) {
    const std::string c(1, static_cast<char>(byte));
    texts.insert(texts.end(), {c + "=a", "a" + c + "=b", "a=" + c, "a=b" + c});
  }
  ExpectSameAnswers(texts);
}

}  // namespace

}  // namespace Kestrel::AutoCli
