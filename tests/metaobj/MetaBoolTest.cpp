// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaBool.h"

#include <gtest/gtest.h>

namespace {

using Kestrel::MetaObj::MetaBool;

TEST(MetaBoolTest, IsFalseByDefault) {
  EXPECT_FALSE(MetaBool::New()->GetValue());
  EXPECT_EQ(&MetaBool::New(), &MetaBool::New(false));
}

TEST(MetaBoolTest, HasOneInstanceForEachValue) {
  EXPECT_EQ(MetaBool::New(true).get(), MetaBool::New(true).get());
  EXPECT_EQ(MetaBool::New(false).get(), MetaBool::New(false).get());
  EXPECT_NE(MetaBool::New(true).get(), MetaBool::New(false).get());
}

TEST(MetaBoolTest, ReturnsReferencesToItsSharedOwners) {
  EXPECT_EQ(&MetaBool::New(true), &MetaBool::New(true));
  const long owners = MetaBool::New(true).use_count();
  const std::shared_ptr<MetaBool> mine = MetaBool::New(true);
  EXPECT_EQ(MetaBool::New(true).use_count(), owners + 1);
}

TEST(MetaBoolTest, KeepsItsValue) {
  EXPECT_TRUE(MetaBool::New(true)->GetValue());
  EXPECT_FALSE(MetaBool::New(false)->GetValue());
}

TEST(MetaBoolTest, PrintsTrueOrFalse) {
  EXPECT_EQ(MetaBool::New(true)->ToString(), "true");
  EXPECT_EQ(MetaBool::New(false)->ToString(), "false");
}

TEST(MetaBoolTest, IsInitializedWhenTheLibraryIsLoaded) {
  EXPECT_TRUE(MetaBool::_sInitialized);
  const MetaBool* const before = MetaBool::New(true).get();
  EXPECT_TRUE(MetaBool::Init());
  EXPECT_EQ(MetaBool::New(true).get(), before);
}

}  // namespace
