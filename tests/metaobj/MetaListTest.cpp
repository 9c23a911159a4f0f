#include "kestrel/metaobj/MetaList.h"

#include <gtest/gtest.h>

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test

TEST(MetaListTest, PrintsItsElementsWithoutBrackets) {
  const auto list = MetaList::New(MetaType::Int);
  list->AddAll(std::vector<long>{1, 2, 3});
  EXPECT_EQ(list->ToString(), "1, 2, 3");
}

}  // namespace
