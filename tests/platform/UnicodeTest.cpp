// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/platform/TessaLibs.h"
#include "support/Utf8.h"

namespace {

std::string Escape(const std::string& bytes) {
  const std::unique_ptr<char, void (*)(void*)> text(
      Unicode_EscapeBuffer(bytes.data(), static_cast<ssize_t>(bytes.size()), 0), &std::free);
  return text.get();
}

bool IsValid(const std::string& bytes) {
  return Unicode_IsBufferValid(bytes.data(), static_cast<ssize_t>(bytes.size()), 0);
}

// The sequences of up to three bytes that encode a code point, found by encoding all of them.
class KnownSequences {
 public:
  KnownSequences() {
    for (std::uint32_t point = 0; point < 0x10000; ++point) {
      if (point < 0xD800 || point > 0xDFFF) {
        known_[Key(Kestrel::Testing::EncodeUtf8(point))] = true;
      }
    }
  }

  bool Contains(const std::string& bytes) const { return known_[Key(bytes)]; }

  // Returns whether three bytes consist of valid sequences.
  bool IsMadeOfThem(std::size_t threeBytes) const {
    const auto bytes = [threeBytes](unsigned first, unsigned count) {
      const std::size_t rest = threeBytes >> (8 * (3 - first - count));
      return (std::size_t{1} << (8 * count)) | (rest & ((std::size_t{1} << (8 * count)) - 1));
    };
    const bool endsWell = known_[bytes(1, 2)] || (known_[bytes(1, 1)] && known_[bytes(2, 1)]);
    return known_[bytes(0, 3)] || (known_[bytes(0, 2)] && known_[bytes(2, 1)]) ||
           (known_[bytes(0, 1)] && endsWell);
  }

 private:
  // Returns a number that consists of a leading 1 and the bytes. Because of the 1, sequences of
  // different lengths have different numbers.
  static std::size_t Key(const std::string& bytes) {
    std::size_t key = 1;
    for (const char byte : bytes) {
      key = key << 8 | static_cast<unsigned char>(byte);
    }
    return key;
  }

  std::vector<bool> known_ = std::vector<bool>(std::size_t{1} << 25, false);
};

// Copies each valid sequence and escapes each byte that is not part of one.
std::string EscapeByTable(const KnownSequences& known, const std::string& bytes) {
  std::string text;
  for (std::size_t at = 0; at < bytes.size();) {
    std::size_t length = 1;
    while (length <= 3 && at + length <= bytes.size() &&
           !known.Contains(bytes.substr(at, length))) {
      ++length;
    }
    if (length > 3 || at + length > bytes.size()) {
      char escape[5];
      std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(bytes[at]));
      text += escape;
      ++at;
      continue;
    }
    text += bytes.substr(at, length);
    at += length;
  }
  return text;
}

void ExpectAsByTable(const KnownSequences& known, const std::string& bytes) {
  const std::string expected = EscapeByTable(known, bytes);
  ASSERT_EQ(IsValid(bytes), expected == bytes) << expected;
  // A NUL would end the string early.
  if (bytes.find('\0') == std::string::npos) {
    ASSERT_EQ(Escape(bytes), expected);
  }
}

TEST(UnicodeTest, AgreesWithATableOnAllSequencesOfOneOrTwoBytes) {
  const KnownSequences known;
  std::string bytes(3, '\0');
  for (int first = 0; first < 256; ++first) {
    bytes.resize(1);
    bytes[0] = static_cast<char>(first);
    ASSERT_NO_FATAL_FAILURE(ExpectAsByTable(known, bytes));
    for (int second = 0; second < 256; ++second) {
      bytes.resize(2);
      bytes[1] = static_cast<char>(second);
      ASSERT_NO_FATAL_FAILURE(ExpectAsByTable(known, bytes));
    }
  }
}

TEST(UnicodeTest, AgreesWithATableOnAllSequencesOfThreeBytes) {
  const KnownSequences known;
  for (std::size_t value = 0; value < std::size_t{1} << 24; ++value) {
    const char bytes[] = {static_cast<char>(value >> 16), static_cast<char>(value >> 8),
                          static_cast<char>(value)};
    if (Unicode_IsBufferValid(bytes, 3, 0) != known.IsMadeOfThem(value)) {
      ADD_FAILURE() << std::hex << value;
      return;
    }
  }
}

TEST(UnicodeTest, EscapesSequencesOfThreeBytesAsTheTableDoes) {
  const KnownSequences known;
  std::string bytes(3, '\0');
  // The first and last bytes of all ranges of the encoding.
  const std::string bounds =
      "\x01\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0\xF4\xF5\xFF";
  for (const char first : bounds) {
    for (const char second : bounds) {
      for (const char third : bounds) {
        bytes = {first, second, third};
        ASSERT_NO_FATAL_FAILURE(ExpectAsByTable(known, bytes));
      }
    }
  }
}

