// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/PlainText.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <vector>

#include "support/SampleValues.h"

namespace Kestrel::AutoCli {
namespace {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaType;

void ExpectToString(const std::shared_ptr<MetaObject>& value) {
  PlainText plain;
  EXPECT_EQ(plain.Of(*value), value->ToString());
  EXPECT_EQ(plain.Measure(*value), value->ToString().size());
}

TEST(PlainTextTest, IsWhatToStringReturns) {
  ExpectToString(MetaBool::New(false));
  ExpectToString(MetaBool::New(true));
  ExpectToString(MetaString::New(""));
  ExpectToString(MetaString::New(std::string("a\0b", 3)));
  ExpectToString(Testing::MakeDisk("disk1", 512));
  ExpectToString(Testing::MakeDisks({{"a", 1}, {"b", 2}}));
  for (const MetaType type : {MetaType::Int, MetaType::Bool, MetaType::String, MetaType::Struct}) {
    ExpectToString(std::make_shared<Testing::LyingValue>(type));
  }
}

TEST(PlainTextTest, IsWhatToStringReturnsForNumbersOfEveryLength) {
  ExpectToString(MetaInt::New(0));
  ExpectToString(MetaInt::New(LONG_MIN));
  ExpectToString(MetaInt::New(LONG_MAX));
  for (long power = 1; power <= LONG_MAX / 10; power *= 10) {
    for (const long number : {power - 1, power, power + 1, power * 5}) {
      ExpectToString(MetaInt::New(number));
      ExpectToString(MetaInt::New(-number));
    }
  }
  for (int bit = 0; bit < 63; ++bit) {
    for (const long number : {(1L << bit) - 1, 1L << bit, (1L << bit) + 1}) {
      ExpectToString(MetaInt::New(number));
      ExpectToString(MetaInt::New(-number));
    }
  }
}

}  // namespace
}  // namespace Kestrel::AutoCli
