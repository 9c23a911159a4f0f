// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaStruct.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <functional>
#include <map>
#include <numeric>
#include <random>
#include <type_traits>
#include <utility>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "support/MemoryLimit.h"
#include "support/Random.h"
#include "support/SampleValues.h"
#include "support/Sanitizer.h"

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test
using Kestrel::KestrelException;
using Kestrel::Testing::kIsSanitized;
using Kestrel::Testing::LyingValue;
using Kestrel::Testing::MemoryLimit;
using Kestrel::Testing::Random;
using Kestrel::Testing::Rounds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

using Errors = std::vector<std::string>;

// A scalar that matches nothing and reports that.
class Stranger : public LyingValue {
 public:
  using LyingValue::LyingValue;
  bool IsSameStructure(const std::shared_ptr<MetaObject>&,
                       std::vector<std::string>* errors) const override {
    if (errors != nullptr) {
      errors->push_back("never the same");
    }
    return false;
  }
};

std::shared_ptr<MetaStruct> StructureOf(const std::vector<std::string>& names) {
  auto structure = MetaStruct::New("Rec");
  for (const std::string& name : names) {
    structure->SetField(name, 1);
  }
  return structure;
}

// Names and factories.

TEST(MetaStructTest, AcceptsNamesOfLettersAndDigits) {
  for (const char* const name : {"Abc123", "a", "Z", "0", "9az09AZ"}) {
    EXPECT_TRUE(IsValidStructName(name)) << name;
    EXPECT_EQ(MetaStruct::New(name)->GetTypeName(), name);
  }
}

TEST(MetaStructTest, AcceptsEachAsciiLetterAndDigitAndNoOtherByte) {
  for (int byte = 0; byte < 256; ++byte) {
    const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    const bool isDigit = byte >= '0' && byte <= '9';
    const std::string name = std::string("a") + static_cast<char>(byte);
    EXPECT_EQ(IsValidStructName(name), isLetter || isDigit) << byte;
    EXPECT_EQ(IsValidStructName(name.substr(1)), isLetter || isDigit) << byte;
  }
}

TEST(MetaStructTest, RefusesTheEmptyTypeName) {
  EXPECT_FALSE(IsValidStructName(""));
  EXPECT_THAT([] { MetaStruct::New(""); },
              ThrowsMessage<KestrelException>("Invalid name specified for MetaStruct: "));
}

TEST(MetaStructTest, RefusesATypeNameWithAnUnderscore) {
  EXPECT_THAT([] { MetaStruct::New("My_Struct"); },
              ThrowsMessage<KestrelException>("Invalid name specified for MetaStruct: My_Struct"));
}

TEST(MetaStructTest, RefusesATypeNameWithASpace) {
  EXPECT_THAT([] { MetaStruct::New(std::string("My Struct")); },
              ThrowsMessage<KestrelException>("Invalid name specified for MetaStruct: My Struct"));
}

TEST(MetaStructTest, RefusesATypeNameThatEndsInALineEnd) {
  const std::string name = "Name\n";
  EXPECT_THAT([&name] { MetaStruct::New(name); },
              ThrowsMessage<KestrelException>("Invalid name specified for MetaStruct: Name\n"));
}

TEST(MetaStructTest, ANullTypeNameCountsAsEmpty) {
  EXPECT_THAT([] { MetaStruct::New(nullptr); },
              ThrowsMessage<KestrelException>("Invalid name specified for MetaStruct: "));
}

TEST(MetaStructTest, IsMadeFromEveryFormOfAName) {
  const std::string lasting = "Lasting";
  EXPECT_EQ(MetaStruct::New(lasting)->GetTypeName(), "Lasting");
  EXPECT_EQ(MetaStruct::New(std::string("Passing"))->GetTypeName(), "Passing");
  EXPECT_EQ(MetaStruct::New("Literal")->GetTypeName(), "Literal");
}

TEST(MetaStructTest, HoldsALongTypeName) {
  const std::string name(100000, 'n');
  const auto structure = MetaStruct::New(name);
  structure->SetField("a", 1);
  EXPECT_EQ(structure->GetTypeName(), name);
}

TEST(MetaStructTest, StartsEmptyAndWithoutDefinition) {
  const auto structure = MetaStruct::New("Rec");
  EXPECT_THAT(structure->GetFieldNames(), IsEmpty());
  EXPECT_FALSE(structure->HasStructureDefinition());
  EXPECT_EQ(structure->GetStructureDefinition(), nullptr);
  EXPECT_TRUE(structure->MatchesStructureDefinition());
  EXPECT_EQ(structure->ToString(), "{}");
}

TEST(MetaStructTest, AcceptsEveryFieldName) {
  for (const char* const name : {"", "a", "a b", "\xFF", "'", "a-b_c.d"}) {
    EXPECT_TRUE(IsValidFieldName(name)) << name;
  }
}

TEST(MetaStructTest, TheTextsForEmptyAndMissingDocumentationAreFixed) {
  EXPECT_EQ(MetaStruct::_docEmpty, "");
  EXPECT_EQ(MetaStruct::_docMissingStaticString, "Documentation missing");
}

TEST(MetaStructTest, KeepsItsTypeNameInOnePlace) {
  const auto structure = MetaStruct::New("Rec");
  const std::string& name = structure->GetTypeName();
  for (int field = 0; field < 100; ++field) {
    structure->SetField(std::to_string(field), field);
  }
  EXPECT_EQ(&structure->GetTypeName(), &name);
  EXPECT_EQ(name, "Rec");
}

TEST(MetaStructTest, AFieldHoldsAValueAndItsDocumentation) {
  const std::shared_ptr<MetaObject> value = MetaInt::New(100);
  const MetaStruct::Field field(value, "what it is");
  EXPECT_EQ(field.value, value);
  EXPECT_EQ(field.documentation, "what it is");
}

TEST(MetaStructTest, AFieldIsMovedAndNeverCopied) {
  const std::shared_ptr<MetaObject> value = MetaInt::New(100);
  MetaStruct::Field first(value, "what it is");
  MetaStruct::Field second(std::move(first));
  EXPECT_EQ(second.value, value);
  EXPECT_EQ(second.documentation, "what it is");
  MetaStruct::Field third(MetaInt::New(200), "another");
  third = std::move(second);
  EXPECT_EQ(third.value, value);
  EXPECT_EQ(third.documentation, "what it is");
  EXPECT_EQ(value.use_count(), 2);
  EXPECT_FALSE(std::is_copy_constructible_v<MetaStruct::Field>);
  EXPECT_FALSE(std::is_copy_assignable_v<MetaStruct::Field>);
}

// The overloads of SetField.

