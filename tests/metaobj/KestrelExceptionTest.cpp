// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/KestrelException.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using Kestrel::KestrelException;

TEST(KestrelExceptionTest, KeepsALiteral) {
  EXPECT_STREQ(KestrelException("a literal").what(), "a literal");
}

TEST(KestrelExceptionTest, KeepsAString) {
  const std::string message(1000, 'm');
  EXPECT_EQ(KestrelException(message).what(), message);
}

TEST(KestrelExceptionTest, KeepsATemporaryString) {
  EXPECT_STREQ(KestrelException(std::string("made ") + "of two").what(), "made of two");
}

TEST(KestrelExceptionTest, KeepsAMutableArray) {
  char message[] = "an array";
  EXPECT_STREQ(KestrelException(message).what(), "an array");
}

TEST(KestrelExceptionTest, KeepsAView) {
  EXPECT_STREQ(KestrelException(std::string_view("viewed", 4)).what(), "view");
}

TEST(KestrelExceptionTest, NullCountsAsTheEmptyString) {
  const char* const none = nullptr;
  EXPECT_STREQ(KestrelException(none).what(), "");
}

TEST(KestrelExceptionTest, IsAStandardException) {
  EXPECT_TRUE((std::is_base_of_v<std::exception, KestrelException>));
  try {
    throw KestrelException("caught by its base");
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "caught by its base");
  }
}

TEST(KestrelExceptionTest, CopiesEvenWhenTheOriginalIsNotConst) {
  KestrelException original("twice");
  KestrelException copy(original);
  EXPECT_STREQ(copy.what(), "twice");
  KestrelException other("before");
  other = original;
  EXPECT_STREQ(other.what(), "twice");
}

TEST(KestrelExceptionTest, CopiesIndependently) {
  KestrelException original("first");
  const KestrelException copy(original);
  original = KestrelException("second");
  EXPECT_STREQ(copy.what(), "first");
}

TEST(KestrelExceptionTest, IsMadeFromStringsOnlyAndNeverImplicitly) {
  EXPECT_FALSE((std::is_constructible_v<KestrelException, int>));
  EXPECT_FALSE((std::is_convertible_v<const char*, KestrelException>));
}

}  // namespace
