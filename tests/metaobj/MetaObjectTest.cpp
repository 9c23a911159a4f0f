// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <type_traits>
#include <utility>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/SampleValues.h"

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test
using Kestrel::Testing::LyingValue;
using testing::ElementsAre;
using testing::IsEmpty;

// Called while static objects are initialised, perhaps before the static members of other sources.
const std::string kTextAtStart = MetaTypeString(MetaType::List) + MetaInt::New(20)->ToString() +
                                 MetaBool::New(true)->ToString() + MetaString::New()->ToString() +
                                 MetaStruct::New("Early")->ToString();

TEST(MetaObjectTest, WorksInStaticObjects) { EXPECT_EQ(kTextAtStart, "List20true{}"); }

// Whether a caller can make a value without its factory, by writing braces in place of the flag
// that only factories can make.
template <typename Value, typename Argument, typename = void>
struct IsMadeByBraces : std::false_type {};
template <typename Value, typename Argument>
struct IsMadeByBraces<Value, Argument, std::void_t<decltype(Value(std::declval<Argument>(), {}))>>
    : std::true_type {};

TEST(MetaObjectTest, OnlyTheFactoriesMakeValues) {
  EXPECT_FALSE(std::is_default_constructible_v<MetaObject::FactoryFlag>);
  EXPECT_FALSE((std::is_constructible_v<MetaBool, bool>));
  EXPECT_FALSE((std::is_constructible_v<MetaInt, long>));
  EXPECT_FALSE((std::is_constructible_v<MetaString, std::string>));
  EXPECT_FALSE((std::is_constructible_v<MetaStruct, std::string>));
  EXPECT_FALSE((std::is_constructible_v<MetaStruct, std::shared_ptr<MetaStruct>>));
  EXPECT_FALSE((std::is_constructible_v<MetaList, MetaType>));
  EXPECT_FALSE((IsMadeByBraces<MetaBool, bool>::value));
  EXPECT_FALSE((IsMadeByBraces<MetaInt, long>::value));
  EXPECT_FALSE((IsMadeByBraces<MetaString, std::string>::value));
  EXPECT_FALSE((IsMadeByBraces<MetaStruct, const std::string&>::value));
  EXPECT_FALSE((IsMadeByBraces<MetaList, MetaType>::value));
}

TEST(MetaObjectTest, IsAbstractAndNoValueCanBeCopied) {
  EXPECT_TRUE(std::is_abstract_v<MetaObject>);
  EXPECT_FALSE(std::is_copy_constructible_v<MetaBool> || std::is_copy_assignable_v<MetaBool>);
  EXPECT_FALSE(std::is_copy_constructible_v<MetaInt> || std::is_copy_assignable_v<MetaInt>);
  EXPECT_FALSE(std::is_copy_constructible_v<MetaString> || std::is_copy_assignable_v<MetaString>);
  EXPECT_FALSE(std::is_copy_constructible_v<MetaStruct> || std::is_copy_assignable_v<MetaStruct>);
  EXPECT_FALSE(std::is_copy_constructible_v<MetaList> || std::is_copy_assignable_v<MetaList>);
}

TEST(MetaObjectTest, NumbersItsKinds) {
  EXPECT_EQ(MetaType::Int, 0);
  EXPECT_EQ(MetaType::Bool, 1);
  EXPECT_EQ(MetaType::String, 2);
  EXPECT_EQ(MetaType::Struct, 3);
  EXPECT_EQ(MetaType::List, 4);
  EXPECT_EQ(sizeof(MetaType), 4u);
}

TEST(MetaObjectTest, NamesItsKinds) {
  EXPECT_EQ(MetaTypeString(MetaType::Int), "Int");
  EXPECT_EQ(MetaTypeString(MetaType::Bool), "Bool");
  EXPECT_EQ(MetaTypeString(MetaType::String), "String");
  EXPECT_EQ(MetaTypeString(MetaType::Struct), "Struct");
  EXPECT_EQ(MetaTypeString(MetaType::List), "List");
}

TEST(MetaObjectTest, NamesNoOtherKind) {
  EXPECT_EQ(MetaTypeString(static_cast<MetaType>(5)), "");
  EXPECT_EQ(MetaTypeString(static_cast<MetaType>(-1)), "");
  EXPECT_EQ(MetaTypeString(static_cast<MetaType>(2147483647)), "");
}

TEST(MetaObjectTest, ReturnsTheSameNameObjectEachTime) {
  EXPECT_EQ(&MetaTypeString(MetaType::Int), &MetaTypeString(MetaType::Int));
  EXPECT_EQ(&MetaTypeString(static_cast<MetaType>(5)), &MetaTypeString(static_cast<MetaType>(6)));
}

TEST(MetaObjectTest, KnowsTheKindOfEachClass) {
  EXPECT_EQ(MetaInt::New(7)->GetType(), MetaType::Int);
  EXPECT_EQ(MetaBool::New(true)->GetType(), MetaType::Bool);
  EXPECT_EQ(MetaString::New("x")->GetType(), MetaType::String);
  EXPECT_EQ(MetaStruct::New("X")->GetType(), MetaType::Struct);
  EXPECT_EQ(MetaList::New(MetaType::Int)->GetType(), MetaType::List);
}

