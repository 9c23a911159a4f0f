// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <boost/regex.hpp>
#include <list>
#include <string>

#include "kestrel/autocli/XmlPlugin.h"

namespace Kestrel::AutoCli {
namespace {

std::list<std::string> SplitByExpression(const std::string& path) {
  static const boost::regex fullStop("\\.");
  return {boost::sregex_token_iterator(path.begin(), path.end(), fullStop, -1),
          boost::sregex_token_iterator()};
}

TEST(XmlPluginPathTest, SplitsAllShortPathsAsTheExpressionDoes) {
  std::string path;
  for (int number = 0; number < 4 * 4 * 4 * 4 * 4 * 4 * 4; ++number) {
    path.clear();
    for (int rest = number; rest > 0; rest /= 4) {
      if (rest % 4 > 0) {
        path += "a.\n"[rest % 4 - 1];
      }
    }
    EXPECT_EQ(XmlPlugin::SplitPath(path), SplitByExpression(path)) << path;
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli
