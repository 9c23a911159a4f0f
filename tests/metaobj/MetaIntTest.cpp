// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaInt.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>

namespace {

using Kestrel::MetaObj::MetaInt;

TEST(MetaIntTest, IsZeroByDefault) {
  EXPECT_EQ(MetaInt::New()->GetValue(), 0);
  EXPECT_EQ(MetaInt::New().get(), MetaInt::New(0).get());
  EXPECT_EQ(&MetaInt::New(), &MetaInt::New());
}

TEST(MetaIntTest, SharesTheValuesFromMinusOneToTwenty) {
  for (long value = -1; value <= 20; ++value) {
    EXPECT_EQ(MetaInt::New(value).get(), MetaInt::New(value).get()) << value;
    EXPECT_EQ(MetaInt::New(value)->GetValue(), value);
  }
}

TEST(MetaIntTest, MakesANewObjectForAnyOtherValue) {
  for (const long value : {-2L, 21L, 1000000000000L}) {
    const auto first = MetaInt::New(value);
    const auto second = MetaInt::New(value);
    EXPECT_NE(first.get(), second.get()) << value;
    EXPECT_EQ(first.use_count(), 1) << value;
    EXPECT_EQ(first->GetValue(), value);
  }
}

TEST(MetaIntTest, PrintsTheSmallestValueWithItsSignAndAllDigits) {
  const auto smallest = MetaInt::New(std::numeric_limits<long>::min());
  EXPECT_EQ(smallest->ToString(), "-9223372036854775808");
  EXPECT_EQ(smallest->GetValue(), std::numeric_limits<long>::min());
}

TEST(MetaIntTest, PrintsTheLargestValue) {
  EXPECT_EQ(MetaInt::New(std::numeric_limits<long>::max())->ToString(), "9223372036854775807");
}

TEST(MetaIntTest, PrintsAsPrintfDoes) {
  for (long value = 1; value > 0 && value < std::numeric_limits<long>::max() / 10; value *= 7) {
    for (const long each : {value, -value, value - 1}) {
      char expected[32];
      std::snprintf(expected, sizeof expected, "%ld", each);
      EXPECT_EQ(MetaInt::New(each)->ToString(), expected);
    }
  }
}

TEST(MetaIntTest, IsInitializedWhenTheLibraryIsLoaded) {
  EXPECT_TRUE(MetaInt::_sInitialized);
  const MetaInt* const before = MetaInt::New(20).get();
  EXPECT_TRUE(MetaInt::Init());
  EXPECT_EQ(MetaInt::New(20).get(), before);
}

}  // namespace