TEST(MetaObjectTest, ScalarsOfOneKindMatchWhateverTheirValuesAre) {
  std::vector<std::string> errors;
  EXPECT_TRUE(MetaInt::New(1)->IsSameStructure(MetaInt::New(99), &errors));
  EXPECT_TRUE(MetaBool::New(true)->IsSameStructure(MetaBool::New(false), &errors));
  EXPECT_TRUE(MetaString::New("a")->IsSameStructure(MetaString::New(), &errors));
  EXPECT_THAT(errors, IsEmpty());
}

TEST(MetaObjectTest, ScalarsOfTwoKindsDiffer) {
  std::vector<std::string> errors;
  EXPECT_FALSE(MetaBool::New(true)->IsSameStructure(MetaInt::New(1), &errors));
  EXPECT_THAT(errors, ElementsAre("Type mismatch in structure.  Expecting Bool got Int"));
}

TEST(MetaObjectTest, AScalarDiffersFromAStructureAndAList) {
  std::vector<std::string> errors;
  EXPECT_FALSE(MetaInt::New(1)->IsSameStructure(MetaStruct::New("X"), &errors));
  EXPECT_FALSE(MetaString::New("1")->IsSameStructure(MetaList::New(MetaType::Int), &errors));
  EXPECT_THAT(errors, ElementsAre("Type mismatch in structure.  Expecting Int got Struct",
                                  "Type mismatch in structure.  Expecting String got List"));
}

TEST(MetaObjectTest, KeepsEarlierErrors) {
  std::vector<std::string> errors = {"earlier"};
  EXPECT_FALSE(MetaInt::New(1)->IsSameStructure(MetaString::New("1"), &errors));
  EXPECT_THAT(errors,
              ElementsAre("earlier", "Type mismatch in structure.  Expecting Int got String"));
}

TEST(MetaObjectTest, ComparesWithoutAVector) {
  EXPECT_FALSE(MetaInt::New(1)->IsSameStructure(MetaString::New("1"), nullptr));
  EXPECT_TRUE(MetaInt::New(1)->IsSameStructure(MetaInt::New(2), nullptr));
}

TEST(MetaObjectTest, AScalarDiffersSilentlyFromNull) {
  std::vector<std::string> errors;
  EXPECT_FALSE(MetaInt::New(1)->IsSameStructure(nullptr, &errors));
  EXPECT_FALSE(MetaBool::New(true)->IsSameStructure(nullptr, nullptr));
  EXPECT_THAT(errors, IsEmpty());
}

TEST(MetaObjectTest, TheBaseComparisonRejectsStructuresAndLists) {
  std::vector<std::string> errors;
  const auto structLike = std::make_shared<LyingValue>(MetaType::Struct);
  const auto listLike = std::make_shared<LyingValue>(MetaType::List);
  const auto unknown = std::make_shared<LyingValue>(static_cast<MetaType>(5));
  EXPECT_FALSE(structLike->IsSameStructure(structLike, &errors));
  EXPECT_FALSE(listLike->IsSameStructure(listLike, &errors));
  EXPECT_FALSE(unknown->IsSameStructure(unknown, &errors));
  EXPECT_THAT(errors, ElementsAre("Type mismatch in structure.  Expecting Struct got Struct",
                                  "Type mismatch in structure.  Expecting List got List",
                                  "Type mismatch in structure.  Expecting  got "));
}

TEST(MetaObjectTest, AScalarTrustsTheKindThatAnotherValueReports) {
  EXPECT_TRUE(
      MetaInt::New(1)->IsSameStructure(std::make_shared<LyingValue>(MetaType::Int), nullptr));
}

TEST(MetaObjectTest, IsWrittenToAStreamAsItsText) {
  std::ostringstream out;
  std::ostream& result = out << *MetaInt::New(-5) << ' ' << *MetaBool::New(true) << ' '
                             << LyingValue(MetaType::List);
  EXPECT_EQ(out.str(), "-5 true a lie");
  EXPECT_EQ(&result, &out);
}

TEST(MetaObjectTest, RunsTheDestructorOfTheDerivedClass) {
  const auto inner = MetaInt::New(100);
  MetaObject* bare = nullptr;
  {
    auto structure = MetaStruct::New("X");
    structure->SetField("a", inner);
    std::shared_ptr<MetaObject> base = std::move(structure);
    bare = base.get();
    EXPECT_EQ(inner.use_count(), 2);
  }
  EXPECT_NE(bare, nullptr);
  EXPECT_EQ(inner.use_count(), 1);
}

TEST(MetaObjectTest, ToStringIsTheSecondVirtualFunction) {
  // Plug-ins call by slot, so the order is fixed: comparison, string, destruction.
  using Slot = std::string (*)(const MetaObject*);
  const auto value = MetaInt::New(12345);
  const void* const* const slots = *reinterpret_cast<const void* const* const*>(value.get());
  const Slot second = reinterpret_cast<Slot>(const_cast<void*>(slots[1]));
  EXPECT_EQ(second(value.get()), "12345");
}

}  // namespace
