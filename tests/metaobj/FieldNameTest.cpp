// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "metaobj/FieldName.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Kestrel::MetaObj::FieldName;

// Returns all strings of up to `longest` bytes from a small alphabet.
std::vector<std::string> TextsUpTo(std::size_t longest) {
  std::vector<std::string> texts = {""};
  for (std::size_t next = 0; next < texts.size(); ++next) {
    const std::string text = texts[next];
    if (text.size() == longest) {
      break;
    }
    for (const char byte : {'\0', 'a', '\xff'}) {
      texts.push_back(text + byte);
    }
  }
  return texts;
}

TEST(FieldNameTest, ComparesShortNamesExactly) {
  const std::vector<std::string> texts = TextsUpTo(5);
  ASSERT_EQ(texts.size(), 364u);
  for (const std::string& left : texts) {
    for (const std::string& right : texts) {
      ASSERT_EQ(FieldName(left) == FieldName(right), left == right);
      ASSERT_EQ(FieldName(left).HasSameNumbers(FieldName(right)), left == right);
    }
  }
}

TEST(FieldNameTest, LooksAtEachByte) {
  for (std::size_t size = 1; size <= 40; ++size) {
    const std::string text(size, 'n');
    EXPECT_TRUE(FieldName(text) == FieldName(std::string(text)));
    EXPECT_FALSE(FieldName(text) == FieldName(text + 'n'));
    for (std::size_t place = 0; place < size; ++place) {
      std::string other = text;
      other[place] = 'm';
      EXPECT_FALSE(FieldName(text) == FieldName(other)) << size << ", " << place;
    }
  }
}

TEST(FieldNameTest, OnlyANameOfAtMost16BytesIsDeterminedByItsNumbers) {
  EXPECT_TRUE(FieldName(std::string(16, 'n')).IsShort());
  EXPECT_FALSE(FieldName(std::string(17, 'n')).IsShort());
  EXPECT_TRUE(FieldName("12345678x12345678").HasSameNumbers(FieldName("12345678y12345678")));
}

TEST(FieldNameTest, ReturnsItsText) {
  const std::string text = "a name";
  EXPECT_EQ(FieldName(text).Text().data(), text.data());
  EXPECT_EQ(FieldName(text).Text(), text);
}

}  // namespace
