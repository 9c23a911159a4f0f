// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/Random.h"

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test

using Kestrel::Testing::Random;

using Value = std::shared_ptr<MetaObject>;
using Errors = std::vector<std::string>;

// The model compares values field by field, with public operations only.
bool IsSameByModel(const Value& mine, const Value& other, Errors* errors);

void Tell(Errors* errors, const std::string& text) {
  if (errors != nullptr) {
    errors->push_back(text);
  }
}

bool IsSameRecordByModel(const MetaStruct& mine, const MetaStruct& other, Errors* errors) {
  if (mine.GetTypeName() != other.GetTypeName()) {
    Tell(errors, "Type names do not match.");
  }
  const std::size_t count = mine.GetFieldNames().size();
  const std::size_t otherCount = other.GetFieldNames().size();
  if (count != otherCount) {
    Tell(errors, "Mismatch on number of fields set in struct. Expected " + std::to_string(count) +
                     " found " + std::to_string(otherCount));
  }
  for (const std::string& name : mine.GetFieldNames()) {
    if (!other.HasField(name)) {
      Tell(errors, "Missing field in input: " + name);
      return false;
    }
    const Value value = mine.GetField(name);
    const Value otherValue = other.GetField(name);
    if (value->GetType() != otherValue->GetType() || !IsSameByModel(value, otherValue, errors)) {
      Tell(errors, "Type mismatch on field: " + name);
      return false;
    }
  }
  return count == otherCount;
}

bool IsSameListByModel(const MetaList& mine, const MetaList& other, Errors* errors) {
  if (mine.GetListType() != other.GetListType()) {
    Tell(errors, "Mismatch on list type");
    return false;
  }
  if (mine.GetListStructure() == nullptr || other.GetListStructure() == nullptr) {
    return true;
  }
  if (!IsSameRecordByModel(*mine.GetListStructure(), *other.GetListStructure(), errors)) {
    Tell(errors, "List type mismatch list and input");
    return false;
  }
  return true;
}

// Expects two values of the same kind.
bool IsSameByModel(const Value& mine, const Value& other, Errors* errors) {
  if (mine->GetType() == MetaType::Struct) {
    return IsSameRecordByModel(static_cast<const MetaStruct&>(*mine),
                               static_cast<const MetaStruct&>(*other), errors);
  }
  if (mine->GetType() == MetaType::List) {
    return IsSameListByModel(static_cast<const MetaList&>(*mine),
                             static_cast<const MetaList&>(*other), errors);
  }
  return true;
}

// Makes values whose shapes are often equal or nearly equal.
class RandomValues {
 public:
  explicit RandomValues(Random& random) : random_(random) {}

  std::shared_ptr<MetaStruct> Record(unsigned depth) {
    auto structure = MetaStruct::New(Pick(12) == 0 ? "Other" : "Rec");
    // Sometimes more fields than a layout can have.
    const unsigned more = Pick(15) == 0 ? 70 : 0;
    for (unsigned field = 0; field < more; ++field) {
      structure->SetField("m" + std::to_string(field), 1);
    }
    for (const char* const name : {"c", "a", "b"}) {
      if (Pick(10) != 0) {
        structure->SetField(name, Any(depth, name[0]), Pick(3) == 0 ? "text" : "");
      }
    }
    return structure;
  }

 private:
  unsigned Pick(unsigned count) { return static_cast<unsigned>(random_.Below(count)); }

  // The kind mostly follows from the name, so that shapes are often equal.
  Value Any(unsigned depth, char name) {
    const unsigned kind = Pick(10) == 0 ? Pick(4) : static_cast<unsigned>(name - 'a');
    if (kind == 0 || depth == 0) {
      return MetaInt::New(static_cast<long>(Pick(100)));
    }
    if (kind == 1) {
      return Record(depth - 1);
    }
    if (kind == 2) {
      return Pick(10) == 0 ? MetaList::New(MetaType::Struct, nullptr)
                           : MetaList::New(MetaType::Struct, Record(depth - 1));
    }
    return Pick(2) == 0 ? Value(MetaBool::New(true)) : MetaList::New(MetaType::String);
  }

  Random& random_;
};

TEST(ShapeComparisonTest, AgreesWithASimpleImplementation) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  RandomValues values(random);
  unsigned same = 0;
  for (unsigned round = 0; round < 5000; ++round) {
    // Sometimes deeper than the fast path looks.
    const unsigned depth = round % 250 == 0 ? 9 : round % 4;
    const Value one = values.Record(depth);
    const Value other = values.Record(depth);
    Errors expected;
    Errors errors;
    const bool isSame = IsSameByModel(one, other, &expected);
    ASSERT_EQ(one->IsSameStructure(other, &errors), isSame);
    ASSERT_EQ(errors, expected);
    ASSERT_EQ(one->IsSameStructure(other, nullptr), isSame);
    ASSERT_TRUE(one->IsSameStructure(one, nullptr));
    same += isSame ? 1 : 0;
  }
  EXPECT_GT(same, 100u);
  EXPECT_LT(same, 4900u);
}

}  // namespace
