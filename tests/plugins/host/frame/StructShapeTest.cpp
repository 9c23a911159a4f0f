// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/StructShape.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"

namespace Kestrel::Host {
namespace {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Throws;
using ::testing::UnorderedElementsAre;

const StructShape& InnerShape() {
  static const StructShape shape = StructShape("Inner").String("Word", "A word.");
  return shape;
}

void DeclareCommonFields(StructShape& shape) {
  shape.Int("First Common", "One.").Bool("Second Common", "Two.");
}

const StructShape& FullShape() {
  static const StructShape shape = StructShape("Full")
                                       .String("String", "Text.")
                                       .Int("Int", "A number.")
                                       .Bool("Bool", "Yes or no.")
                                       .Strings("Strings", "Texts.")
                                       .Ints("Ints", "Numbers.")
                                       .With(DeclareCommonFields)
                                       .Struct("Struct", InnerShape(), "One inside.")
                                       .Structs("Structs", InnerShape(), "Many inside.");
  return shape;
}

std::shared_ptr<MetaStruct> DeclaredStruct() {
  const auto spec = CallSpec::OutputSpec::New();
  FullShape().DeclareStruct(*spec, "Everything.");
  return std::dynamic_pointer_cast<MetaStruct>(spec->GetRootObject());
}

TEST(StructShapeTest, DeclaresEveryField) {
  EXPECT_THAT(DeclaredStruct()->GetFieldNames(),
              UnorderedElementsAre("String", "Int", "Bool", "Strings", "Ints", "First Common",
                                   "Second Common", "Struct", "Structs"));
}

TEST(StructShapeTest, DeclaresTheTypeOfEachField) {
  const auto declared = DeclaredStruct();
  EXPECT_EQ(declared->GetTypeName(), "Full");
  EXPECT_EQ(declared->GetFieldType("String"), MetaType::String);
  EXPECT_EQ(declared->GetFieldType("Int"), MetaType::Int);
  EXPECT_EQ(declared->GetFieldType("Bool"), MetaType::Bool);
  EXPECT_EQ(declared->GetFieldType("First Common"), MetaType::Int);
  EXPECT_EQ(declared->GetFieldType("Second Common"), MetaType::Bool);
  EXPECT_EQ(declared->GetFieldType("Struct"), MetaType::Struct);
  for (const auto& [field, type] : std::initializer_list<std::pair<const char*, MetaType>>{
           {"Strings", MetaType::String}, {"Ints", MetaType::Int}, {"Structs", MetaType::Struct}}) {
    const auto list = std::dynamic_pointer_cast<MetaList>(declared->GetField(field));
    ASSERT_NE(list, nullptr) << field;
    EXPECT_EQ(list->GetListType(), type) << field;
  }
}

TEST(StructShapeTest, DeclaresTheShapesWithin) {
  const auto declared = DeclaredStruct();
  const auto inner = std::dynamic_pointer_cast<MetaStruct>(declared->GetField("Struct"));
  ASSERT_NE(inner, nullptr);
  EXPECT_EQ(inner->GetTypeName(), "Inner");
  EXPECT_THAT(inner->GetFieldNames(), ElementsAre("Word"));
  const auto list = std::dynamic_pointer_cast<MetaList>(declared->GetField("Structs"));
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->GetListStructure()->GetTypeName(), "Inner");
}

TEST(StructShapeTest, DocumentsEachField) {
  const auto declared = DeclaredStruct();
  EXPECT_EQ(declared->GetFieldDocumentation("Ints"), "Numbers.");
  EXPECT_EQ(declared->GetFieldDocumentation("Second Common"), "Two.");
  EXPECT_EQ(declared->GetFieldDocumentation("Structs"), "Many inside.");
}

TEST(StructShapeTest, DeclaresAListOfStructures) {
  const auto spec = CallSpec::OutputSpec::New();
  InnerShape().DeclareList(*spec, "Many words.");
  EXPECT_EQ(spec->GetDescription(), "Many words.");
  const auto list = std::dynamic_pointer_cast<MetaList>(spec->GetRootObject());
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->GetListType(), MetaType::Struct);
  EXPECT_EQ(list->GetListStructure()->GetTypeName(), "Inner");
  EXPECT_THAT(list->GetObjects(), IsEmpty());
}

TEST(StructShapeTest, ANewStructureMatchesOnceEveryFieldIsSet) {
  const auto spec = CallSpec::OutputSpec::New();
  InnerShape().DeclareStruct(*spec, "One word.");
  const auto made = InnerShape().NewStruct();
  EXPECT_FALSE(made->MatchesStructureDefinition());
  made->SetField("Word", "x");
  EXPECT_TRUE(made->MatchesStructureDefinition());
  EXPECT_TRUE(made->IsSameStructure(spec->GetRootObject(), nullptr));
}

