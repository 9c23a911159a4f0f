// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaString.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>

#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

namespace {

using Kestrel::MetaObj::MetaString;
using Kestrel::Testing::kIsSanitized;
using Kestrel::Testing::MemoryLimit;
using namespace std::string_literals;  // NOLINT: strings with a NUL inside

TEST(MetaStringTest, IsEmptyByDefault) {
  EXPECT_EQ(MetaString::New()->GetValue(), "");
  EXPECT_EQ(MetaString::New()->ToString(), "");
  EXPECT_EQ(&MetaString::New(), &MetaString::New());
}

TEST(MetaStringTest, SharesTheEmptyString) {
  const std::string empty;
  const MetaString* const shared = MetaString::New().get();
  EXPECT_EQ(MetaString::New("").get(), shared);
  EXPECT_EQ(MetaString::New(empty).get(), shared);
  EXPECT_EQ(MetaString::New(std::string()).get(), shared);
  EXPECT_EQ(MetaString::NewUtf8WithEscapes(std::string()).get(), shared);
}

TEST(MetaStringTest, NullCountsAsTheEmptyString) {
  const char* const none = nullptr;
  EXPECT_EQ(MetaString::New(none).get(), MetaString::New().get());
}

TEST(MetaStringTest, MakesANewObjectForAnyOtherValue) {
  const auto first = MetaString::New("x");
  const auto second = MetaString::New("x");
  EXPECT_NE(first.get(), second.get());
  EXPECT_EQ(first.use_count(), 1);
}

TEST(MetaStringTest, KeepsItsBytes) {
  const std::string value("a\0b\xFF\n", 5);
  EXPECT_EQ(MetaString::New(value)->GetValue(), value);
  EXPECT_EQ(MetaString::New(std::string(value))->GetValue(), value);
  EXPECT_EQ(MetaString::New("a\xFF")->GetValue(), "a\xFF");
}

TEST(MetaStringTest, MovesATemporary) {
  std::string value(1000, 'x');
  const char* const bytes = value.data();
  EXPECT_EQ(MetaString::New(std::move(value))->GetValue().data(), bytes);
}

TEST(MetaStringTest, CopiesAnLvalue) {
  std::string value = "before";
  const auto copy = MetaString::New(value);
  value = "after";
  EXPECT_EQ(copy->GetValue(), "before");
}

TEST(MetaStringTest, PrintsItsValueUnchanged) {
  EXPECT_EQ(MetaString::New("it's \"so\" \\n")->ToString(), "it's \"so\" \\n");
}

TEST(MetaStringTest, LeavesValidTextUnchanged) {
  const std::string value = "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x99\x82";
  EXPECT_EQ(MetaString::NewUtf8WithEscapes(std::string(value))->GetValue(), value);
}

TEST(MetaStringTest, EscapesTextThatIsNotValid) {
  EXPECT_EQ(MetaString::NewUtf8WithEscapes("a\xFFz")->GetValue(), "a\\xffz");
  EXPECT_EQ(MetaString::NewUtf8WithEscapes("\xC3\xBC\xC3")->GetValue(), "\xC3\xBC\\xc3");
}

TEST(MetaStringTest, ChecksOnlyTheBytesBeforeTheFirstNul) {
  EXPECT_EQ(MetaString::NewUtf8WithEscapes("good\0\xFF"s)->GetValue(), "good\0\xFF"s);
  EXPECT_EQ(MetaString::NewUtf8WithEscapes("\xFF\0more"s)->GetValue(), "\\xff");
  EXPECT_EQ(MetaString::NewUtf8WithEscapes("\0\xFF"s)->GetValue(), "\0\xFF"s);
}

TEST(MetaStringTest, NewLeavesInvalidTextUnchanged) {
  EXPECT_EQ(MetaString::New("a\xFFz")->GetValue(), "a\xFFz");
}

TEST(MetaStringTest, ThrowsWhenMemoryRunsOutForTheEscapes) {
  if (kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs much memory";
  }
  std::string value(16 * MemoryLimit::kRest, '\xFF');
  const MemoryLimit limit;
  EXPECT_THROW(MetaString::NewUtf8WithEscapes(std::move(value)), std::bad_alloc);
}

TEST(MetaStringTest, HoldsALongValue) {
  const std::string value(100000, 'v');
  EXPECT_EQ(MetaString::New(value)->ToString(), value);
}

TEST(MetaStringTest, IsInitializedWhenTheLibraryIsLoaded) {
  EXPECT_TRUE(MetaString::_sInitialized);
  const MetaString* const before = MetaString::New().get();
  EXPECT_TRUE(MetaString::Init());
  EXPECT_EQ(MetaString::New().get(), before);
}

}  // namespace
