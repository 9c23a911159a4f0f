#include "kestrel/metaobj/MetaStruct.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test
using Kestrel::KestrelException;
using testing::ElementsAre;

TEST(MetaStructTest, ListsItsFieldsInByteOrder) {
  const auto record = MetaStruct::New("Rec");
  record->SetField("zeta", 1);
  record->SetField("alpha", 2);
  record->SetField("Beta", 3);
  EXPECT_THAT(record->GetFieldNames(), ElementsAre("Beta", "alpha", "zeta"));
}

}  // namespace
