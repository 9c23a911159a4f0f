// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/LayoutCache.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/FieldLayout.h"
#include "metaobj/ValueAccess.h"

namespace Kestrel::AutoCli {
namespace {

using MetaObj::FieldLayout;
using MetaObj::MetaStruct;
using MetaObj::ValueAccess;

std::shared_ptr<MetaStruct> MakeStruct(const std::string& fieldName) {
  auto structure = MetaStruct::New("Row");
  structure->SetField(fieldName, 1);
  return structure;
}

/// Has structures of four layouts. The first value that it makes is 1, the second one is 2, etc.
class LayoutCacheTest : public ::testing::Test {
 protected:
  template <typename Cache>
  int Get(Cache& cache, const std::shared_ptr<MetaStruct>& structure, long level = 0) {
    return cache.Get(*ValueAccess::Layout(*structure), level, [this] { return ++made_; });
  }

  const std::shared_ptr<MetaStruct> a_ = MakeStruct("a");
  const std::shared_ptr<MetaStruct> b_ = MakeStruct("b");
  const std::shared_ptr<MetaStruct> c_ = MakeStruct("c");
  const std::shared_ptr<MetaStruct> d_ = MakeStruct("d");
  int made_ = 0;
};

TEST_F(LayoutCacheTest, MakesTheValueOfALayoutOnce) {
  LayoutCache<int, 3> cache;
  EXPECT_EQ(Get(cache, a_), 1);
  EXPECT_EQ(Get(cache, MakeStruct("a")), 1);
  EXPECT_EQ(Get(cache, b_), 2);
  EXPECT_EQ(Get(cache, a_), 1);
  EXPECT_EQ(Get(cache, b_), 2);
}

TEST_F(LayoutCacheTest, KeepsAValueForEachLevel) {
  LayoutCache<int, 3> cache;
  EXPECT_EQ(Get(cache, a_, -7), 1);
  EXPECT_EQ(Get(cache, a_, 7), 2);
  EXPECT_EQ(Get(cache, a_, -7), 1);
  EXPECT_EQ(Get(cache, a_, 7), 2);
}

TEST_F(LayoutCacheTest, UsesLevelZeroIfNoneIsGiven) {
  LayoutCache<int, 3> cache;
  EXPECT_EQ(Get(cache, a_, 0), 1);
  EXPECT_EQ(cache.Get(*ValueAccess::Layout(*a_), [] { return 9; }), 1);
}

TEST_F(LayoutCacheTest, ReturnsAReferenceToTheValueThatItKeeps) {
  LayoutCache<std::string, 1> cache;
  const FieldLayout& layout = *ValueAccess::Layout(*a_);
  cache.Get(layout, [] { return std::string("made"); }) += " and changed";
  EXPECT_EQ(cache.Get(layout, [] { return std::string("made again"); }), "made and changed");
}

TEST_F(LayoutCacheTest, ReplacesTheOldestValueWhenFull) {
  LayoutCache<int, 3> cache;
  Get(cache, a_);
  Get(cache, b_);
  Get(cache, c_);
  Get(cache, a_);  // A use does not make an entry newer.
  EXPECT_EQ(Get(cache, d_), 4);
  EXPECT_EQ(Get(cache, b_), 2);
  EXPECT_EQ(Get(cache, c_), 3);
  EXPECT_EQ(Get(cache, a_), 5);
  EXPECT_EQ(Get(cache, c_), 3);
  EXPECT_EQ(Get(cache, d_), 4);
  EXPECT_EQ(Get(cache, b_), 6);
}

TEST_F(LayoutCacheTest, RemembersTheLastLayoutWhenThereIsRoomForOne) {
  LayoutCache<int, 1> cache;
  EXPECT_EQ(Get(cache, a_), 1);
  EXPECT_EQ(Get(cache, a_), 1);
  EXPECT_EQ(Get(cache, b_), 2);
  EXPECT_EQ(Get(cache, b_), 2);
  EXPECT_EQ(Get(cache, a_), 3);
}

TEST_F(LayoutCacheTest, IsUnchangedWhenAValueCannotBeMade) {
  LayoutCache<int, 1> cache;
  Get(cache, a_);
  const auto fail = []() -> int { throw std::runtime_error("no value"); };
  EXPECT_THROW(cache.Get(*ValueAccess::Layout(*b_), fail), std::runtime_error);
  EXPECT_EQ(Get(cache, a_), 1);
}

TEST_F(LayoutCacheTest, KeepsItsValuesWhenItIsMoved) {
  LayoutCache<int, 3> cache;
  Get(cache, a_);
  Get(cache, b_);
  LayoutCache<int, 3> moved(std::move(cache));
  EXPECT_EQ(Get(moved, a_), 1);
  EXPECT_EQ(Get(moved, b_), 2);
}

// If the cache did not own its layouts, a layout could be destroyed and another one be created at
// its address.
TEST_F(LayoutCacheTest, OwnsTheLayoutsThatItContainsAndNoOthers) {
  auto structure = MetaStruct::New("Row");
  structure->SetField("field of this test alone", 1);
  const FieldLayout& layout = *ValueAccess::Layout(*structure);
  const std::weak_ptr<const MetaObj::FieldText> text = layout.Texts()[0];
  LayoutCache<int, 1> cache;
  Get(cache, structure);
  structure.reset();
  EXPECT_FALSE(text.expired());
  Get(cache, a_);
  EXPECT_TRUE(text.expired());
}

}  // namespace
}  // namespace Kestrel::AutoCli