TEST(UnicodeTest, AcceptsEveryCodePoint) {
  for (std::uint32_t point = 1; point <= 0x10FFFF; ++point) {
    const bool isSurrogate = point >= 0xD800 && point <= 0xDFFF;
    if (IsValid(Kestrel::Testing::EncodeUtf8(point)) == isSurrogate) {
      ADD_FAILURE() << std::hex << point;
      return;
    }
  }
}

TEST(UnicodeTest, RefusesCodePointsAboveTheLast) {
  EXPECT_TRUE(IsValid("\xF4\x8F\xBF\xBF"));
  EXPECT_FALSE(IsValid("\xF4\x90\x80\x80"));
  EXPECT_FALSE(IsValid("\xF5\x80\x80\x80"));
  EXPECT_EQ(Escape("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
}

TEST(UnicodeTest, RefusesFormsThatAreLongerThanNeeded) {
  EXPECT_FALSE(IsValid("\xC0\xAF"));
  EXPECT_FALSE(IsValid("\xC1\xBF"));
  EXPECT_FALSE(IsValid("\xE0\x9F\xBF"));
  EXPECT_FALSE(IsValid("\xF0\x8F\xBF\xBF"));
  EXPECT_EQ(Escape("\xC0\xAF"), "\\xc0\\xaf");
}

TEST(UnicodeTest, RefusesSurrogates) {
  EXPECT_FALSE(IsValid("\xED\xA0\x80"));
  EXPECT_FALSE(IsValid("\xED\xBF\xBF"));
  EXPECT_TRUE(IsValid("\xED\x9F\xBF"));
  EXPECT_TRUE(IsValid("\xEE\x80\x80"));
}

TEST(UnicodeTest, RefusesIncompleteSequences) {
  EXPECT_FALSE(IsValid("\xF0\x9F\x99"));
  EXPECT_FALSE(IsValid("\xF0\x9F\x99x"));
  EXPECT_FALSE(IsValid("\xF0\x9Fx\x82"));
  EXPECT_EQ(Escape("\xF0\x9F\x99"), "\\xf0\\x9f\\x99");
  EXPECT_EQ(Escape("\xF0\x9F\x99x"), "\\xf0\\x9f\\x99x");
}

TEST(UnicodeTest, EscapesBadBytesAndLeavesTheRestAlone) {
  EXPECT_EQ(Escape("a\xFF\xC3\xBC\x80\\x"), "a\\xff\xC3\xBC\\x80\\x");
  EXPECT_EQ(Escape("\xC3\xC3\xBC"), "\\xc3\xC3\xBC");
  EXPECT_EQ(Escape("plain\ttext\x01\x7F"), "plain\ttext\x01\x7F");
}

TEST(UnicodeTest, FindsNonAsciiBytesAtEveryPositionInStringsOfEveryLength) {
  for (std::size_t size = 1; size < 40; ++size) {
    for (std::size_t at = 0; at < size; ++at) {
      const std::string before(at, '\x7F');
      const std::string behind(size - at - 1, '\x01');
      EXPECT_TRUE(IsValid(before + "x" + behind));
      EXPECT_TRUE(IsValid(before + "\xC3\xBC" + behind));
      EXPECT_EQ(Escape(before + "\xC3\xBC" + behind), before + "\xC3\xBC" + behind);
      EXPECT_EQ(Escape(before + "\xFF" + behind), before + "\\xff" + behind);
      for (const char* const bad : {"\x80", "\xC3", "\xFF"}) {
        EXPECT_FALSE(IsValid(before + bad + behind)) << size << " bytes, bad at " << at;
      }
    }
  }
}

TEST(UnicodeTest, EndsAtTheNulWhenNoLengthIsGiven) {
  const char bytes[] = "good\0\xFF";
  EXPECT_TRUE(Unicode_IsBufferValid(bytes, -1, 0));
  EXPECT_FALSE(Unicode_IsBufferValid(bytes, 6, 0));
  const std::unique_ptr<char, void (*)(void*)> text(Unicode_EscapeBuffer("\xFF!", -1, 0),
                                                    &std::free);
  EXPECT_STREQ(text.get(), "\\xff!");
}

TEST(UnicodeTest, ReadsOnlyTheGivenNumberOfBytes) {
  EXPECT_TRUE(Unicode_IsBufferValid("ab\xFF", 2, 0));
  EXPECT_FALSE(Unicode_IsBufferValid("\xC3\xBC", 1, 0));
  EXPECT_TRUE(Unicode_IsBufferValid("\xFF", 0, 0));
}

TEST(UnicodeTest, NullIsEmpty) {
  EXPECT_TRUE(Unicode_IsBufferValid(nullptr, -1, 0));
  EXPECT_TRUE(Unicode_IsBufferValid("", -1, 0));
  EXPECT_EQ(Escape(""), "");
}

TEST(UnicodeTest, EscapesManyBytes) {
  const std::string bytes(100000, '\xFF');
  EXPECT_EQ(Escape(bytes).size(), 400000u);
}

}  // namespace
