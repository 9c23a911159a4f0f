// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Compares the parser's scanners with the regular expressions that they implement.

#include <gtest/gtest.h>

#include <boost/regex.hpp>
#include <string>
#include <vector>

#include "kestrel/autocli/OptionParser.h"

namespace Kestrel::AutoCli {

namespace {

// Makes all strings that consist of `prefix` and up to `longest` characters of `alphabet`.
std::vector<std::string> MakeStrings(const std::string& prefix, const std::string& alphabet,
                                     int longest) {
  std::vector<std::string> strings = {prefix};
  std::size_t first = 0;
  for (int length = 1; length <= longest; ++length) {
    for (const std::size_t end = strings.size(); first < end; ++first) {
      for (const char c : alphabet) {
        strings.push_back(strings[first] + c);
      }
    }
  }
  return strings;
}

void ExpectSameAnswers(const std::vector<std::string>& tokens) {
  const boost::regex option("^(-[a-zA-Z]|--([a-zA-Z][a-zA-Z0-9-]+)(=.+)?)$");
  const boost::regex shortOption("^-([a-zA-Z])$");
  const boost::regex longOption("^--([a-zA-Z][a-zA-Z0-9-]+)$");
  const boost::regex withValue("^--([a-zA-Z][a-zA-Z0-9-]+)=(.+)$");
  OptionParser parser;
  std::size_t errors = 0;
  for (const std::string& token : tokens) {
    ASSERT_EQ(boost::regex_match(token, option), parser.IsParameter(token)) << token;
    std::string name = "-";
    std::string value;
    const bool hasValue = parser.ParseParameter(token, name, value);
    boost::smatch match;
    if (boost::regex_match(token, match, shortOption) ||
        boost::regex_match(token, match, longOption)) {
      ASSERT_FALSE(hasValue) << token;
      ASSERT_EQ(match[1], name) << token;
    } else if (boost::regex_match(token, match, withValue)) {
      ASSERT_TRUE(hasValue) << token;
      ASSERT_EQ(match[1], name) << token;
      ASSERT_EQ(match[2], value) << token;
    } else {
      ++errors;
      ASSERT_FALSE(hasValue) << token;
      ASSERT_EQ("-", name) << token;
    }
    ASSERT_EQ(errors, parser.GetParseErrors().size()) << token;
  }
}

TEST(OptionTokenTest, ChecksEveryShortTokenAsTheExpressionsDo) {
  ExpectSameAnswers(MakeStrings("", "-=aZ1.\n", 6));
}

TEST(OptionTokenTest, ChecksEveryShortTextAfterTwoDashesAsTheExpressionsDo) {
  ExpectSameAnswers(MakeStrings("--", "-=aZ1.\n", 6));
}

TEST(OptionTokenTest, ChecksEveryByteInEachPlaceAsTheExpressionsDo) {
  std::vector<std::string> tokens;
  for (int byte = 0; byte < 256; ++byte) {
    const std::string c(1, static_cast<char>(byte));
    for (const std::string& token : {c, "-" + c, "-a" + c, "--" + c + "a", "--a" + c, "--ab" + c,
                                     "--ab" + c + "d", "--ab=" + c}) {
      tokens.push_back(token);
    }
  }
  ExpectSameAnswers(tokens);
}

}  // namespace

}  // namespace Kestrel::AutoCli