TEST(StructShapeTest, ANewStructureRefusesOtherFields) {
  const auto made = InnerShape().NewStruct();
  EXPECT_THAT([&] { made->SetField("Other", "x"); }, Throws<KestrelException>());
}

TEST(StructShapeTest, AFieldOfAnotherTypeDoesNotMatch) {
  const auto made = InnerShape().NewStruct();
  made->SetField("Word", 1);
  EXPECT_FALSE(made->MatchesStructureDefinition());
}

TEST(StructShapeTest, NewStructuresShareNoValue) {
  const auto one = InnerShape().NewStruct();
  const auto other = InnerShape().NewStruct();
  one->SetField("Word", "one");
  other->SetField("Word", "other");
  EXPECT_EQ(one->GetField("Word")->ToString(), "one");
}

TEST(StructShapeTest, AListOfStructuresOfTheShapeIsValid) {
  const auto spec = CallSpec::OutputSpec::New();
  InnerShape().DeclareList(*spec, "Many words.");
  const auto list = InnerShape().NewList();
  const auto output = CallSpec::Output::New();
  output->SetRootObject(list);
  EXPECT_TRUE(spec->Validate(output, nullptr)) << "an empty list";
  const auto element = InnerShape().NewStruct();
  element->SetField("Word", "x");
  list->Add(element);
  EXPECT_TRUE(spec->Validate(output, nullptr));
}

TEST(StructShapeTest, AListOfAnotherShapeIsNotValid) {
  const auto spec = CallSpec::OutputSpec::New();
  InnerShape().DeclareList(*spec, "Many words.");
  const auto output = CallSpec::Output::New();
  output->SetRootObject(FullShape().NewList());
  std::vector<std::string> errors;
  EXPECT_FALSE(spec->Validate(output, &errors));
  EXPECT_THAT(errors, Not(IsEmpty()));
}

// A share in hundredths of a percent, and the values of its two fields.
struct ShareCase {
  long hundredths;
  const char* text;
  long kept;
};

TEST(StructShapeTest, AShareHasAnIntegerAndAString) {
  const StructShape shape = StructShape("Shares").Share("Busy", "How busy.");
  const ShareCase cases[] = {{0, "0.00 %", 0},           {5, "0.05 %", 5},
                             {100, "1.00 %", 100},       {1234, "12.34 %", 1234},
                             {10000, "100.00 %", 10000}, {123456, "1234.56 %", 123456},
                             {-1, "unknown", -1},        {-500, "unknown", -1}};
  for (const ShareCase& each : cases) {
    const auto made = shape.NewStruct();
    SetShare(*made, "Busy", each.hundredths);
    EXPECT_EQ(made->GetField("Busy")->ToString(), each.text);
    EXPECT_EQ(made->GetField("Busy Hundredths")->ToString(), std::to_string(each.kept));
  }
}

TEST(StructShapeTest, AShareIsSortedByItsHundredths) {
  const StructShape shape = StructShape("Shares").Share("Busy", "How busy.").Size("Room", "Room.");
  EXPECT_EQ(shape.GetSortKey("Busy"), "Busy Hundredths");
  EXPECT_EQ(shape.GetSortKey("Busy Hundredths"), "Busy Hundredths");
  EXPECT_EQ(shape.GetSortKey("Room"), "Room Bytes");
  // "human" does not affect a share.
  EXPECT_FALSE(StructShape("Shares").Share("Busy", "How busy.").HasSizes());
  EXPECT_EQ(shape.ForPeople("Busy Hundredths,Room Bytes"), "Busy Hundredths,Room");
}

TEST(StructShapeTest, AStringIsSortedByTheIntegerOfItsQuantity) {
  const StructShape shape = StructShape("Use")
                                .String("Time", "x")
                                .Int("Seconds", "x")
                                .SortedBy("Time", "Seconds")
                                .Size("Memory", "x");
  EXPECT_EQ(shape.GetSortKey("Time"), "Seconds");
  EXPECT_EQ(shape.GetSortKey("Seconds"), "Seconds");
  EXPECT_EQ(shape.GetSortKey("Memory"), "Memory Bytes");
  EXPECT_EQ(shape.ForPeople("Seconds,Memory Bytes"), "Seconds,Memory")
      << "only sizes have a column for people";
}

}  // namespace
}  // namespace Kestrel::Host