// Sets two fields, one named by a string and one by a literal, and returns both values.
template <typename Value>
std::vector<std::shared_ptr<MetaObject>> SetUnderBothForms(const Value& value) {
  const auto structure = MetaStruct::New("Rec");
  const std::string name = "lasting";
  structure->SetField(name, Value(value));
  structure->SetField("literal", Value(value));
  EXPECT_EQ(structure->GetFieldDocumentation("lasting"), "Documentation missing");
  EXPECT_EQ(structure->GetFieldDocumentation("literal"), "Documentation missing");
  return {structure->GetField("lasting"), structure->GetField("literal")};
}

template <typename Value>
void ExpectKindAndText(const Value& value, MetaType kind, const std::string& text) {
  for (const std::shared_ptr<MetaObject>& stored : SetUnderBothForms(value)) {
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->GetType(), kind);
    EXPECT_EQ(stored->ToString(), text);
  }
}

template <typename Value>
void ExpectStoredAsGiven(const std::shared_ptr<Value>& value) {
  EXPECT_THAT(SetUnderBothForms(value), ElementsAre(value, value));
}

TEST(MetaStructTest, StoresObjectsAsGiven) {
  ExpectStoredAsGiven(std::shared_ptr<MetaObject>(MetaInt::New(100)));
  ExpectStoredAsGiven(MetaStruct::New("Inner"));
  ExpectStoredAsGiven(MetaList::New(MetaType::Int));
  ExpectStoredAsGiven(MetaInt::New(100));
  ExpectStoredAsGiven(MetaBool::New(true));
  ExpectStoredAsGiven(MetaString::New("x"));
  ExpectStoredAsGiven(std::make_shared<LyingValue>(MetaType::Int));
}

TEST(MetaStructTest, MakesObjectsFromNumbers) {
  ExpectKindAndText(5000000000L, MetaType::Int, "5000000000");
  ExpectKindAndText(-7, MetaType::Int, "-7");
  ExpectKindAndText(0, MetaType::Int, "0");
  ExpectKindAndText('c', MetaType::Int, "99");
}

TEST(MetaStructTest, MakesObjectsFromBooleans) {
  ExpectKindAndText(true, MetaType::Bool, "true");
  ExpectKindAndText(false, MetaType::Bool, "false");
}

TEST(MetaStructTest, MakesObjectsFromStrings) {
  ExpectKindAndText(std::string("text"), MetaType::String, "text");
  const auto structure = MetaStruct::New("Rec");
  const std::string name = "by a string";
  const std::string lasting = "lasting";
  const char* const pointed = "pointed";
  structure->SetField(name, lasting);
  structure->SetField("by a literal", lasting);
  EXPECT_EQ(structure->ToString(), "{'by a literal' => 'lasting', 'by a string' => 'lasting', }");
  structure->SetField(name, pointed);
  structure->SetField("by a literal", pointed);
  EXPECT_EQ(structure->ToString(), "{'by a literal' => 'pointed', 'by a string' => 'pointed', }");
  EXPECT_EQ(lasting, "lasting");
}

TEST(MetaStructTest, MakesAStringAndNotABooleanFromALiteral) {
  const auto structure = MetaStruct::New("Rec");
  char array[] = "array";
  structure->SetField("literal", "false");
  structure->SetField(std::string("array"), array);
  EXPECT_EQ(structure->GetFieldType("literal"), MetaType::String);
  EXPECT_EQ(structure->GetFieldType("array"), MetaType::String);
}

TEST(MetaStructTest, MovesTemporaryStrings) {
  const auto structure = MetaStruct::New("Rec");
  const std::string name = "n";
  std::string first(1000, '1');
  std::string second(1000, '2');
  const char* const firstBytes = first.data();
  const char* const secondBytes = second.data();
  structure->SetField(name, std::move(first));
  EXPECT_EQ(std::static_pointer_cast<MetaString>(structure->GetField("n"))->GetValue().data(),
            firstBytes);
  structure->SetField("n", std::move(second));
  EXPECT_EQ(std::static_pointer_cast<MetaString>(structure->GetField("n"))->GetValue().data(),
            secondBytes);
}

TEST(MetaStructTest, NullCountsAsTheEmptyString) {
  const auto structure = MetaStruct::New("Rec");
  const char* const none = nullptr;
  structure->SetField(none, "under no name");
  structure->SetField("value", none);
  structure->SetField(std::string("other"), none);
  EXPECT_EQ(structure->GetField("")->ToString(), "under no name");
  EXPECT_EQ(structure->GetField("value").get(), MetaString::New().get());
  EXPECT_EQ(structure->GetField("other").get(), MetaString::New().get());
}

void ExpectList(const std::shared_ptr<MetaObject>& value, MetaType kind, const std::string& text) {
  ASSERT_NE(value, nullptr);
  ASSERT_EQ(value->GetType(), MetaType::List);
  EXPECT_EQ(std::static_pointer_cast<MetaList>(value)->GetListType(), kind);
  EXPECT_EQ(value->ToString(), text);
}

TEST(MetaStructTest, MakesListsFromVectors) {
  const auto structure = MetaStruct::New("Rec");
  const std::string name = "n";
  const std::vector<std::string> strings = {"a", "b"};
  const std::vector<long> numbers = {1, -2};
  const std::vector<bool> booleans = {true, false};
  structure->SetField(name, strings);
  ExpectList(structure->GetField("n"), MetaType::String, "a, b");
  structure->SetField(name, numbers);
  ExpectList(structure->GetField("n"), MetaType::Int, "1, -2");
  structure->SetField(name, booleans);
  ExpectList(structure->GetField("n"), MetaType::Bool, "true, false");
  structure->SetField(name, std::vector<std::string>{"c"});
  ExpectList(structure->GetField("n"), MetaType::String, "c");
  structure->SetField("n", strings);
  ExpectList(structure->GetField("n"), MetaType::String, "a, b");
  structure->SetField("n", numbers);
  ExpectList(structure->GetField("n"), MetaType::Int, "1, -2");
  structure->SetField("n", booleans);
  ExpectList(structure->GetField("n"), MetaType::Bool, "true, false");
  structure->SetField("n", std::vector<std::string>{"d"});
  ExpectList(structure->GetField("n"), MetaType::String, "d");
  structure->SetField("n", std::vector<long>());
  ExpectList(structure->GetField("n"), MetaType::Int, "");
}

TEST(MetaStructTest, MakesABooleanFromAnElementOfABooleanVector) {
  std::vector<bool> booleans = {true};
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("n", booleans[0]);
  EXPECT_EQ(structure->GetFieldType("n"), MetaType::Bool);
}

TEST(MetaStructTest, KeepsADocumentationText) {
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("a", MetaInt::New(1), "what a is");
  EXPECT_EQ(structure->GetFieldDocumentation("a"), "what a is");
  EXPECT_EQ(structure->GetField("a")->ToString(), "1");
}

TEST(MetaStructTest, ReportsEmptyDocumentationAsMissing) {
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("a", MetaInt::New(1), "");
  structure->SetField("b", 1);
  EXPECT_EQ(structure->GetFieldDocumentation("a"), "Documentation missing");
  EXPECT_EQ(structure->GetFieldDocumentation("b"), "Documentation missing");
}

