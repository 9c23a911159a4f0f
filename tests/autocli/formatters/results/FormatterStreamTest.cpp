// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <iomanip>
#include <ios>
#include <locale>
#include <memory>
#include <sstream>
#include <string>

#include "autocli/formatters/results/Formatters.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/CountingBuffer.h"
#include "support/LimitedBuffer.h"
#include "support/Random.h"
#include "support/SampleValues.h"
#include "support/Sanitizer.h"

namespace Kestrel::Testing {
namespace {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;

/// Tests what applies to every formatter of results, whatever stream it writes to.
class FormatterStreamTest : public ::testing::TestWithParam<std::string> {
 protected:
  void Format(const std::shared_ptr<MetaObject>& root, std::ostream& out) {
    AutoCli::FormatParameters params;
    AutoCli::DisplayContext display;
    formatter_->Format(MakeOutput(root), params, display, out);
  }

  std::string Print(const std::shared_ptr<MetaObject>& root) {
    std::ostringstream out;
    Format(root, out);
    return out.str();
  }

  std::shared_ptr<AutoCli::Formatter> formatter_ = MakeFormatter(GetParam());
};

/// Rows as a command might report them: two strings, two integers and a boolean.
std::shared_ptr<MetaList> MakeRows(int count) {
  const auto make = [](int number) {
    auto row = MetaStruct::New("Row");
    row->SetField("Name", "name" + std::to_string(10000000 + number));
    row->SetField("Size", number * 4096L);
    row->SetField("Enabled", number % 3 == 0);
    row->SetField("Path", "/srv/<data>/" + std::string(27, 'p'));
    row->SetField("Count", number % 25);
    return row;
  };
  auto list = MetaList::New(MetaObj::MetaType::Struct, make(0));
  for (int i = 0; i < count; ++i) {
    list->Add(make(i));
  }
  return list;
}

class Grouping : public std::numpunct<char> {
 protected:
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  std::string do_truename() const override { return "yes"; }
};

TEST_P(FormatterStreamTest, IgnoresTheStateOfTheStream) {
  const auto mounts = MakeMounts();
  const std::string expected = Print(mounts);
  std::ostringstream out;
  out.imbue(std::locale(std::locale::classic(), new Grouping));
  out << std::hex << std::showbase << std::showpos << std::uppercase << std::boolalpha
      << std::setfill('*') << std::setw(30);
  Format(mounts, out);
  EXPECT_EQ(out.str(), expected);
}

TEST_P(FormatterStreamTest, PreservesTheStateOfTheStream) {
  std::ostringstream out;
  out << std::hex << std::showpos << std::boolalpha << std::setfill('*') << std::setprecision(3);
  const auto alignment = std::ios_base::adjustfield;  // changed by the table formatter
  const auto before = out.flags() & ~alignment;
  Format(MakeMounts(), out);
  EXPECT_EQ(out.flags() & ~alignment, before);
  EXPECT_EQ(out.fill(), '*');
  EXPECT_EQ(out.precision(), 3);
  EXPECT_EQ(out.width(), 0);
}

TEST_P(FormatterStreamTest, FlushesOnceAtTheEnd) {
  LimitedBuffer buffer(100000000);
  std::ostream out(&buffer);
  Format(MakeRows(2000), out);
  EXPECT_GT(buffer.GetText().size(), 100000u);
  EXPECT_EQ(buffer.GetFlushes(), 1);
}

TEST_P(FormatterStreamTest, WritesNoMoreOnceTheStreamHasFailed) {
  const auto rows = MakeRows(2000);
  LimitedBuffer buffer(40000);
  std::ostream out(&buffer);
  Format(rows, out);
  EXPECT_TRUE(out.bad());
  EXPECT_EQ(buffer.GetText(), Print(rows).substr(0, 40000));
  EXPECT_EQ(buffer.GetRefusals(), 1);
  EXPECT_EQ(buffer.GetFlushes(), 0);
}

TEST_P(FormatterStreamTest, WritesNothingToAFailedStream) {
  LimitedBuffer buffer(40000);
  std::ostream out(&buffer);
  out.setstate(std::ios_base::failbit);
  Format(MakeRows(10), out);
  EXPECT_EQ(buffer.GetText(), "");
  EXPECT_EQ(out.rdstate(), std::ios_base::failbit);
}

TEST_P(FormatterStreamTest, PropagatesTheFailureOfAThrowingStream) {
  LimitedBuffer buffer(40000);
  std::ostream out(&buffer);
  out.exceptions(std::ios_base::badbit);
  EXPECT_THROW(Format(MakeRows(2000), out), std::ios_base::failure);
  EXPECT_EQ(buffer.GetText().size(), 40000u);
  EXPECT_EQ(buffer.GetRefusals(), 1);
}

/// Ignores SIGPIPE for as long as the object lives.
class ScopedNoPipeSignal {
 public:
  ScopedNoPipeSignal() : before_(std::signal(SIGPIPE, SIG_IGN)) {}
  ~ScopedNoPipeSignal() { std::signal(SIGPIPE, before_); }

