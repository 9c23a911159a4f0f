// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/CatalogWords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kestrel/KestrelException.h"

namespace Kestrel::Catalog {
namespace {

using CallSpec::ParameterConstraintType;
using CallSpec::ParameterType;
using MetaObj::MetaType;
using testing::ElementsAre;
using testing::ThrowsMessage;

TEST(CatalogWordsTest, NamesEachKindOfParameterAsDescriptorsDo) {
  std::vector<std::string> words;
  for (int number = ParameterType::String; number <= ParameterType::BoolList; ++number) {
    const auto kind = static_cast<ParameterType>(number);
    words.push_back(WordOf(kind));
    EXPECT_EQ(kind, ParameterKindOf(words.back()));
  }
  EXPECT_THAT(words,
              ElementsAre("string", "int", "bool", "flag", "string-list", "int-list", "bool-list"));
}

TEST(CatalogWordsTest, NamesEachTypeOfConstraintAsDescriptorsDo) {
  std::vector<std::string> words;
  for (int number = CallSpec::NoConstraint; number <= CallSpec::StringRegex; ++number) {
    const auto type = static_cast<ParameterConstraintType>(number);
    words.push_back(WordOf(type));
    EXPECT_EQ(type, ConstraintTypeOf(words.back()));
  }
  EXPECT_THAT(words, ElementsAre("none", "range", "intenum", "stringenum", "regex"));
}

TEST(CatalogWordsTest, NamesEachKindOfValueAndOfList) {
  const std::vector<ValueKind> kinds = {{MetaType::Int, false},    {MetaType::Bool, false},
                                        {MetaType::String, false}, {MetaType::Struct, false},
                                        {MetaType::Int, true},     {MetaType::Bool, true},
                                        {MetaType::String, true},  {MetaType::Struct, true}};
  std::vector<std::string> words;
  for (const ValueKind& kind : kinds) {
    words.push_back(WordOf(kind));
    EXPECT_TRUE(kind == ValueKindOf(words.back())) << words.back();
  }
  EXPECT_THAT(words, ElementsAre("int", "bool", "string", "structure", "int-list", "bool-list",
                                 "string-list", "structure-list"));
}

TEST(CatalogWordsTest, HasNoKindForAnotherWord) {
  for (const char* const word :
       {"", "String", "strin", "string ", "-list", "list", "string-listx"}) {
    EXPECT_FALSE(ParameterKindOf(word).has_value()) << word;
    EXPECT_FALSE(ValueKindOf(word).has_value()) << word;
    EXPECT_FALSE(ConstraintTypeOf(word).has_value()) << word;
  }
}

TEST(CatalogWordsTest, HasNoWordForAKindThatDoesNotExist) {
  const auto refusal = ThrowsMessage<KestrelException>("A kind does not exist");
  EXPECT_THAT([] { WordOf(static_cast<ParameterType>(7)); }, refusal);
  EXPECT_THAT([] { WordOf(static_cast<ParameterConstraintType>(-1)); }, refusal);
  EXPECT_THAT([] { WordOf(ValueKind{static_cast<MetaType>(5), true}); }, refusal);
  EXPECT_THAT([] { WordOf(ValueKind{MetaType::List, true}); }, refusal);
}

}  // namespace
}  // namespace Kestrel::Catalog
