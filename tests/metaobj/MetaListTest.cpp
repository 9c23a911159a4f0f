// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/SampleValues.h"

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test
using Kestrel::KestrelException;
using Kestrel::Testing::LyingValue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

using Errors = std::vector<std::string>;

constexpr char kScalarExpected[] = "Integer, boolean or string type expected for list.";
constexpr char kStructExpected[] = "Struct type expected for list.";
constexpr char kNotTheType[] =
    "There was an error adding an item to this list.  The item being added was not the correct "
    "type for this list, so it was not added.";
constexpr char kNotTheStructure[] =
    "There was an error adding an item to this list.  The item being added did not match the "
    "declared structure of this list, so it was not added.";
constexpr char kNoStructure[] =
    "List created with NULL structure.  No items can be added to this list.";

std::shared_ptr<MetaStruct> StructureOf(const std::vector<std::string>& names) {
  auto structure = MetaStruct::New("Rec");
  for (const std::string& name : names) {
    structure->SetField(name, 1);
  }
  return structure;
}

std::shared_ptr<MetaList> Numbers(const std::vector<long>& values) {
  auto list = MetaList::New(MetaType::Int);
  list->AddAll(values);
  return list;
}

// Factories.

TEST(MetaListTest, StartsEmpty) {
  for (const MetaType kind : {MetaType::Int, MetaType::Bool, MetaType::String}) {
    const auto list = MetaList::New(kind);
    EXPECT_EQ(list->GetListType(), kind);
    EXPECT_EQ(list->GetCount(), 0u);
    EXPECT_THAT(list->GetObjects(), IsEmpty());
    EXPECT_EQ(list->GetListStructure(), nullptr);
    EXPECT_EQ(list->ToString(), "");
  }
}

TEST(MetaListTest, RefusesAListOfStructuresWithoutAStructureArgument) {
  EXPECT_THAT([] { MetaList::New(MetaType::Struct); },
              ThrowsMessage<KestrelException>(kScalarExpected));
}

TEST(MetaListTest, RefusesAListOfLists) {
  EXPECT_THAT([] { MetaList::New(MetaType::List); },
              ThrowsMessage<KestrelException>(kScalarExpected));
}

TEST(MetaListTest, RefusesAKindThatDoesNotExist) {
  EXPECT_THAT([] { MetaList::New(static_cast<MetaType>(5)); },
              ThrowsMessage<KestrelException>(kScalarExpected));
}

TEST(MetaListTest, RefusesAStructureForOtherElements) {
  const auto structure = StructureOf({"a"});
  const std::shared_ptr<MetaObject> object = structure;
  for (const MetaType kind : {MetaType::Int, MetaType::Bool, MetaType::String, MetaType::List}) {
    EXPECT_THAT([&] { MetaList::New(kind, structure); },
                ThrowsMessage<KestrelException>(kStructExpected));
    EXPECT_THAT([&] { MetaList::New(kind, StructureOf({"a"})); },
                ThrowsMessage<KestrelException>(kStructExpected));
    EXPECT_THAT([&] { MetaList::New(kind, object); },
                ThrowsMessage<KestrelException>(kStructExpected));
    EXPECT_THAT([&] { MetaList::New(kind, nullptr); },
                ThrowsMessage<KestrelException>(kStructExpected));
  }
}

TEST(MetaListTest, LeavesARefusedStructureUnlocked) {
  const auto structure = StructureOf({"a"});
  EXPECT_THROW(MetaList::New(MetaType::Int, structure), KestrelException);
  structure->SetField("b", 1);
  EXPECT_TRUE(structure->HasField("b"));
}

