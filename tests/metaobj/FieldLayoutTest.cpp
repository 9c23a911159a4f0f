#include "metaobj/FieldLayout.h"

#include <gtest/gtest.h>

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test

TEST(FieldLayoutTest, IsSharedByShape) {
  const LayoutRef one = FieldLayout::Root("Rec")->With("a", "").layout->With("b", "").layout;
  const LayoutRef other = FieldLayout::Root("Rec")->With("b", "").layout->With("a", "").layout;
  EXPECT_EQ(one.Get(), other.Get());
}

}  // namespace