 private:
  void (*before_)(int);
};

TEST_P(FormatterStreamTest, EndsWhenTheReaderOfItsPipeIsGone) {
  const ScopedNoPipeSignal ignored;
  std::array<int, 2> ends = {};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::ofstream out("/proc/self/fd/" + std::to_string(ends[1]));
  ASSERT_TRUE(out);
  close(ends[0]);
  close(ends[1]);
  Format(MakeRows(2000), out);
  EXPECT_TRUE(out.bad());
}

TEST_P(FormatterStreamTest, AFullDiskMakesTheStreamFail) {
  std::ofstream out("/dev/full");
  ASSERT_TRUE(out);
  Format(MakeMounts(), out);
  EXPECT_TRUE(out.bad());
}

/// Returns the peak memory of the process in KiB. CTest runs each test in a process of its own.
long PeakMemory() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

TEST_P(FormatterStreamTest, NeedsLittleMemoryForManyRows) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer keeps freed memory";
  }
  const int count = Testing::Rounds(100000, 1000000);
  const auto rows = MakeRows(count);
  CountingBuffer buffer;
  std::ostream out(&buffer);
  Format(MakeRows(10), out);  // so that allocations of the first call are not measured
  const long before = PeakMemory();
  Format(rows, out);
  EXPECT_LT(PeakMemory() - before, 1024) << "KiB for " << count << " rows";
  EXPECT_GT(buffer.bytes, static_cast<std::size_t>(count) * 60);
}

INSTANTIATE_TEST_SUITE_P(All, FormatterStreamTest, ::testing::ValuesIn(ResultFormatterNames()),
                         [](const auto& formatter) { return formatter.param; });

constexpr int kDepth = 10000;

std::size_t DigitsOf(int number) { return std::to_string(number).size(); }

/// Counts the bytes that a formatter prints for kDepth nested structures.
CountingBuffer PrintNested(const std::string& formatterName) {
  CountingBuffer buffer;
  std::ostream out(&buffer);
  AutoCli::FormatParameters params;
  AutoCli::DisplayContext display;
  MakeFormatter(formatterName)->Format(MakeOutput(MakeNested(kDepth)), params, display, out);
  return buffer;
}

/// Returns the sum of `size(level, number)` over the structures, from the outermost to the
/// innermost. The level starts at `level` and grows by two; `number` is the structure's field "a".
template <typename Size>
std::size_t SumOverNested(long level, Size size) {
  std::size_t sum = 0;
  for (int number = kDepth - 1; number >= 0; --number, level += 2) {
    sum += size(level, number);
  }
  return sum;
}

std::size_t IndentOf(long level) { return level < 1 ? 0 : 3 * static_cast<std::size_t>(level); }

TEST(NestedFormatTest, JsonPrintsStructuresNestedTenThousandDeep) {
  const auto size = [](long level, int number) {
    const std::size_t a = IndentOf(level) + 3 + sizeof("\"a\": \n") - 1 + DigitsOf(number);
    const std::size_t child = number == 0 ? 0 : IndentOf(level) + 3 + sizeof(",\"child\": \n") - 1;
    return 2 * IndentOf(level) + sizeof("\n{\n}") - 1 + a + child;
  };
  EXPECT_EQ(PrintNested("json").bytes, SumOverNested(-1, size) + 1);
}

TEST(NestedFormatTest, XmlPrintsStructuresNestedTenThousandDeep) {
  const auto size = [](long level, int number) {
    const std::size_t structure =
        2 * IndentOf(level) + sizeof("<structure typeName=\"Node\">\n</structure>\n") - 1;
    const std::size_t a = 2 * IndentOf(level + 1) + sizeof("<field name=\"a\">\n</field>\n") - 1 +
                          IndentOf(level + 2) + sizeof("<integer></integer>\n") - 1 +
                          DigitsOf(number);
    const std::size_t child =
        number == 0 ? 0
                    : 2 * IndentOf(level + 1) + sizeof("<field name=\"child\">\n</field>\n") - 1;
    return structure + a + child;
  };
  const std::size_t around =
      PrintResult(*MakeFormatter("xml"), {"", MakeDisks({}), {}}).text.size() -
      sizeof("      <list type=\"structure\">\n      </list>\n") + 1;
  EXPECT_EQ(PrintNested("xml").bytes, SumOverNested(2, size) + around);
}

TEST(NestedFormatTest, PythonPrintsStructuresNestedTenThousandDeep) {
  const auto size = [](long /*level*/, int number) {
    return sizeof("{\"a\": , }") - 1 + DigitsOf(number) +
           (number == 0 ? 0 : sizeof("\"child\": , ") - 1);
  };
  EXPECT_EQ(PrintNested("python").bytes, SumOverNested(0, size) + 1);
}

}  // namespace
}  // namespace Kestrel::Testing