TEST(MetaListTest, KeepsAndLocksItsStructure) {
  const auto structure = StructureOf({"a"});
  const auto list = MetaList::New(MetaType::Struct, structure);
  EXPECT_EQ(list->GetListType(), MetaType::Struct);
  EXPECT_EQ(list->GetListStructure(), structure);
  EXPECT_THAT([&] { structure->SetField("b", 1); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field b on structure. Structure has been locked"));
}

TEST(MetaListTest, AcceptsATemporaryStructure) {
  auto structure = StructureOf({"a"});
  MetaStruct* const bare = structure.get();
  const auto list = MetaList::New(MetaType::Struct, std::move(structure));
  EXPECT_EQ(list->GetListStructure().get(), bare);
  EXPECT_EQ(list->GetListStructure().use_count(), 2);
  EXPECT_THROW(bare->RemoveField("a"), KestrelException);
}

TEST(MetaListTest, AcceptsAnObjectThatIsAStructure) {
  const std::shared_ptr<MetaObject> object = StructureOf({"a"});
  const auto list = MetaList::New(MetaType::Struct, object);
  EXPECT_EQ(list->GetListStructure(), object);
  EXPECT_THROW(list->GetListStructure()->SetField("b", 1), KestrelException);
}

TEST(MetaListTest, AnyOtherObjectCountsAsNoStructure) {
  const std::shared_ptr<MetaObject> number = MetaInt::New(1);
  const std::shared_ptr<MetaObject> none;
  const std::shared_ptr<MetaObject> liar = std::make_shared<LyingValue>(MetaType::Struct);
  const std::shared_ptr<MetaStruct> noStructure;
  EXPECT_EQ(MetaList::New(MetaType::Struct, number)->GetListStructure(), nullptr);
  EXPECT_EQ(MetaList::New(MetaType::Struct, none)->GetListStructure(), nullptr);
  EXPECT_EQ(MetaList::New(MetaType::Struct, liar)->GetListStructure(), nullptr);
  EXPECT_EQ(MetaList::New(MetaType::Struct, noStructure)->GetListStructure(), nullptr);
  EXPECT_EQ(MetaList::New(MetaType::Struct, nullptr)->GetListStructure(), nullptr);
}

// Adding.

TEST(MetaListTest, SharesItsElements) {
  const auto number = MetaInt::New(100);
  const auto list = MetaList::New(MetaType::Int);
  list->Add(number);
  EXPECT_EQ(list->GetItem(0), number);
  EXPECT_EQ(number.use_count(), 2);
}

TEST(MetaListTest, AddsEveryFormOfAnElement) {
  const std::string lasting = "lasting";
  const char* const pointed = "pointed";
  const auto strings = MetaList::New(MetaType::String);
  strings->Add("literal");
  strings->Add(pointed);
  strings->Add(lasting);
  strings->Add(std::string("passing"));
  strings->Add(MetaString::New("made"));
  EXPECT_EQ(strings->ToString(), "literal, pointed, lasting, passing, made");

  const auto numbers = MetaList::New(MetaType::Int);
  numbers->Add(5000000000L);
  numbers->Add(-7);
  numbers->Add(0);
  numbers->Add(MetaInt::New(3));
  EXPECT_EQ(numbers->ToString(), "5000000000, -7, 0, 3");

  const auto booleans = MetaList::New(MetaType::Bool);
  booleans->Add(true);
  booleans->Add(MetaBool::New(false));
  booleans->Add(std::shared_ptr<MetaObject>(MetaBool::New(true)));
  EXPECT_EQ(booleans->ToString(), "true, false, true");

  const auto structures = MetaList::New(MetaType::Struct, StructureOf({"a"}));
  structures->Add(StructureOf({"a"}));
  EXPECT_EQ(structures->ToString(), "{'a' => '1', }");
}

TEST(MetaListTest, MovesATemporaryString) {
  std::string value(1000, 'x');
  const char* const bytes = value.data();
  const auto list = MetaList::New(MetaType::String);
  list->Add(std::move(value));
  EXPECT_EQ(std::static_pointer_cast<MetaString>(list->GetItem(0))->GetValue().data(), bytes);
}

TEST(MetaListTest, NullCountsAsTheEmptyString) {
  const char* const none = nullptr;
  const auto list = MetaList::New(MetaType::String);
  list->Add(none);
  EXPECT_EQ(list->GetItem(0).get(), MetaString::New().get());
}

TEST(MetaListTest, UsesTheSharedInstances) {
  const auto list = Numbers({20, 21});
  EXPECT_EQ(list->GetItem(0).get(), MetaInt::New(20).get());
  EXPECT_NE(list->GetItem(1).get(), MetaInt::New(21).get());
}

constexpr char kNullMessage[] = "Null object passed to Add";

TEST(MetaListTest, RefusesNullOfEveryForm) {
  const auto list = MetaList::New(MetaType::Int);
  EXPECT_THAT([&] { list->Add(nullptr); }, ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { list->Add(std::shared_ptr<MetaObject>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { list->Add(std::shared_ptr<MetaBool>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { list->Add(std::shared_ptr<MetaInt>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { list->Add(std::shared_ptr<MetaString>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { list->Add(std::shared_ptr<MetaStruct>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_EQ(list->GetCount(), 0u);
}

TEST(MetaListTest, RefusesNullWithoutAnElementStructureToo) {
  EXPECT_THAT([] { MetaList::New(MetaType::Struct, nullptr)->Add(nullptr); },
              ThrowsMessage<KestrelException>(kNullMessage));
}

TEST(MetaListTest, RefusesAnElementOfAnotherKind) {
  EXPECT_THAT([] { MetaList::New(MetaType::String)->Add(1); },
              ThrowsMessage<KestrelException>("Invalid type specificed in MetaList.  Expected "
                                              "object of type String got object of type Int"));
  EXPECT_THAT([] { MetaList::New(MetaType::Int)->Add(StructureOf({})); },
              ThrowsMessage<KestrelException>("Invalid type specificed in MetaList.  Expected "
                                              "object of type Int got object of type Struct"));
  EXPECT_THAT([] { MetaList::New(MetaType::Bool)->Add("true"); },
              ThrowsMessage<KestrelException>("Invalid type specificed in MetaList.  Expected "
                                              "object of type Bool got object of type String"));
}

TEST(MetaListTest, RefusesAListAsAnElement) {
  EXPECT_THAT([] { MetaList::New(MetaType::Int)->Add(MetaList::New(MetaType::Int)); },
              ThrowsMessage<KestrelException>("Invalid type specificed in MetaList.  Expected "
                                              "object of type Int got object of type List"));
}

TEST(MetaListTest, LooksAtTheKindBeforeTheStructure) {
  EXPECT_THAT([] { MetaList::New(MetaType::Struct, nullptr)->Add(1); },
              ThrowsMessage<KestrelException>("Invalid type specificed in MetaList.  Expected "
                                              "object of type Struct got object of type Int"));
}

TEST(MetaListTest, RefusesAnExtraField) {
  const auto list = MetaList::New(MetaType::Struct, StructureOf({"a", "b"}));
  EXPECT_THAT(
      [&] {
        list->Add(StructureOf({"a", "b", "c"}));
      },
      ThrowsMessage<KestrelException>(
          "Invalid structure detected by MetaList::Add.  Type Errors were: (2) : Mismatch "
          "on number of fields set in struct. Expected 2 found 3, " +
          std::string(kNotTheStructure) + ", "));
  EXPECT_EQ(list->GetCount(), 0u);
}

TEST(MetaListTest, RefusesAFieldOfAnotherKind) {
  const auto list = MetaList::New(MetaType::Struct, StructureOf({"a"}));
  const auto structure = MetaStruct::New("Other");
  structure->SetField("a", "text");
  EXPECT_THAT([&] { list->Add(structure); },
              ThrowsMessage<KestrelException>(
                  "Invalid structure detected by MetaList::Add.  Type Errors were: (3) : Type "
                  "names do not match., Type mismatch on field: a, " +
                  std::string(kNotTheStructure) + ", "));
}

TEST(MetaListTest, RefusesEveryStructureWithoutAnElementStructure) {
  const auto list = MetaList::New(MetaType::Struct, nullptr);
  EXPECT_THAT([&] { list->Add(StructureOf({})); },
              ThrowsMessage<KestrelException>(
                  "Invalid structure detected by MetaList::Add.  Type Errors were: (1) : " +
                  std::string(kNoStructure) + ", "));
}

TEST(MetaListTest, RefusesAnObjectWithAWrongKind) {
  const auto list = MetaList::New(MetaType::Struct, StructureOf({}));
  EXPECT_THAT([&] { list->Add(std::make_shared<LyingValue>(MetaType::Struct)); },
              ThrowsMessage<KestrelException>(
                  "Invalid structure detected by MetaList::Add.  Type Errors were: (2) : Unable to "
                  "cast to MetaStruct, runtime error?, " +
                  std::string(kNotTheStructure) + ", "));
}

TEST(MetaListTest, IsUnchangedWhenItRefuses) {
  const auto list = MetaList::New(MetaType::Struct, StructureOf({"a"}));
  const auto good = StructureOf({"a"});
  list->Add(good);
  EXPECT_THROW(list->Add(StructureOf({"b"})), KestrelException);
  EXPECT_THROW(list->Add(1), KestrelException);
  EXPECT_THAT(list->GetObjects(), ElementsAre(good));
}

TEST(MetaListTest, AcceptsAStructureOfAnotherNameWithTheSameFields) {
  const auto list = MetaList::New(MetaType::Struct, StructureOf({"a"}));
  const auto structure = MetaStruct::New("Other");
  structure->SetField("a", 1);
  list->Add(structure);
  EXPECT_THAT(list->GetObjects(), ElementsAre(structure));
}

TEST(MetaListTest, AcceptsUndocumentedStructuresForADocumentedOne) {
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("a", MetaInt::New(0), "what a is");
  const auto list = MetaList::New(MetaType::Struct, structure);
  list->Add(StructureOf({"a"}));
  EXPECT_EQ(list->GetCount(), 1u);
}

TEST(MetaListTest, AcceptsValuesOfOtherClassesByTheirKind) {
  const auto list = MetaList::New(MetaType::Int);
  list->Add(std::make_shared<LyingValue>(MetaType::Int));
  EXPECT_EQ(list->ToString(), "a lie");
}

TEST(MetaListTest, AddsVectors) {
  const std::vector<std::string> strings = {"a", ""};
  const auto list = MetaList::New(MetaType::String);
  list->AddAll(strings);
  list->AddAll(std::vector<std::string>{"b"});
  list->AddAll(std::vector<std::string>());
  EXPECT_EQ(list->ToString(), "a, , b");
  const auto booleans = MetaList::New(MetaType::Bool);
  booleans->AddAll(std::vector<bool>{true, false});
  EXPECT_EQ(booleans->ToString(), "true, false");
  EXPECT_EQ(Numbers({1, -2, 30})->ToString(), "1, -2, 30");
}

TEST(MetaListTest, MovesTheStringsOfATemporaryVector) {
  std::vector<std::string> strings = {std::string(1000, 'x')};
  const char* const bytes = strings[0].data();
  const auto list = MetaList::New(MetaType::String);
  list->AddAll(std::move(strings));
  EXPECT_EQ(std::static_pointer_cast<MetaString>(list->GetItem(0))->GetValue().data(), bytes);
}

TEST(MetaListTest, RefusesVectorsOfAnotherKind) {
  const auto list = MetaList::New(MetaType::Int);
  EXPECT_THROW(list->AddAll(std::vector<bool>{true}), KestrelException);
  EXPECT_THROW(list->AddAll(std::vector<std::string>{"a"}), KestrelException);
  const std::vector<std::string> strings = {"a"};
  EXPECT_THROW(list->AddAll(strings), KestrelException);
  EXPECT_EQ(list->GetCount(), 0u);
  list->AddAll(std::vector<bool>());
  EXPECT_EQ(list->GetCount(), 0u);
}

TEST(MetaListTest, ReallocatesNothingForAVectorThatFits) {
  const auto list = Numbers({1, 2, 3});
  list->EnsureCapacity(1000);
  const auto* const elements = list->GetObjects().data();
  list->AddAll(std::vector<long>(1000, 7));
  EXPECT_EQ(list->GetObjects().data(), elements);
  EXPECT_EQ(list->GetCount(), 1003u);
}

// Memory is reserved before the first value is added, so it is reserved even if all are refused.
template <typename Values>
void ExpectRoomBeforeTheFirst(MetaType kind, Values&& values) {
  const auto list = MetaList::New(kind);
  EXPECT_THROW(list->AddAll(std::forward<Values>(values)), KestrelException);
  EXPECT_EQ(list->GetCount(), 0u);
  EXPECT_GE(list->GetObjects().capacity(), 1000u);
}

TEST(MetaListTest, MakesRoomForAWholeVectorFirst) {
  const std::vector<std::string> strings(1000, "text");
  ExpectRoomBeforeTheFirst(MetaType::Int, std::vector<bool>(1000, true));
  ExpectRoomBeforeTheFirst(MetaType::Bool, std::vector<long>(1000, 7));
  ExpectRoomBeforeTheFirst(MetaType::Int, strings);
  ExpectRoomBeforeTheFirst(MetaType::Int, std::vector<std::string>(strings));
}

// Reading and removing.

TEST(MetaListTest, ReturnsItsElementsByIndex) {
  const auto list = Numbers({1, 2, 3});
  EXPECT_EQ(list->GetCount(), 3u);
  EXPECT_EQ(list->GetItem(2)->ToString(), "3");
  EXPECT_EQ((*list)[0]->ToString(), "1");
  EXPECT_EQ(&(*list)[1], &list->GetObjects()[1]);
}

TEST(MetaListTest, ThrowsForAnIndexAtOrPastTheEnd) {
  const auto list = Numbers({1, 2});
  for (const unsigned index : {2u, 3u, 4294967295u}) {
    EXPECT_THAT([&] { list->GetItem(index); },
                ThrowsMessage<KestrelException>("Get requested on invalid index of MetaList"));
    EXPECT_THAT([&] { list->Delete(index); },
                ThrowsMessage<KestrelException>("Delete requested on invalid index of MetaList"));
  }
  EXPECT_THROW(MetaList::New(MetaType::Int)->GetItem(0), KestrelException);
  EXPECT_THROW(MetaList::New(MetaType::Int)->Delete(0), KestrelException);
  EXPECT_EQ(list->GetCount(), 2u);
}

TEST(MetaListTest, KeepsTheOrderOfTheOthersWhenItDeletes) {
  const auto list = Numbers({1, 2, 3});
  list->Delete(0);
  EXPECT_EQ(list->ToString(), "2, 3");
  list->Delete(1);
  EXPECT_EQ(list->ToString(), "2");
  list->Delete(0);
  EXPECT_EQ(list->GetCount(), 0u);
}

TEST(MetaListTest, ReleasesADeletedElement) {
  const auto number = MetaInt::New(100);
  const auto list = MetaList::New(MetaType::Int);
  list->Add(number);
  list->Delete(0);
  EXPECT_EQ(number.use_count(), 1);
}

TEST(MetaListTest, MakesRoomAhead) {
  const auto list = Numbers({1, 2, 3});
  list->Reserve(10);
  EXPECT_GE(list->GetObjects().capacity(), 10u);
  list->EnsureCapacity(list->GetObjects().capacity() - 2);  // one more than there is room for
  EXPECT_GE(list->GetObjects().capacity(), 11u);
  list->EnsureCapacity(100);
  EXPECT_GE(list->GetObjects().capacity(), 103u);
  const std::size_t capacity = list->GetObjects().capacity();
  list->EnsureCapacity(100);
  list->Reserve(5);
  EXPECT_EQ(list->GetObjects().capacity(), capacity);
  EXPECT_EQ(list->ToString(), "1, 2, 3");
}

TEST(MetaListTest, RefusesRoomBeyondAllMemory) {
  const auto list = Numbers({1});
  EXPECT_THROW(list->Reserve(static_cast<std::size_t>(-1)), std::length_error);
  EXPECT_THROW(list->EnsureCapacity(static_cast<std::size_t>(-1)), std::length_error);
  EXPECT_EQ(list->ToString(), "1");
}

TEST(MetaListTest, ReallocatesRarelyForManySmallVectors) {
  const auto list = MetaList::New(MetaType::Int);
  std::size_t moves = 0;
  const void* elements = nullptr;
  for (int round = 0; round < 10000; ++round) {
    list->AddAll(std::vector<long>{1});
    moves += list->GetObjects().data() == elements ? 0 : 1;
    elements = list->GetObjects().data();
  }
  EXPECT_LT(moves, 40u);
}

// Validate.

TEST(MetaListTest, RejectsNull) {
  Errors errors;
  EXPECT_FALSE(MetaList::New(MetaType::Int)->Validate(nullptr, &errors));
  EXPECT_FALSE(MetaList::New(MetaType::Int)->Validate(nullptr, nullptr));
  EXPECT_FALSE(MetaList::New(MetaType::Struct, nullptr)->Validate(nullptr, &errors));
  EXPECT_THAT(errors, ElementsAre("Invalid NULL input", "Invalid NULL input"));
}

TEST(MetaListTest, RejectsOtherKinds) {
  Errors errors;
  EXPECT_FALSE(MetaList::New(MetaType::Int)->Validate(MetaBool::New(true), &errors));
  EXPECT_FALSE(MetaList::New(MetaType::Int)->Validate(MetaBool::New(true), nullptr));
  EXPECT_FALSE(MetaList::New(MetaType::Struct, nullptr)->Validate(MetaInt::New(1), &errors));
  EXPECT_THAT(errors, ElementsAre(kNotTheType, kNotTheType));
}

TEST(MetaListTest, RejectsEverythingWithoutAnElementStructure) {
  Errors errors;
  EXPECT_FALSE(MetaList::New(MetaType::Struct, nullptr)->Validate(StructureOf({}), &errors));
  EXPECT_FALSE(MetaList::New(MetaType::Struct, nullptr)->Validate(StructureOf({}), nullptr));
  EXPECT_THAT(errors, ElementsAre(kNoStructure));
}

TEST(MetaListTest, ValidatesScalarsByTheirKind) {
  Errors errors;
  EXPECT_TRUE(MetaList::New(MetaType::Int)->Validate(MetaInt::New(1), &errors));
  EXPECT_TRUE(MetaList::New(MetaType::Bool)->Validate(MetaBool::New(true), nullptr));
  EXPECT_THAT(errors, IsEmpty());
}

TEST(MetaListTest, ValidatesStructuresByTheirShape) {
  const auto list = MetaList::New(MetaType::Struct, StructureOf({"a"}));
  Errors errors;
  EXPECT_TRUE(list->Validate(StructureOf({"a"}), &errors));
  EXPECT_THAT(errors, IsEmpty());
  EXPECT_FALSE(list->Validate(StructureOf({"b"}), &errors));
  EXPECT_FALSE(list->Validate(StructureOf({"b"}), nullptr));
  EXPECT_THAT(errors, ElementsAre("Missing field in input: a", kNotTheStructure));
}

TEST(MetaListTest, ReportsAnotherTypeNameAlthoughItIsValid) {
  const auto list = MetaList::New(MetaType::Struct, StructureOf({}));
  Errors errors;
  EXPECT_TRUE(list->Validate(MetaStruct::New("Other"), &errors));
  EXPECT_THAT(errors, ElementsAre("Type names do not match."));
}

// Comparison.

TEST(MetaListTest, DiffersFromNull) {
  Errors errors;
  EXPECT_FALSE(Numbers({})->IsSameStructure(nullptr, &errors));
  EXPECT_FALSE(Numbers({})->IsSameStructure(nullptr, nullptr));
  EXPECT_THAT(errors, ElementsAre("Mismatch on structure, NULL comparison"));
}

TEST(MetaListTest, DiffersFromOtherKinds) {
  Errors errors;
  EXPECT_FALSE(Numbers({})->IsSameStructure(MetaInt::New(1), &errors));
  EXPECT_FALSE(Numbers({})->IsSameStructure(MetaInt::New(1), nullptr));
  EXPECT_THAT(errors, ElementsAre("Type mismatch!  Was expecting a List, but got a Int"));
}

TEST(MetaListTest, DiffersFromAnObjectWithAWrongKind) {
  Errors errors;
  const auto liar = std::make_shared<LyingValue>(MetaType::List);
  EXPECT_FALSE(Numbers({})->IsSameStructure(liar, &errors));
  EXPECT_THAT(errors, ElementsAre("Mismatch on list type"));
}

TEST(MetaListTest, DiffersFromAListOfAnotherKind) {
  Errors errors;
  EXPECT_FALSE(Numbers({})->IsSameStructure(MetaList::New(MetaType::Bool), &errors));
  EXPECT_FALSE(Numbers({})->IsSameStructure(MetaList::New(MetaType::Struct, nullptr), nullptr));
  EXPECT_THAT(errors, ElementsAre("Mismatch on list type"));
}

TEST(MetaListTest, MatchesWhateverItsElementsAre) {
  Errors errors;
  EXPECT_TRUE(Numbers({1, 2})->IsSameStructure(Numbers({3}), &errors));
  EXPECT_THAT(errors, IsEmpty());
}

TEST(MetaListTest, ComparesDeclaredStructures) {
  const auto one = MetaList::New(MetaType::Struct, StructureOf({"a"}));
  Errors errors;
  EXPECT_TRUE(one->IsSameStructure(MetaList::New(MetaType::Struct, StructureOf({"a"})), &errors));
  EXPECT_THAT(errors, IsEmpty());
  EXPECT_FALSE(one->IsSameStructure(MetaList::New(MetaType::Struct, StructureOf({"b"})), &errors));
  EXPECT_FALSE(one->IsSameStructure(MetaList::New(MetaType::Struct, StructureOf({"b"})), nullptr));
  EXPECT_THAT(errors,
              ElementsAre("Missing field in input: a", "List type mismatch list and input"));
}

TEST(MetaListTest, MatchesWhenEitherHasNoElementStructure) {
  const auto one = MetaList::New(MetaType::Struct, StructureOf({"a"}));
  const auto none = MetaList::New(MetaType::Struct, nullptr);
  Errors errors;
  EXPECT_TRUE(one->IsSameStructure(none, &errors));
  EXPECT_TRUE(none->IsSameStructure(one, &errors));
  EXPECT_TRUE(none->IsSameStructure(none, &errors));
  EXPECT_THAT(errors, IsEmpty());
}

TEST(MetaListTest, ReportsAnotherTypeNameAndMatches) {
  const auto one = MetaList::New(MetaType::Struct, MetaStruct::New("One"));
  const auto other = MetaList::New(MetaType::Struct, MetaStruct::New("Other"));
  Errors errors;
  EXPECT_TRUE(one->IsSameStructure(other, &errors));
  EXPECT_TRUE(one->IsSameStructure(other, nullptr));
  EXPECT_THAT(errors, ElementsAre("Type names do not match."));
}

// Printing and hostile sizes.

TEST(MetaListTest, PrintsItsElementsWithoutBrackets) {
  EXPECT_EQ(Numbers({1, 2, 3})->ToString(), "1, 2, 3");
  EXPECT_EQ(Numbers({1})->ToString(), "1");
  EXPECT_EQ(Numbers({})->ToString(), "");
}

TEST(MetaListTest, PrintsStructures) {
  const auto list = MetaList::New(MetaType::Struct, StructureOf({"a"}));
  list->Add(StructureOf({"a"}));
  list->Add(StructureOf({"a"}));
  EXPECT_EQ(list->ToString(), "{'a' => '1', }, {'a' => '1', }");
}

TEST(MetaListTest, HandlesAMillionStructures) {
  const auto list = MetaList::New(MetaType::Struct, StructureOf({"a"}));
  for (int element = 0; element < 1000000; ++element) {
    auto structure = MetaStruct::New("Rec");
    structure->SetField("a", element);
    list->Add(structure);
  }
  EXPECT_EQ(list->GetCount(), 1000000u);
  EXPECT_EQ(list->GetItem(999999)->ToString(), "{'a' => '999999', }");
}

TEST(MetaListTest, PrintsAMillionElements) {
  const std::string text = Numbers(std::vector<long>(1000000, 7))->ToString();
  EXPECT_EQ(text.size(), 3000000u - 2);
}

}  // namespace
