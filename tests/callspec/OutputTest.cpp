// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/Output.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

namespace Kestrel::CallSpec {
namespace {

using testing::ElementsAre;

TEST(OutputTest, IsEmptyAtFirst) {
  const std::shared_ptr<Output> output = Output::New();
  EXPECT_EQ(output->GetRootObject(), nullptr);
  EXPECT_FALSE(output->HasError());
  EXPECT_TRUE(output->GetErrors().empty());
  EXPECT_EQ(output->GetOutputType(), Output::Ordinary);
}

TEST(OutputTest, NumbersOfTheTypesAreFixed) {
  EXPECT_EQ(static_cast<int>(Output::Ordinary), 0);
  EXPECT_EQ(static_cast<int>(Output::Help), 2);
  EXPECT_EQ(sizeof(Output::OutputType), 4U);
}

TEST(OutputTest, StoresAnyOutputType) {
  const auto output = Output::New();
  output->SetOutputType(Output::Help);
  EXPECT_EQ(output->GetOutputType(), Output::Help);
  output->SetOutputType(static_cast<Output::OutputType>(1));
  EXPECT_EQ(static_cast<int>(output->GetOutputType()), 1);
}

TEST(OutputTest, SharesTheRootOfEveryKind) {
  const auto output = Output::New();
  const auto truth = MetaObj::MetaBool::New(true);
  output->SetRootObject(truth);
  EXPECT_EQ(output->GetRootObject(), truth);
  const auto number = MetaObj::MetaInt::New(77);
  output->SetRootObject(number);
  EXPECT_EQ(output->GetRootObject(), number);
  const auto text = MetaObj::MetaString::New("text");
  output->SetRootObject(text);
  EXPECT_EQ(output->GetRootObject(), text);
  const auto structure = MetaObj::MetaStruct::New("Record");
  output->SetRootObject(structure);
  EXPECT_EQ(output->GetRootObject(), structure);
  const auto list = MetaObj::MetaList::New(MetaObj::MetaType::Int);
  output->SetRootObject(list);
  EXPECT_EQ(output->GetRootObject(), list);
  const std::shared_ptr<MetaObj::MetaObject> any = number;
  output->SetRootObject(any);
  EXPECT_EQ(output->GetRootObject(), any);
}

TEST(OutputTest, RootIsSharedAndNotCopied) {
  const auto output = Output::New();
  const auto structure = MetaObj::MetaStruct::New("Record");
  output->SetRootObject(structure);
  structure->SetField("late", 1);
  const auto root = std::dynamic_pointer_cast<MetaObj::MetaStruct>(output->GetRootObject());
  ASSERT_NE(root, nullptr);
  EXPECT_TRUE(root->HasField("late"));
}

TEST(OutputTest, EveryNullClearsTheRoot) {
  const auto output = Output::New();
  const std::shared_ptr<MetaObj::MetaObject> number = MetaObj::MetaInt::New(1);
  const auto expectCleared = [&](const auto& null) {
    output->SetRootObject(number);
    output->SetRootObject(null);
    EXPECT_EQ(output->GetRootObject(), nullptr);
  };
  expectCleared(nullptr);
  expectCleared(std::shared_ptr<MetaObj::MetaObject>());
  expectCleared(std::shared_ptr<MetaObj::MetaBool>());
  expectCleared(std::shared_ptr<MetaObj::MetaInt>());
  expectCleared(std::shared_ptr<MetaObj::MetaString>());
  expectCleared(std::shared_ptr<MetaObj::MetaList>());
  expectCleared(std::shared_ptr<MetaObj::MetaStruct>());
}

TEST(OutputTest, KeepsMessagesInTheOrderAdded) {
  const auto output = Output::New();
  const std::string copied("copied");
  std::string moved("moved");
  output->AddErrorMessage(copied);
  output->AddErrorMessage("literal");
  output->AddErrorMessage(std::move(moved));
  EXPECT_TRUE(output->HasError());
  EXPECT_THAT(output->GetErrors(), ElementsAre("copied", "literal", "moved"));
  EXPECT_EQ(copied, "copied");
}

TEST(OutputTest, AnEmptyMessageIsAnError) {
  const auto output = Output::New();
  output->AddErrorMessage("");
  EXPECT_TRUE(output->HasError());
  EXPECT_THAT(output->GetErrors(), ElementsAre(""));
}

TEST(OutputTest, ANullMessageIsTheEmptyMessage) {
  const auto output = Output::New();
  const char* const null = nullptr;
  output->AddErrorMessage(null);
  output->AddErrorMessage({});
  EXPECT_THAT(output->GetErrors(), ElementsAre("", ""));
}

TEST(OutputTest, TheReturnedErrorsIncludeLaterMessages) {
  const auto output = Output::New();
  const std::vector<std::string>& errors = output->GetErrors();
  output->AddErrorMessage("later");
  EXPECT_THAT(errors, ElementsAre("later"));
}

TEST(OutputTest, KeepsEveryByteOfAMessage) {
  const auto output = Output::New();
  output->AddErrorMessage(std::string("a\0b\xff", 4));
  EXPECT_EQ(output->GetErrors().front(), std::string("a\0b\xff", 4));
}

TEST(OutputTest, IsMadeOnlyByItsFactoryAndCannotBeCopied) {
  EXPECT_FALSE(std::is_default_constructible<Output>::value);
  EXPECT_FALSE(std::is_copy_constructible<Output>::value);
  EXPECT_FALSE(std::is_copy_assignable<Output>::value);
  EXPECT_TRUE(std::has_virtual_destructor<Output>::value);
}

}  // namespace
}  // namespace Kestrel::CallSpec
