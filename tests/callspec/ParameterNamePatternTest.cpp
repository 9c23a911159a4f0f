// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <boost/regex.hpp>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/callspec/ParameterSpec.h"

namespace Kestrel::CallSpec {
namespace {

using std::string_literals::operator""s;

bool IsAccepted(const std::string& name) {
  try {
    return ParameterSpec::New(name, String)->GetName() == name;
  } catch (const KestrelException&) {
    return false;
  }
}

bool Matches(const std::string& name) {
  static const boost::regex pattern("[a-z0-9-]+");
  return boost::regex_match(name, pattern);
}

TEST(ParameterNamePatternTest, EqualsTheExpressionOnAllNamesOfAtMostTwoBytes) {
  ASSERT_EQ(IsAccepted(""), Matches(""));
  for (int first = 0; first < 256; ++first) {
    const std::string name(1, static_cast<char>(first));
    ASSERT_EQ(IsAccepted(name), Matches(name)) << testing::PrintToString(name);
    for (int second = 0; second < 256; ++second) {
      const std::string longer = name + static_cast<char>(second);
      ASSERT_EQ(IsAccepted(longer), Matches(longer)) << testing::PrintToString(longer);
    }
  }
}

TEST(ParameterNamePatternTest, EqualsTheExpressionOnAllNamesOfAtMostFiveSampleBytes) {
  const std::string alphabet = "a0-Z_ \n\0"s;
  std::vector<std::string> names = {""};
  for (std::size_t first = 0, length = 0; length < 5; ++length) {
    const std::size_t end = names.size();
    for (; first < end; ++first) {
      for (const char c : alphabet) {
        names.push_back(names[first] + c);
      }
    }
  }
  ASSERT_GT(names.size(), 30000U);
  for (const std::string& name : names) {
    ASSERT_EQ(IsAccepted(name), Matches(name)) << testing::PrintToString(name);
  }
}

}  // namespace
}  // namespace Kestrel::CallSpec
