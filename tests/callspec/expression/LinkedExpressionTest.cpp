// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// This program links the objects of the library, so it compiles expressions without a module.

#include <gtest/gtest.h>

#include <boost/regex.hpp>

#include "callspec/Expression.h"

namespace Kestrel::CallSpec {
namespace {

TEST(LinkedExpressionTest, MatchesWholeValues) {
  const auto expression = CompileExpression("a+");
  EXPECT_TRUE(expression->MatchesWhole("aaa"));
  EXPECT_FALSE(expression->MatchesWhole("aab"));
  EXPECT_FALSE(expression->MatchesWhole(""));
}

TEST(LinkedExpressionTest, RefusesATextThatIsNotAnExpression) {
  EXPECT_THROW(CompileExpression("("), boost::regex_error);
}

}  // namespace
}  // namespace Kestrel::CallSpec