// The errors of SetField.

constexpr char kNullMessage[] =
    "Invalid NULL value was assigned to the field a in the structure Rec";

TEST(MetaStructTest, RefusesNullOfEveryForm) {
  const auto structure = MetaStruct::New("Rec");
  const std::string name = "a";
  EXPECT_THAT([&] { structure->SetField(name, nullptr); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { structure->SetField("a", nullptr); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { structure->SetField("a", nullptr, "doc"); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { structure->SetField("a", std::shared_ptr<MetaObject>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { structure->SetField("a", std::shared_ptr<MetaStruct>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { structure->SetField("a", std::shared_ptr<MetaList>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { structure->SetField("a", std::shared_ptr<MetaInt>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { structure->SetField("a", std::shared_ptr<MetaBool>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { structure->SetField("a", std::shared_ptr<MetaString>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { structure->SetField(name, std::shared_ptr<MetaObject>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT([&] { structure->SetField(name, std::shared_ptr<MetaString>()); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_THAT(structure->GetFieldNames(), IsEmpty());
}

TEST(MetaStructTest, KeepsTheOldValueWhenItRefusesNull) {
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("a", MetaInt::New(1), "doc");
  EXPECT_THROW(structure->SetField("a", nullptr), KestrelException);
  EXPECT_EQ(structure->GetField("a")->ToString(), "1");
  EXPECT_EQ(structure->GetFieldDocumentation("a"), "doc");
}

TEST(MetaStructTest, RefusesNullBeforeItLooksAtTheDefinition) {
  const auto structure = MetaStruct::New(StructureOf({"b"}));
  EXPECT_THAT([&] { structure->SetField("a", nullptr); },
              ThrowsMessage<KestrelException>(kNullMessage));
}

TEST(MetaStructTest, RefusesNullBeforeItLooksAtTheLock) {
  const auto structure = MetaStruct::New("Rec");
  structure->LockStructure();
  EXPECT_THAT([&] { structure->SetField("a", nullptr); },
              ThrowsMessage<KestrelException>(kNullMessage));
}

TEST(MetaStructTest, RefusesAFieldThatTheDefinitionLacks) {
  const auto definition = StructureOf({"a", "b"});
  const auto structure = MetaStruct::New(definition);
  EXPECT_THAT([&] { structure->SetField("c", 1); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field c on structure.  The field does not match the "
                  "Structure definition for this MetaStruct."));
  structure->SetField("a", 5);
  EXPECT_THAT(structure->GetFieldNames(), ElementsAre("a"));
}

TEST(MetaStructTest, RefusesANewFieldWhenLocked) {
  const auto structure = StructureOf({"a"});
  structure->LockStructure();
  EXPECT_THAT([&] { structure->SetField("b", 1); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field b on structure. Structure has been locked"));
  EXPECT_THAT(structure->GetFieldNames(), ElementsAre("a"));
}

// If another structure with the same fields has gained a field before, the layout with that field
// is known, and `SetField` uses it without a search. The checks must be the same.
TEST(MetaStructTest, RefusesAFieldThatASimilarStructureHas) {
  const auto like = StructureOf({"a", "b"});
  const auto bound = MetaStruct::New(StructureOf({"a"}));
  bound->SetField("a", 1);
  EXPECT_THAT([&] { bound->SetField("b", 1); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field b on structure.  The field does not match the "
                  "Structure definition for this MetaStruct."));
  bound->LockStructure();
  EXPECT_THAT([&] { bound->SetField("b", 1); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field b on structure. Structure has been locked"));
  EXPECT_THAT([&] { bound->SetField("b", nullptr); },
              ThrowsMessage<KestrelException>(
                  "Invalid NULL value was assigned to the field b in the structure Rec"));
  EXPECT_THAT(bound->GetFieldNames(), ElementsAre("a"));
  EXPECT_THAT(like->GetFieldNames(), ElementsAre("a", "b"));
}

TEST(MetaStructTest, ReportsTheLockBeforeTheDefinition) {
  const auto structure = MetaStruct::New(StructureOf({"a"}));
  structure->LockStructure();
  EXPECT_THAT([&] { structure->SetField("c", 1); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field c on structure. Structure has been locked"));
  EXPECT_THAT([&] { structure->SetField("a", 1); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field a on structure. Structure has been locked"));
}

TEST(MetaStructTest, ReplacesValueKindAndDocumentationWhenLocked) {
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("a", MetaInt::New(1), "old");
  structure->LockStructure();
  structure->SetField("a", MetaString::New("text"), "new");
  EXPECT_EQ(structure->GetFieldType("a"), MetaType::String);
  EXPECT_EQ(structure->GetField("a")->ToString(), "text");
  EXPECT_EQ(structure->GetFieldDocumentation("a"), "new");
  structure->SetField("a", 3);
  EXPECT_EQ(structure->GetFieldDocumentation("a"), "Documentation missing");
}

TEST(MetaStructTest, DoesNotCheckKindsAgainstTheDefinition) {
  const auto structure = MetaStruct::New(StructureOf({"a"}));
  structure->SetField("a", "a text");
  EXPECT_EQ(structure->GetFieldType("a"), MetaType::String);
  EXPECT_FALSE(structure->MatchesStructureDefinition());
}

TEST(MetaStructTest, ANulInAFieldNameEndsTheErrorMessage) {
  const auto structure = MetaStruct::New("Rec");
  structure->LockStructure();
  const std::string name("a\0b", 3);
  try {
    structure->SetField(name, 1);
    FAIL() << "a locked structure took a new field";
  } catch (const KestrelException& error) {
    EXPECT_STREQ(error.what(), "Unable to set new field a");
  }
}

// Reading.

TEST(MetaStructTest, ListsItsFieldsInByteOrder) {
  EXPECT_THAT(StructureOf({"zeta", "alpha", "Beta"})->GetFieldNames(),
              ElementsAre("Beta", "alpha", "zeta"));
}

TEST(MetaStructTest, OrdersBytesAsUnsigned) {
  EXPECT_THAT(StructureOf({"\xC3\xBC", "z", "", std::string("a\0", 2), "a", "ab"})->GetFieldNames(),
              ElementsAre("", "a", std::string("a\0", 2), "ab", "z", "\xC3\xBC"));
}

TEST(MetaStructTest, HasAFieldOfTheEmptyName) {
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("", 1);
  EXPECT_TRUE(structure->HasField(""));
  EXPECT_THAT(structure->GetFieldNames(), ElementsAre(""));
  EXPECT_EQ(structure->ToString(), "{'' => '1', }");
}

TEST(MetaStructTest, FindsOnlyWholeNames) {
  const auto structure = StructureOf({"abc", "axc"});
  EXPECT_TRUE(structure->HasField("abc"));
  EXPECT_TRUE(structure->HasField("axc"));
  for (const char* const name : {"", "a", "ab", "abcd", "ABC", "acc", "azc"}) {
    EXPECT_FALSE(structure->HasField(name)) << name;
    EXPECT_EQ(structure->GetField(name), nullptr) << name;
  }
}

TEST(MetaStructTest, DistinguishesNamesThatDifferInOneOrTwoBytes) {
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("a1cxe", 1);
  structure->SetField("a2cxe", 2);
  structure->SetField("a2cye", 3);
  EXPECT_EQ(structure->GetField("a1cxe")->ToString(), "1");
  EXPECT_EQ(structure->GetField("a2cxe")->ToString(), "2");
  EXPECT_EQ(structure->GetField("a2cye")->ToString(), "3");
  EXPECT_FALSE(structure->HasField("a1cye"));
}

TEST(MetaStructTest, ReturnsNullForAnUnknownField) {
  EXPECT_EQ(StructureOf({"a"})->GetField("b"), nullptr);
}

TEST(MetaStructTest, ReturnsTheKindOfAField) {
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("int", 1);
  structure->SetField("bool", true);
  structure->SetField("string", "x");
  structure->SetField("struct", MetaStruct::New("Inner"));
  structure->SetField("list", std::vector<long>());
  EXPECT_EQ(structure->GetFieldType("int"), MetaType::Int);
  EXPECT_EQ(structure->GetFieldType("bool"), MetaType::Bool);
  EXPECT_EQ(structure->GetFieldType("string"), MetaType::String);
  EXPECT_EQ(structure->GetFieldType("struct"), MetaType::Struct);
  EXPECT_EQ(structure->GetFieldType("list"), MetaType::List);
}

TEST(MetaStructTest, ThrowsAnIntForTheKindOfAnUnknownField) {
  const auto structure = StructureOf({"a"});
  try {
    structure->GetFieldType("b");
    FAIL() << "an unknown field had a kind";
  } catch (const int code) {
    EXPECT_EQ(code, 1);
  }
}

TEST(MetaStructTest, ThrowsForTheDocumentationOfAnUnknownField) {
  EXPECT_THAT([] { StructureOf({"a"})->GetFieldDocumentation("b"); },
              ThrowsMessage<KestrelException>("Field b is not present in the structure Rec"));
}

TEST(MetaStructTest, PrintsASeparatorAfterEachField) {
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("b", "x");
  structure->SetField("a", 1);
  EXPECT_EQ(structure->ToString(), "{'a' => '1', 'b' => 'x', }");
}

TEST(MetaStructTest, PrintsNestedValues) {
  const auto inner = MetaStruct::New("Inner");
  inner->SetField("x", true);
  const auto list = MetaList::New(MetaType::Struct, inner);
  list->Add(inner);
  list->Add(inner);
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("inner", inner);
  structure->SetField("list", list);
  structure->SetField("none", std::vector<long>());
  structure->SetField("odd", std::make_shared<LyingValue>(MetaType::Struct));
  EXPECT_EQ(structure->ToString(),
            "{'inner' => '{'x' => 'true', }', 'list' => '{'x' => 'true', }, {'x' => 'true', }', "
            "'none' => '', 'odd' => 'a lie', }");
}

// Removing.

TEST(MetaStructTest, RemovesAField) {
  const auto structure = StructureOf({"a", "b", "c"});
  structure->RemoveField("b");
  EXPECT_THAT(structure->GetFieldNames(), ElementsAre("a", "c"));
  EXPECT_FALSE(structure->HasField("b"));
  EXPECT_TRUE(structure->HasField("c"));
}

TEST(MetaStructTest, IgnoresTheRemovalOfAnUnknownField) {
  const auto structure = StructureOf({"a"});
  structure->RemoveField("b");
  EXPECT_THAT(structure->GetFieldNames(), ElementsAre("a"));
}

TEST(MetaStructTest, RemovesItsLastFieldAndAcceptsNewOnes) {
  const auto structure = StructureOf({"a"});
  structure->RemoveField("a");
  EXPECT_EQ(structure->ToString(), "{}");
  structure->SetField("b", 2);
  EXPECT_EQ(structure->ToString(), "{'b' => '2', }");
}

TEST(MetaStructTest, UsesTheMemoryOfARemovedFieldAgain) {
  if (kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs much memory";
  }
  const auto value = MetaInt::New(100);
  const auto structure = StructureOf({"a", "b", "c", "d", "e", "f", "g", "h"});
  const MemoryLimit limit;
  for (int round = 0; round < 200000; ++round) {
    structure->RemoveField("d");
    structure->SetField("d", value);
  }
  EXPECT_EQ(structure->GetField("d"), value);
}

TEST(MetaStructTest, ReleasesARemovedValue) {
  const auto value = MetaInt::New(100);
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("a", value);
  EXPECT_EQ(value.use_count(), 2);
  structure->RemoveField("a");
  EXPECT_EQ(value.use_count(), 1);
}

TEST(MetaStructTest, ReleasesARemovedValueAfterALongNameWasAdded) {
  const auto value = MetaInt::New(100);
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("a", value);
  structure->SetField(std::string(300, 'n'), 1);
  EXPECT_EQ(value.use_count(), 2);
  structure->RemoveField("a");
  EXPECT_EQ(value.use_count(), 1);
}

TEST(MetaStructTest, RefusesToRemoveWhenLocked) {
  const auto structure = StructureOf({"a"});
  structure->LockStructure();
  EXPECT_THAT([&] { structure->RemoveField("a"); },
              ThrowsMessage<KestrelException>("Structure is locked, unable to remove fields"));
  EXPECT_TRUE(structure->HasField("a"));
}

TEST(MetaStructTest, RefusesToRemoveAnUnknownFieldWhenLocked) {
  const auto structure = StructureOf({"a"});
  structure->LockStructure();
  EXPECT_THAT([&] { structure->RemoveField("b"); },
              ThrowsMessage<KestrelException>("Structure is locked, unable to remove fields"));
}

// Definitions.

TEST(MetaStructTest, KeepsAndLocksItsDefinition) {
  const auto definition = StructureOf({"a", "b"});
  const auto structure = MetaStruct::New(definition);
  EXPECT_TRUE(structure->HasStructureDefinition());
  EXPECT_EQ(structure->GetStructureDefinition(), definition);
  EXPECT_EQ(structure->GetTypeName(), "Rec");
  EXPECT_THAT(structure->GetFieldNames(), IsEmpty());
  EXPECT_THAT([&] { definition->RemoveField("a"); },
              ThrowsMessage<KestrelException>("Structure is locked, unable to remove fields"));
  EXPECT_THAT([&] { definition->SetField("c", 1); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field c on structure. Structure has been locked"));
}

TEST(MetaStructTest, IsItselfUnlockedWhenMadeFromADefinition) {
  const auto structure = MetaStruct::New(StructureOf({"a"}));
  structure->SetField("a", 1);
  structure->RemoveField("a");
  EXPECT_FALSE(structure->HasField("a"));
}

TEST(MetaStructTest, KeepsItsDefinitionAlive) {
  std::weak_ptr<MetaStruct> watched;
  std::shared_ptr<MetaStruct> structure;
  {
    const auto definition = StructureOf({"a"});
    watched = definition;
    structure = MetaStruct::New(definition);
  }
  EXPECT_FALSE(watched.expired());
  structure.reset();
  EXPECT_TRUE(watched.expired());
}

TEST(MetaStructTest, MatchesItsDefinitionOnceAllFieldsAreSet) {
  const auto structure = MetaStruct::New(StructureOf({"a", "b"}));
  EXPECT_FALSE(structure->MatchesStructureDefinition());
  structure->SetField("a", 5);
  EXPECT_FALSE(structure->MatchesStructureDefinition());
  structure->SetField("b", 6);
  EXPECT_TRUE(structure->MatchesStructureDefinition());
  structure->SetField("b", "six");
  EXPECT_FALSE(structure->MatchesStructureDefinition());
}

TEST(MetaStructTest, RefusesANullDefinition) {
  const std::shared_ptr<MetaStruct> none;
  EXPECT_THAT([&] { MetaStruct::New(none); },
              ThrowsMessage<KestrelException>("Invalid NULL structure definition for MetaStruct"));
}

// Comparison.

TEST(MetaStructTest, MatchesNull) {
  Errors errors;
  EXPECT_TRUE(StructureOf({"a"})->IsSameStructure(nullptr, &errors));
  EXPECT_THAT(errors, ElementsAre("Invalid NULL input to MetaStruct validation."));
  EXPECT_TRUE(StructureOf({"a"})->IsSameStructure(nullptr, nullptr));
}

TEST(MetaStructTest, DiffersFromOtherKinds) {
  Errors errors;
  EXPECT_FALSE(StructureOf({})->IsSameStructure(MetaInt::New(1), &errors));
  EXPECT_FALSE(StructureOf({})->IsSameStructure(MetaList::New(MetaType::Int), &errors));
  EXPECT_FALSE(StructureOf({})->IsSameStructure(MetaInt::New(1), nullptr));
  EXPECT_THAT(
      errors,
      ElementsAre("Type Mismatch in MetaStruct Validation: Expected type Struct got type Int",
                  "Type Mismatch in MetaStruct Validation: Expected type Struct got type List"));
}

TEST(MetaStructTest, DiffersFromAnObjectWithAWrongKind) {
  Errors errors;
  const auto liar = std::make_shared<LyingValue>(MetaType::Struct);
  EXPECT_FALSE(StructureOf({})->IsSameStructure(liar, &errors));
  EXPECT_FALSE(StructureOf({})->IsSameStructure(liar, nullptr));
  EXPECT_THAT(errors, ElementsAre("Unable to cast to MetaStruct, runtime error?"));
}

TEST(MetaStructTest, MatchesTheSameFieldsWithOtherValues) {
  Errors errors;
  const auto one = StructureOf({"a", "b"});
  const auto other = StructureOf({"b", "a"});
  other->SetField("a", 999);
  EXPECT_TRUE(one->IsSameStructure(other, &errors));
  EXPECT_TRUE(one->IsSameStructure(other, nullptr));
  EXPECT_TRUE(one->IsSameStructure(one, &errors));
  EXPECT_THAT(errors, IsEmpty());
}

TEST(MetaStructTest, MatchesWhateverItsDocumentationIs) {
  Errors errors;
  const auto one = MetaStruct::New("Rec");
  const auto other = MetaStruct::New("Rec");
  one->SetField("a", MetaInt::New(1), "documented");
  other->SetField("a", 2);
  EXPECT_TRUE(one->IsSameStructure(other, &errors));
  EXPECT_TRUE(other->IsSameStructure(one, &errors));
  EXPECT_THAT(errors, IsEmpty());
}

TEST(MetaStructTest, ReportsAnotherTypeNameAndMatches) {
  Errors errors;
  const auto one = MetaStruct::New("One");
  const auto other = MetaStruct::New("Other");
  one->SetField("a", 1);
  other->SetField("a", 1);
  EXPECT_TRUE(one->IsSameStructure(other, &errors));
  EXPECT_TRUE(one->IsSameStructure(other, nullptr));
  EXPECT_THAT(errors, ElementsAre("Type names do not match."));
}

TEST(MetaStructTest, ReportsTheCountAndTheFirstMissingField) {
  Errors errors;
  EXPECT_FALSE(StructureOf({"a", "b"})->IsSameStructure(StructureOf({"a"}), &errors));
  EXPECT_FALSE(StructureOf({"a", "b"})->IsSameStructure(StructureOf({"a"}), nullptr));
  EXPECT_THAT(errors, ElementsAre("Mismatch on number of fields set in struct. Expected 2 found 1",
                                  "Missing field in input: b"));
}

TEST(MetaStructTest, ReportsAnExtraFieldOnlyByTheCount) {
  Errors errors;
  EXPECT_FALSE(StructureOf({"a"})->IsSameStructure(StructureOf({"a", "b"}), &errors));
  EXPECT_THAT(errors,
              ElementsAre("Mismatch on number of fields set in struct. Expected 1 found 2"));
}

TEST(MetaStructTest, StopsAtTheFirstMissingField) {
  Errors errors;
  EXPECT_FALSE(StructureOf({"a", "c"})->IsSameStructure(StructureOf({"b", "d"}), &errors));
  EXPECT_THAT(errors, ElementsAre("Missing field in input: a"));
}

TEST(MetaStructTest, ReportsOnlyTheFirstFieldOfAnotherType) {
  Errors errors;
  const auto other = StructureOf({"a", "b"});
  other->SetField("a", "text");
  other->SetField("b", "text");
  EXPECT_FALSE(StructureOf({"a", "b"})->IsSameStructure(other, &errors));
  EXPECT_THAT(errors, ElementsAre("Type mismatch on field: a"));
}

TEST(MetaStructTest, ReportsTheTypeNameThenTheCountThenTheFirstField) {
  Errors errors = {"earlier"};
  const auto other = MetaStruct::New("Other");
  other->SetField("a", "text");
  EXPECT_FALSE(StructureOf({"a", "b"})->IsSameStructure(other, &errors));
  EXPECT_THAT(errors, ElementsAre("earlier", "Type names do not match.",
                                  "Mismatch on number of fields set in struct. Expected 2 found 1",
                                  "Type mismatch on field: a"));
}

TEST(MetaStructTest, ReportsNestedProblemsFirst) {
  const auto outer = MetaStruct::New("Outer");
  const auto otherOuter = MetaStruct::New("Outer");
  outer->SetField("inner", StructureOf({"x", "y"}));
  otherOuter->SetField("inner", StructureOf({"x"}));
  Errors errors;
  EXPECT_FALSE(outer->IsSameStructure(otherOuter, &errors));
  EXPECT_FALSE(outer->IsSameStructure(otherOuter, nullptr));
  EXPECT_THAT(errors, ElementsAre("Mismatch on number of fields set in struct. Expected 2 found 1",
                                  "Missing field in input: y", "Type mismatch on field: inner"));
}

TEST(MetaStructTest, ContinuesAfterANestedStructureOfAnotherName) {
  const auto inner = MetaStruct::New("Inner");
  const auto otherInner = MetaStruct::New("Else");
  const auto outer = MetaStruct::New("Outer");
  const auto otherOuter = MetaStruct::New("Outer");
  outer->SetField("inner", inner);
  outer->SetField("z", 1);
  otherOuter->SetField("inner", otherInner);
  otherOuter->SetField("z", "text");
  Errors errors;
  EXPECT_FALSE(outer->IsSameStructure(otherOuter, &errors));
  EXPECT_THAT(errors, ElementsAre("Type names do not match.", "Type mismatch on field: z"));
}

TEST(MetaStructTest, ComparesListsInFieldsByTheirDeclaredShape) {
  const auto one = MetaStruct::New("Rec");
  const auto other = MetaStruct::New("Rec");
  one->SetField("list", std::vector<long>{1});
  other->SetField("list", std::vector<long>{2, 3});
  Errors errors;
  EXPECT_TRUE(one->IsSameStructure(other, &errors));
  EXPECT_THAT(errors, IsEmpty());
  other->SetField("list", std::vector<bool>{true});
  EXPECT_FALSE(one->IsSameStructure(other, &errors));
  EXPECT_THAT(errors, ElementsAre("Mismatch on list type", "Type mismatch on field: list"));
}

TEST(MetaStructTest, LetsAValueOfAnotherClassCompareItself) {
  const auto one = MetaStruct::New("Rec");
  one->SetField("a", std::make_shared<Stranger>(MetaType::Int));
  Errors errors;
  EXPECT_FALSE(one->IsSameStructure(StructureOf({"a"}), &errors));
  EXPECT_FALSE(one->IsSameStructure(one, nullptr));
  EXPECT_THAT(errors, ElementsAre("never the same", "Type mismatch on field: a"));
  EXPECT_TRUE(StructureOf({"a"})->IsSameStructure(one, nullptr));
}

TEST(MetaStructTest, DetectsAFalseKindInAField) {
  const auto one = MetaStruct::New("Rec");
  const auto other = MetaStruct::New("Rec");
  one->SetField("a", MetaStruct::New("Inner"));
  other->SetField("a", std::make_shared<LyingValue>(MetaType::Struct));
  Errors errors;
  EXPECT_FALSE(one->IsSameStructure(other, &errors));
  EXPECT_THAT(errors, ElementsAre("Unable to cast to MetaStruct, runtime error?",
                                  "Type mismatch on field: a"));
}

// The behaviour does not depend on the number of fields.

class MetaStructOfSizeTest : public testing::TestWithParam<int> {
 protected:
  // Makes a structure with as many fields as the parameter says. The tests set further ones.
  static std::shared_ptr<MetaStruct> Filled(const std::string& documentation = "") {
    auto structure = MetaStruct::New("Rec");
    for (int field = 0; field < GetParam(); ++field) {
      structure->SetField("m" + std::to_string(1000 + field), MetaInt::New(field), documentation);
    }
    return structure;
  }
};

TEST_P(MetaStructOfSizeTest, SetsReadsAndRemoves) {
  const auto structure = Filled();
  structure->SetField("z", MetaString::New("last"), "doc of z");
  structure->SetField("a", MetaString::New("first"), "doc of a");
  EXPECT_EQ(structure->GetField("a")->ToString(), "first");
  EXPECT_EQ(structure->GetField("z")->ToString(), "last");
  EXPECT_EQ(structure->GetFieldDocumentation("a"), "doc of a");
  EXPECT_EQ(structure->GetFieldDocumentation("z"), "doc of z");
  EXPECT_EQ(structure->GetFieldType("a"), MetaType::String);
  const std::vector<std::string> names = structure->GetFieldNames();
  EXPECT_EQ(names.size(), static_cast<std::size_t>(GetParam()) + 2);
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  structure->RemoveField("a");
  EXPECT_FALSE(structure->HasField("a"));
  EXPECT_EQ(structure->GetField("a"), nullptr);
  for (int field = 0; field < GetParam(); ++field) {
    EXPECT_EQ(structure->GetField("m" + std::to_string(1000 + field))->ToString(),
              std::to_string(field));
  }
  EXPECT_EQ(structure->GetField("z")->ToString(), "last");
  EXPECT_EQ(structure->GetTypeName(), "Rec");
}

TEST_P(MetaStructOfSizeTest, ReplacesValueAndDocumentation) {
  const auto structure = Filled();
  structure->SetField("a", MetaInt::New(1), "old");
  structure->SetField("a", MetaString::New("x"), "new");
  EXPECT_EQ(structure->GetField("a")->ToString(), "x");
  EXPECT_EQ(structure->GetFieldDocumentation("a"), "new");
  structure->SetField("a", 2);
  EXPECT_EQ(structure->GetFieldDocumentation("a"), "Documentation missing");
  EXPECT_EQ(structure->GetFieldNames().size(), static_cast<std::size_t>(GetParam()) + 1);
}

TEST_P(MetaStructOfSizeTest, AcceptsOnlyNewValuesWhenLocked) {
  const auto structure = Filled();
  structure->SetField("a", 1);
  structure->LockStructure();
  structure->SetField("a", MetaString::New("x"), "new");
  EXPECT_EQ(structure->GetField("a")->ToString(), "x");
  EXPECT_EQ(structure->GetFieldDocumentation("a"), "new");
  EXPECT_THAT([&] { structure->SetField("b", 1); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field b on structure. Structure has been locked"));
  EXPECT_THAT([&] { structure->RemoveField("a"); },
              ThrowsMessage<KestrelException>("Structure is locked, unable to remove fields"));
  EXPECT_EQ(structure->GetFieldNames().size(), static_cast<std::size_t>(GetParam()) + 1);
}

TEST_P(MetaStructOfSizeTest, FollowsItsDefinition) {
  const auto definition = Filled("documented");
  definition->SetField("a", 1);
  const auto structure = MetaStruct::New(definition);
  const std::vector<std::string> names = definition->GetFieldNames();
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    EXPECT_FALSE(structure->MatchesStructureDefinition());
    structure->SetField(*name, 5);
  }
  EXPECT_TRUE(structure->MatchesStructureDefinition());
  EXPECT_THAT([&] { structure->SetField("b", 1); },
              ThrowsMessage<KestrelException>(
                  "Unable to set new field b on structure.  The field does not match the "
                  "Structure definition for this MetaStruct."));
  EXPECT_EQ(structure->GetTypeName(), "Rec");
}

TEST_P(MetaStructOfSizeTest, ComparesWithASimilarStructure) {
  const auto one = Filled("documented");
  const auto other = Filled();
  one->SetField("z", 1);
  other->SetField("z", 2);
  Errors errors;
  EXPECT_TRUE(one->IsSameStructure(other, &errors));
  EXPECT_TRUE(other->IsSameStructure(one, nullptr));
  EXPECT_THAT(errors, IsEmpty());
  other->SetField("z", "text");
  EXPECT_FALSE(one->IsSameStructure(other, &errors));
  EXPECT_THAT(errors, ElementsAre("Type mismatch on field: z"));
}

TEST_P(MetaStructOfSizeTest, ReportsAMissingField) {
  const auto one = Filled();
  const auto other = Filled();
  one->SetField("z", 1);
  other->SetField("zz", 1);
  Errors errors;
  EXPECT_FALSE(one->IsSameStructure(other, &errors));
  EXPECT_THAT(errors, ElementsAre("Missing field in input: z"));
}

TEST_P(MetaStructOfSizeTest, HasNoFieldThatWasNotSet) {
  const auto structure = Filled();
  EXPECT_FALSE(structure->HasField("q"));
  EXPECT_EQ(structure->GetField("q"), nullptr);
  EXPECT_THROW(structure->GetFieldType("q"), int);
  EXPECT_THAT([&] { structure->GetFieldDocumentation("q"); },
              ThrowsMessage<KestrelException>("Field q is not present in the structure Rec"));
  structure->RemoveField("q");
  EXPECT_EQ(structure->GetFieldNames().size(), static_cast<std::size_t>(GetParam()));
}

TEST_P(MetaStructOfSizeTest, RefusesNull) {
  const auto structure = Filled();
  EXPECT_THAT([&] { structure->SetField("a", nullptr); },
              ThrowsMessage<KestrelException>(kNullMessage));
  EXPECT_FALSE(structure->HasField("a"));
}

TEST_P(MetaStructOfSizeTest, AcceptsItsOwnStringsAsArguments) {
  const auto structure = Filled();
  structure->SetField("a", MetaInt::New(1), "shared by two");
  structure->SetField("b", structure->GetField("a"), structure->GetFieldDocumentation("a"));
  structure->SetField("a", structure->GetField("b"), structure->GetFieldDocumentation("a"));
  EXPECT_EQ(structure->GetFieldDocumentation("a"), "shared by two");
  EXPECT_EQ(structure->GetFieldDocumentation("b"), "shared by two");
}

TEST_P(MetaStructOfSizeTest, ReleasesEveryValue) {
  const auto value = MetaInt::New(100);
  {
    const auto structure = Filled();
    for (const std::string& name : structure->GetFieldNames()) {
      structure->SetField(name, value);
    }
    structure->SetField("a", value);
    EXPECT_EQ(value.use_count(), GetParam() + 2);
    structure->SetField("a", 1);
    EXPECT_EQ(value.use_count(), GetParam() + 1);
  }
  EXPECT_EQ(value.use_count(), 1);
}

std::string SizeName(const testing::TestParamInfo<int>& info) {
  return "Beside" + std::to_string(info.param) + "Fields";
}

INSTANTIATE_TEST_SUITE_P(Sizes, MetaStructOfSizeTest,
                         testing::Values(0, 4, 5, 6, 7, 11, 12, 61, 62, 63, 64, 65, 66, 200),
                         SizeName);

// Comparison with a model.

struct ModelField {
  std::string text;
  std::string documentation;
};

using Model = std::map<std::string, ModelField>;

void ExpectSame(const MetaStruct& structure, const Model& model) {
  std::vector<std::string> names;
  std::string text = "{";
  for (const auto& [name, field] : model) {
    names.push_back(name);
    text += "'" + name + "' => '" + field.text + "', ";
    const std::string documentation =
        field.documentation.empty() ? "Documentation missing" : field.documentation;
    ASSERT_EQ(structure.GetFieldDocumentation(name), documentation);
  }
  ASSERT_EQ(structure.GetFieldNames(), names);
  ASSERT_EQ(structure.ToString(), text + "}");
}

void RunAgainstModel(Random& random, std::size_t poolSize) {
  SCOPED_TRACE("names " + std::to_string(poolSize));
  const auto structure = MetaStruct::New("Rec");
  Model model;
  for (int step = 0; step < 400; ++step) {
    const std::size_t pick = random.Below(poolSize);
    // Every eleventh name is too long for a layout.
    const std::string name = std::to_string(pick) + std::string(pick % 11 == 10 ? 300 : 0, 'n');
    if (random.Chance(25)) {
      structure->RemoveField(name);
      model.erase(name);
    } else {
      const ModelField field = {std::to_string(step), random.Chance(33) ? "doc" : ""};
      structure->SetField(name, MetaString::New(field.text), field.documentation);
      model[name] = field;
    }
    if (step % 20 == 0) {
      ASSERT_NO_FATAL_FAILURE(ExpectSame(*structure, model));
    }
  }
  ASSERT_NO_FATAL_FAILURE(ExpectSame(*structure, model));
}

TEST(MetaStructTest, BehavesAsAnOrderedMapWould) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  for (int rounds = Rounds(20, 2000); rounds > 0; --rounds) {
    for (const std::size_t poolSize : {5, 9, 40, 150}) {
      ASSERT_NO_FATAL_FAILURE(RunAgainstModel(random, poolSize));
    }
  }
}

// Hostile sizes.

void ExpectToTakeFields(const std::vector<int>& order) {
  const auto structure = MetaStruct::New("Rec");
  for (const int field : order) {
    structure->SetField(std::to_string(10000000 + field), field);
  }
  const std::vector<std::string> names = structure->GetFieldNames();
  ASSERT_EQ(names.size(), order.size());
  EXPECT_EQ(names.front(), "10000000");
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  EXPECT_EQ(structure->GetField("10076543")->ToString(), "76543");
  EXPECT_FALSE(structure->HasField("1007654"));
  Errors errors;
  EXPECT_TRUE(structure->IsSameStructure(structure, &errors));
  EXPECT_THAT(errors, IsEmpty());
}

std::vector<int> Ascending(int count) {
  std::vector<int> order(static_cast<std::size_t>(count));
  std::iota(order.begin(), order.end(), 0);
  return order;
}

TEST(MetaStructTest, HandlesAMillionFields) { ExpectToTakeFields(Ascending(1000000)); }

TEST(MetaStructTest, AcceptsManyFieldsInDescendingOrder) {
  std::vector<int> order = Ascending(100000);
  std::reverse(order.begin(), order.end());
  ExpectToTakeFields(order);
}

TEST(MetaStructTest, AcceptsManyFieldsInRandomOrder) {
  std::vector<int> order = Ascending(100000);
  std::shuffle(order.begin(), order.end(), std::mt19937(1));
  ExpectToTakeFields(order);
}

TEST(MetaStructTest, AcceptsLongNamesAndStrings) {
  const std::string name(100000, 'n');
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("a", 1);
  structure->SetField(name, MetaString::New(name), name);
  structure->SetField(name + "x", 2);
  EXPECT_EQ(structure->GetField(name)->ToString(), name);
  EXPECT_EQ(structure->GetFieldDocumentation(name), name);
  EXPECT_EQ(structure->GetField(name + "x")->ToString(), "2");
  EXPECT_EQ(structure->GetField("a")->ToString(), "1");
  EXPECT_THAT(structure->GetFieldNames(), ElementsAre("a", name, name + "x"));
}

// Makes structures that are nested in fields with this name, directly or through lists of
// structures.
std::shared_ptr<MetaStruct> Nested(int depth, bool hasLists, const std::string& name = "in") {
  auto structure = StructureOf({"leaf"});
  for (int level = 0; level < depth; ++level) {
    auto outer = MetaStruct::New("Rec");
    if (hasLists) {
      const auto list = MetaList::New(MetaType::Struct, structure);
      list->Add(structure);
      outer->SetField(name, list);
    } else {
      outer->SetField(name, structure);
    }
    structure = std::move(outer);
  }
  return structure;
}

constexpr int kDeep = 10000;

TEST(MetaStructTest, PrintsDeepNesting) {
  std::string expected = "{'leaf' => '1', }";
  std::string opening;
  for (int level = 0; level < kDeep; ++level) {
    opening += "{'in' => '";
    expected += "', }";
  }
  expected.insert(0, opening);
  // Not EXPECT_EQ: a failure must not print the whole string.
  EXPECT_TRUE(Nested(kDeep, false)->ToString() == expected);
  EXPECT_TRUE(Nested(kDeep, true)->ToString() == expected);
}

TEST(MetaStructTest, ComparesDeepNesting) {
  for (const bool hasLists : {false, true}) {
    Errors errors;
    EXPECT_TRUE(Nested(kDeep, hasLists)->IsSameStructure(Nested(kDeep, hasLists), &errors));
    EXPECT_THAT(errors, IsEmpty());
  }
}

TEST(MetaStructTest, ReportsADeepDifferenceAtEachLevel) {
  Errors errors;
  EXPECT_FALSE(Nested(kDeep, false)->IsSameStructure(Nested(kDeep + 1, false), &errors));
  ASSERT_EQ(errors.size(), static_cast<std::size_t>(kDeep) + 1);
  EXPECT_EQ(errors.front(), "Missing field in input: leaf");
  EXPECT_EQ(errors.back(), "Type mismatch on field: in");
}

TEST(MetaStructTest, DestroysDeepNesting) {
  for (const bool hasLists : {false, true}) {
    auto structure = Nested(20 * kDeep, hasLists);
    const std::weak_ptr<MetaStruct> watched = structure;
    structure.reset();
    EXPECT_TRUE(watched.expired());
  }
}

void RunOnASmallStack(std::function<void()> work) {
  constexpr std::size_t kStack = 256 * 1024;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStack), 0);
  const auto run = [](void* function) -> void* {
    (*static_cast<std::function<void()>*>(function))();
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// Beyond a certain depth, structures are not destroyed recursively but one after the other.
TEST(MetaStructTest, DestroysDeepNestingOnASmallStack) {
  for (const bool hasLists : {false, true}) {
    auto structure = Nested(20 * kDeep, hasLists);
    const std::weak_ptr<MetaStruct> watched = structure;
    RunOnASmallStack([&] { structure.reset(); });
    EXPECT_TRUE(watched.expired());
  }
}

// The name is too long for a layout, so each structure has its own index.
TEST(MetaStructTest, DestroysDeepNestingUnderALongNameOnASmallStack) {
  auto structure = Nested(kDeep, false, std::string(300, 'n'));
  const std::weak_ptr<MetaStruct> watched = structure;
  RunOnASmallStack([&] { structure.reset(); });
  EXPECT_TRUE(watched.expired());
}

TEST(MetaStructTest, ComparesDeepNestingOnASmallStack) {
  for (const bool hasLists : {false, true}) {
    const auto mine = Nested(kDeep, hasLists);
    const auto other = Nested(kDeep, hasLists);
    bool isSame = false;
    RunOnASmallStack([&] { isSame = mine->IsSameStructure(other, nullptr); });
    EXPECT_TRUE(isSame);
  }
}

TEST(MetaStructTest, DestroysALongChainOfDefinitions) {
  auto structure = StructureOf({"a"});
  const std::weak_ptr<MetaStruct> first = structure;
  for (int level = 0; level < 20 * kDeep; ++level) {
    structure = MetaStruct::New(structure);
  }
  EXPECT_FALSE(first.expired());
  structure.reset();
  EXPECT_TRUE(first.expired());
}

TEST(MetaStructTest, ReleasesAllValuesAtEachDepth) {
  constexpr int kLevels = 100;
  const auto held = MetaInt::New(1000);
  auto structure = MetaStruct::New("Rec");
  for (int level = 0; level < kLevels; ++level) {
    const auto list = MetaList::New(MetaType::Int);
    list->Add(held);
    auto outer = MetaStruct::New("Rec");
    outer->SetField("first", held);
    outer->SetField("in", structure);
    outer->SetField("last", list);
    structure = std::move(outer);
  }
  EXPECT_EQ(held.use_count(), 2 * kLevels + 1);
  structure.reset();
  EXPECT_EQ(held.use_count(), 1);
}

// A value whose destructor destroys another value.
class KeeperOfAnother : public LyingValue {
 public:
  explicit KeeperOfAnother(std::shared_ptr<MetaObject>& kept)
      : LyingValue(MetaType::String), kept_(kept) {}
  ~KeeperOfAnother() override { kept_.reset(); }

 private:
  std::shared_ptr<MetaObject>& kept_;
};

TEST(MetaStructTest, DestroysAValueThatDestroysAnother) {
  std::shared_ptr<MetaObject> kept = Nested(kDeep, true);
  const std::weak_ptr<MetaObject> watched = kept;
  auto structure = MetaStruct::New("Rec");
  structure->SetField("keeper", std::make_shared<KeeperOfAnother>(kept));
  for (int level = 0; level < 100; ++level) {
    auto outer = MetaStruct::New("Rec");
    outer->SetField("in", structure);
    structure = std::move(outer);
  }
  structure.reset();
  EXPECT_TRUE(watched.expired());
}

TEST(MetaStructTest, ReleasesADeepValueThatItReplaces) {
  const auto structure = MetaStruct::New("Rec");
  auto deep = Nested(20 * kDeep, false);
  const std::weak_ptr<MetaStruct> watched = deep;
  structure->SetField("a", deep);
  deep.reset();
  EXPECT_FALSE(watched.expired());
  structure->SetField("a", 1);
  EXPECT_TRUE(watched.expired());
}

}  // namespace
