// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/OutputSpec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::CallSpec {
namespace {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

constexpr const char* kNullRoot = "Root object cannot be set to null";
constexpr const char* kSpecWithoutRoot =
    "No root object set for output spec. Root object for output spec must be set for proper "
    "validation of output.";
constexpr const char* kOutputWithoutRoot =
    "No root object set for output. The command did not provide proper output.";

template <typename Value>
std::shared_ptr<OutputSpec> SpecOf(const std::shared_ptr<Value>& root) {
  const auto spec = OutputSpec::New();
  spec->SetRootObject(root);
  return spec;
}

template <typename Value>
std::shared_ptr<Output> OutputOf(const std::shared_ptr<Value>& root) {
  const auto output = Output::New();
  output->SetRootObject(root);
  return output;
}

std::shared_ptr<MetaStruct> Record(const char* typeName, const std::vector<std::string>& fields) {
  const auto structure = MetaStruct::New(typeName);
  for (const std::string& field : fields) {
    structure->SetField(field, 1);
  }
  return structure;
}

TEST(OutputSpecTest, IsEmptyAtFirst) {
  const auto spec = OutputSpec::New();
  EXPECT_EQ(spec->GetRootObject(), nullptr);
  EXPECT_EQ(spec->GetDescription(), "Documentation missing");
}

TEST(OutputSpecTest, IsAPlainClassThatCannotBeCopied) {
  EXPECT_FALSE(std::is_polymorphic<OutputSpec>::value);
  EXPECT_FALSE((std::is_constructible<OutputSpec>::value));
  EXPECT_FALSE(std::is_copy_constructible<OutputSpec>::value);
  EXPECT_FALSE(std::is_copy_assignable<OutputSpec>::value);
}

TEST(OutputSpecTest, AnEmptyDescriptionReadsAsMissing) {
  const auto spec = OutputSpec::New();
  spec->SetDescription("words");
  EXPECT_EQ(spec->GetDescription(), "words");
  spec->SetDescription("");
  EXPECT_EQ(spec->GetDescription(), "Documentation missing");
  EXPECT_EQ(OutputSpec::_docMissingStaticString, "Documentation missing");
}

// Called while static objects are initialised, perhaps before those of the library.
const std::string kDescriptionAtStart = OutputSpec::New()->GetDescription();

TEST(OutputSpecTest, TheTextForAMissingDescriptionIsAvailableToStaticObjects) {
  EXPECT_EQ(kDescriptionAtStart, "Documentation missing");
}

TEST(OutputSpecTest, SharesTheRootOfEveryKind) {
  const auto expectShared = [](const auto& root) {
    EXPECT_EQ(SpecOf(root)->GetRootObject(), root);
  };
  expectShared(MetaBool::New(true));
  expectShared(MetaInt::New(77));
  expectShared(MetaString::New("text"));
  expectShared(MetaList::New(MetaType::Int));
  expectShared(MetaStruct::New("Record"));
  expectShared(std::shared_ptr<MetaObject>(MetaInt::New(78)));
}

TEST(OutputSpecTest, AcceptsAMovedRoot) {
  const auto spec = OutputSpec::New();
  std::shared_ptr<MetaObject> root = MetaStruct::New("Record");
  const MetaObject* const address = root.get();
  spec->SetRootObject(std::move(root));
  EXPECT_EQ(root, nullptr);
  EXPECT_EQ(spec->GetRootObject().get(), address);
}

TEST(OutputSpecTest, EveryNullThrowsAndKeepsTheRoot) {
  const auto root = MetaInt::New(77);
  const auto spec = SpecOf(root);
  const auto expectRefused = [&](const auto& null) {
    EXPECT_THAT([&] { spec->SetRootObject(null); }, ThrowsMessage<KestrelException>(kNullRoot));
    EXPECT_EQ(spec->GetRootObject(), root);
  };
  expectRefused(nullptr);
  expectRefused(std::shared_ptr<MetaObject>());
  expectRefused(std::shared_ptr<MetaBool>());
  expectRefused(std::shared_ptr<MetaInt>());
  expectRefused(std::shared_ptr<MetaString>());
  expectRefused(std::shared_ptr<MetaList>());
  expectRefused(std::shared_ptr<MetaStruct>());
  EXPECT_THAT([&] { spec->SetRootObject(std::shared_ptr<MetaObject>()); },
              ThrowsMessage<KestrelException>(kNullRoot));
  EXPECT_EQ(spec->GetRootObject(), root);
}

TEST(OutputSpecTest, ASpecWithoutRootRefusesAnOutput) {
  std::vector<std::string> errors = {"earlier"};
  EXPECT_FALSE(OutputSpec::New()->Validate(OutputOf(MetaInt::New(1)), &errors));
  EXPECT_THAT(errors, ElementsAre("earlier", kSpecWithoutRoot));
  EXPECT_FALSE(OutputSpec::New()->Validate(OutputOf(MetaInt::New(1)), nullptr));
}

TEST(OutputSpecTest, AnOutputWithoutRootIsRefused) {
  std::vector<std::string> errors;
  EXPECT_FALSE(SpecOf(MetaInt::New(1))->Validate(Output::New(), &errors));
  EXPECT_THAT(errors, ElementsAre(kOutputWithoutRoot));
  EXPECT_FALSE(SpecOf(MetaInt::New(1))->Validate(Output::New(), nullptr));
}

TEST(OutputSpecTest, TheSpecsRootIsCheckedFirst) {
  std::vector<std::string> errors;
  EXPECT_FALSE(OutputSpec::New()->Validate(Output::New(), &errors));
  EXPECT_FALSE(OutputSpec::New()->Validate(nullptr, &errors));
  EXPECT_THAT(errors, ElementsAre(kSpecWithoutRoot, kSpecWithoutRoot));
}

TEST(OutputSpecTest, ANullOutputThrows) {
  std::vector<std::string> errors;
  EXPECT_THAT([&] { SpecOf(MetaInt::New(1))->Validate(nullptr, &errors); },
              ThrowsMessage<KestrelException>("Null output passed to Validate"));
  EXPECT_THAT(errors, IsEmpty());
}

TEST(OutputSpecTest, ScalarsAreComparedByKind) {
  std::vector<std::string> errors;
  EXPECT_TRUE(SpecOf(MetaInt::New(1))->Validate(OutputOf(MetaInt::New(99)), &errors));
  EXPECT_THAT(errors, IsEmpty());
  EXPECT_FALSE(SpecOf(MetaInt::New(1))->Validate(OutputOf(MetaString::New("1")), &errors));
  EXPECT_THAT(errors, ElementsAre("Type mismatch in structure.  Expecting Int got String"));
  EXPECT_FALSE(SpecOf(MetaInt::New(1))->Validate(OutputOf(MetaString::New("1")), nullptr));
}

TEST(OutputSpecTest, ListsOfAnotherKindDoNotMatch) {
  std::vector<std::string> errors;
  EXPECT_FALSE(SpecOf(MetaList::New(MetaType::Int))
                   ->Validate(OutputOf(MetaList::New(MetaType::String)), &errors));
  EXPECT_THAT(errors, ElementsAre("Mismatch on list type"));
}

TEST(OutputSpecTest, ElementsOfListsAreNotCompared) {
  const auto list = MetaList::New(MetaType::Int);
  list->Add(1);
  list->Add(2);
  std::vector<std::string> errors;
  EXPECT_TRUE(SpecOf(MetaList::New(MetaType::Int))->Validate(OutputOf(list), &errors));
  EXPECT_TRUE(SpecOf(list)->Validate(OutputOf(MetaList::New(MetaType::Int)), &errors));
  EXPECT_THAT(errors, IsEmpty());
}

TEST(OutputSpecTest, StructuresWithAnotherTypeNameMatch) {
  std::vector<std::string> errors;
  const auto spec = SpecOf(Record("Declared", {"a", "b"}));
  EXPECT_TRUE(spec->Validate(OutputOf(Record("Other", {"a", "b"})), &errors));
  EXPECT_THAT(errors, ElementsAre("Type names do not match."));
  EXPECT_TRUE(spec->Validate(OutputOf(Record("Other", {"a", "b"})), nullptr));
}

TEST(OutputSpecTest, StructuresWithOtherFieldsDoNotMatch) {
  const auto spec = SpecOf(Record("Declared", {"a", "b"}));
  for (const auto& fields :
       std::vector<std::vector<std::string>>{{"a"}, {"a", "b", "c"}, {"a", "c"}, {}}) {
    std::vector<std::string> errors;
    EXPECT_FALSE(spec->Validate(OutputOf(Record("Declared", fields)), &errors));
    EXPECT_FALSE(errors.empty());
  }
}

TEST(OutputSpecTest, MessagesNameTheKindOfTheSpecAsTheExpectedOne) {
  std::vector<std::string> errors;
  EXPECT_FALSE(SpecOf(MetaBool::New(true))->Validate(OutputOf(MetaInt::New(1)), &errors));
  EXPECT_THAT(errors, ElementsAre("Type mismatch in structure.  Expecting Bool got Int"));
}

TEST(OutputSpecTest, AMismatchLeavesTheOutputWithoutMessages) {
  const auto output = OutputOf(MetaString::New("1"));
  std::vector<std::string> errors;
  EXPECT_FALSE(SpecOf(MetaInt::New(1))->Validate(output, &errors));
  EXPECT_FALSE(output->HasError());
}

}  // namespace
}  // namespace Kestrel::CallSpec
