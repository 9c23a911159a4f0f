// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/TextWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <iomanip>
#include <ios>
#include <sstream>
#include <stdexcept>
#include <string>

#include "support/LimitedBuffer.h"

namespace Kestrel::AutoCli {
namespace {

using ::Kestrel::Testing::LimitedBuffer;

constexpr std::size_t kUnlimited = static_cast<std::size_t>(-1);

template <typename Work>
std::string Write(const Work& work) {
  std::ostringstream out;
  TextWriter writer(out);
  work(writer);
  writer.Finish();
  return out.str();
}

TEST(TextWriterTest, AppendsStringsBytesAndNumbers) {
  EXPECT_EQ(Write([](TextWriter& writer) {
              writer.Append("text");
              writer.Append('\0');
              writer.Append("");
              writer.AppendAll(Decimal{0});
              writer.AppendAll(Decimal{LONG_MIN});
              writer.AppendAll(Decimal{LONG_MAX});
            }),
            std::string("text\0", 5) + "0-92233720368547758089223372036854775807");
}

TEST(TextWriterTest, PadsToAWidthAndNeverCuts) {
  EXPECT_EQ(Write([](TextWriter& writer) {
              writer.AppendLeft("ab", 4);
              writer.Append('|');
              writer.AppendLeft("abcd", 4);
              writer.AppendLeft("abcde", 4);
            }),
            "ab  |abcdabcde");
}

TEST(TextWriterTest, RepeatsAByte) {
  EXPECT_EQ(Write([](TextWriter& writer) {
              writer.Repeat('-', 0);
              writer.Repeat('-', 3);
              writer.Repeat('=', 100000);
            }),
            "---" + std::string(100000, '='));
}

TEST(TextWriterTest, CopiesAndRepeatsEveryShortLength) {
  std::string source;
  for (int i = 0; i < 100; ++i) {
    source += static_cast<char>(' ' + i % 90);
  }
  // Except for 0, each start is so close to the end of the buffer that some lengths do not fit.
  for (const std::size_t start : {0u, 32768u - 70u, 32768u - 20u, 32768u}) {
    for (std::size_t length = 0; length <= source.size(); ++length) {
      const std::string head(start, 'h');
      ASSERT_EQ(Write([&](TextWriter& writer) {
                  writer.Append(head);
                  writer.Append(std::string_view(source).substr(0, length));
                  writer.Repeat('=', length);
                  writer.Append('.');
                }),
                head + source.substr(0, length) + std::string(length, '=') + ".")
          << "start " << start << " length " << length;
    }
  }
}

TEST(TextWriterTest, StringsOfSeveralSizesCrossTheEndOfTheBuffer) {
  for (const std::size_t size : {1u, 7u, 32767u, 32768u, 32769u, 100000u}) {
    const std::string text(size, 'x');
    std::string expected;
    const std::string written = Write([&](TextWriter& writer) {
      for (int i = 0; i < 40000 && expected.size() < 200000; ++i) {
        writer.Append(text);
        writer.Append('.');
        writer.AppendAll(Decimal{i});
        writer.Repeat('_', 3);
        expected += text + "." + std::to_string(i) + "___";
      }
    });
    EXPECT_EQ(written, expected) << size;
  }
}

TEST(TextWriterTest, AppendsPiecesInOrder) {
  static constexpr EscapeTable kTable = EscapeTable().Set('<', "&lt;");
  EXPECT_EQ(Write([](TextWriter& writer) {
              writer.AppendAll("a", '\0', Spaces{0}, Decimal{LONG_MIN}, std::string("b"));
              writer.AppendAll(Escaped{"<c", kTable}, Spaces{3}, Decimal{7}, "");
              writer.AppendAll(Spaces{100});
            }),
            std::string("a\0-9223372036854775808b&lt;c   7", 32) + std::string(100, ' '));
}

TEST(TextWriterTest, PiecesOfSeveralSizesCrossTheEndOfTheBuffer) {
  static constexpr EscapeTable kTable = EscapeTable().Set('<', "&lt;");
  for (std::size_t start = 32768 - 150; start <= 32768; ++start) {
    for (const std::size_t size : {0u, 1u, 31u, 32u, 33u, 70u}) {
      const std::string head(start, 'h');
      const std::string text(size, '<');
      std::string escaped;
      for (std::size_t i = 0; i < size; ++i) {
        escaped += "&lt;";
      }
      ASSERT_EQ(Write([&](TextWriter& writer) {
                  writer.Append(head);
                  writer.AppendAll(text, '.', Spaces{size}, Decimal{-12345}, Escaped{text, kTable});
                  writer.Append('.');
                }),
                head + text + "." + std::string(size, ' ') + "-12345" + escaped + ".")
          << "start " << start << " size " << size;
    }
  }
}

TEST(TextWriterTest, PiecesLongerThanTheBufferAreWrittenWhole) {
  static constexpr EscapeTable kTable = EscapeTable().Set('<', "&lt;");
  const std::string text(40000, 'x');
  EXPECT_EQ(Write([&](TextWriter& writer) {
              writer.AppendAll("a", text, Escaped{text, kTable}, Spaces{70000}, Decimal{1});
            }),
            "a" + text + text + std::string(70000, ' ') + "1");
}

TEST(TextWriterTest, EscapesMarkedBytesAndCopiesTheRest) {
  static constexpr EscapeTable kTable = [] {
    EscapeTable table;
    table.Set('<', "&lt;").Set('"', "\\\"").Set(0, "NUL").Set(0xff, "\\u00ff7");
    return table;
  }();
  EXPECT_EQ(Write([](TextWriter& writer) {
              writer.AppendAll(Escaped{"", kTable});
              writer.AppendAll(Escaped{"plain", kTable});
              writer.AppendAll(Escaped{"<a<<b\"", kTable});
              writer.AppendAll(Escaped{std::string_view("\0\xff\xfe", 3), kTable});
            }),
            "plain&lt;a&lt;&lt;b\\\"NUL\\u00ff7\xfe");
  EXPECT_EQ(kTable.Measure(""), 0u);
  EXPECT_EQ(kTable.Measure("plain"), 5u);
  EXPECT_EQ(kTable.Measure("<\xff\xfe"), 4u + 7u + 1u);
}

TEST(TextWriterTest, EscapesAtEveryPlaceInShortStrings) {
  static constexpr EscapeTable kTable = EscapeTable().Set('<', "&lt;");
  for (std::size_t size = 1; size < 40; ++size) {
    for (std::size_t at = 0; at < size; ++at) {
      const std::string before(at, 'a');
      const std::string after(size - at - 1, 'b');
      const std::string written = Write([&](TextWriter& writer) {
        writer.AppendAll(Escaped{before + "<" + after, kTable});
      });
      EXPECT_EQ(written, before + "&lt;" + after);
    }
  }
}

TEST(TextWriterTest, EscapesStringsLongerThanTheBuffer) {
  static constexpr EscapeTable kTable = EscapeTable().Set('x', "yyyyyyy");
  EXPECT_EQ(Write([](TextWriter& writer) {
              writer.AppendAll(Escaped{std::string(20000, 'x') + std::string(50000, 'z'), kTable});
            }),
            std::string(140000, 'y') + std::string(50000, 'z'));
}

TEST(TextWriterTest, IgnoresTheStateOfTheStream) {
  std::ostringstream out;
  out << std::hex << std::showpos << std::setw(20) << std::setfill('*') << std::right;
  TextWriter writer(out);
  writer.AppendAll(Decimal{255});
  writer.AppendLeft("a", 3);
  writer.Append('|');
  writer.Finish();
  EXPECT_EQ(out.str(), "255a  |");
  EXPECT_EQ(out.width(), 0);
}

TEST(TextWriterTest, FlushesOnceAtTheEnd) {
  LimitedBuffer buffer(kUnlimited);
  std::ostream out(&buffer);
  TextWriter writer(out);
  for (int i = 0; i < 100000; ++i) {
    writer.Append("line\n");
  }
  EXPECT_EQ(buffer.GetFlushes(), 0);
  writer.Finish();
  EXPECT_EQ(buffer.GetFlushes(), 1);
  EXPECT_EQ(buffer.GetText().size(), 500000u);
}

TEST(TextWriterTest, DrainsWithoutFlushing) {
  LimitedBuffer buffer(kUnlimited);
  std::ostream out(&buffer);
  {
    TextWriter writer(out);
    writer.Append("one ");
    writer.Drain();
    out << "two ";
    writer.Append("three");
    writer.Drain();
  }
  EXPECT_EQ(buffer.GetText(), "one two three");
  EXPECT_EQ(buffer.GetFlushes(), 0);
}

TEST(TextWriterTest, AnExceptionDoesNotLoseWhatWasAppended) {
  LimitedBuffer buffer(kUnlimited);
  std::ostream out(&buffer);
  EXPECT_THROW(
      {
        TextWriter writer(out);
        writer.Append("so far");
        throw std::runtime_error("stop");
      },
      std::runtime_error);
  EXPECT_EQ(buffer.GetText(), "so far");
  EXPECT_EQ(buffer.GetFlushes(), 1);
}

TEST(TextWriterTest, AnExceptionDoesNotLoseWhatWasAppendedAfterADrain) {
  LimitedBuffer buffer(kUnlimited);
  std::ostream out(&buffer);
  EXPECT_THROW(
      {
        TextWriter writer(out);
        writer.Append("one ");
        writer.Drain();
        writer.Append("two");
        throw std::runtime_error("stop");
      },
      std::runtime_error);
  EXPECT_EQ(buffer.GetText(), "one two");
}

TEST(TextWriterTest, StopsWritingToAStreamThatFailed) {
  LimitedBuffer buffer(40000);
  std::ostream out(&buffer);
  TextWriter writer(out);
  EXPECT_FALSE(writer.HasFailed());
  std::size_t rows = 0;
  while (!writer.HasFailed()) {
    writer.Append("0123456789");
    ++rows;
  }
  writer.Repeat('x', kUnlimited);
  writer.AppendAll("x", Spaces{kUnlimited}, "y");
  writer.Append(std::string(100000, 'y'));
  writer.Finish();
  EXPECT_LT(rows, 10000u);
  EXPECT_EQ(buffer.GetText().size(), 40000u);
  EXPECT_EQ(buffer.GetRefusals(), 1);
  EXPECT_EQ(buffer.GetFlushes(), 0);
}

TEST(TextWriterTest, WritesNothingToAStreamThatFailedBefore) {
  std::ostringstream out;
  out.setstate(std::ios_base::badbit);
  TextWriter writer(out);
  EXPECT_TRUE(writer.HasFailed());
  writer.Append(std::string(100000, 'x'));
  writer.Finish();
  EXPECT_EQ(out.str(), "");
}

TEST(TextWriterTest, AnExceptionOfTheStreamReachesTheCallerAndNothingIsWrittenTwice) {
  LimitedBuffer buffer(5);
  std::ostream out(&buffer);
  out.exceptions(std::ios_base::badbit);
  EXPECT_THROW(
      {
        TextWriter writer(out);
        writer.Append("0123456789");
        writer.Finish();
      },
      std::ios_base::failure);
  EXPECT_EQ(buffer.GetText(), "01234");
  EXPECT_EQ(buffer.GetRefusals(), 1);
}

TEST(TextWriterTest, AStreamThatHasThrownCountsAsFailed) {
  LimitedBuffer buffer(5);
  std::ostream out(&buffer);
  out.exceptions(std::ios_base::badbit);
  TextWriter writer(out);
  writer.Append("0123456789");
  EXPECT_THROW(writer.Finish(), std::ios_base::failure);
  EXPECT_TRUE(writer.HasFailed());
}

TEST(TextWriterTest, TheDestructorIgnoresExceptionsOfTheStream) {
  LimitedBuffer buffer(5);
  std::ostream out(&buffer);
  out.exceptions(std::ios_base::badbit);
  EXPECT_THROW(
      {
        TextWriter writer(out);
        writer.Append("0123456789");
        throw std::runtime_error("the first");
      },
      std::runtime_error);
  EXPECT_EQ(buffer.GetText(), "01234");
  EXPECT_TRUE(out.bad());
}

}  // namespace
}  // namespace Kestrel::AutoCli
