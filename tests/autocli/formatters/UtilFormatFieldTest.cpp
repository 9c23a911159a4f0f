// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/Util.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/Random.h"
#include "support/SampleValues.h"

namespace Kestrel::AutoCli {
namespace {

using ::Kestrel::Testing::LyingValue;
using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using Value = std::shared_ptr<MetaObject>;

const char kError[] =
    "Error while handling formatting parameter printf:T.F.  Unable to format field: ";

std::string Print(const Value& value, const std::string& format) {
  FormatParameters params;
  params.SetParameter("printf:T.F", format);
  return AutoCli_FormatField("T", "F", value, params);
}

std::string PrintInt(long value, const std::string& format) {
  return Print(MetaInt::New(value), format);
}

std::string PrintString(const std::string& value, const std::string& format) {
  return Print(MetaString::New(value), format);
}

std::string Invalid() { return kError + std::string("Invalid argument"); }

Value MakeStruct() {
  const auto structure = MetaStruct::New("Inner");
  structure->SetField("a", 1);
  return structure;
}

TEST(UtilFormatFieldTest, WithoutParametersTheResultIsToString) {
  FormatParameters params;
  EXPECT_EQ(AutoCli_FormatField("T", "F", MetaInt::New(-512), params), "-512");
  EXPECT_EQ(AutoCli_FormatField("T", "F", MetaBool::New(true), params), "true");
  EXPECT_EQ(AutoCli_FormatField("T", "F", MetaString::New("text"), params), "text");
  EXPECT_EQ(AutoCli_FormatField("T", "F", MakeStruct(), params), "{'a' => '1', }");
}

TEST(UtilFormatFieldTest, ANullValueIsPrintedWithoutUnitsAndPrintf) {
  FormatParameters params;
  params.SetParameter("units:T.F", "MB");
  params.SetParameter("printf:T.F", "%n");
  EXPECT_EQ(AutoCli_FormatField("T", "F", nullptr, params), "NULL Object");
}

TEST(UtilFormatFieldTest, UnitsFollowAfterOneSpace) {
  FormatParameters params;
  params.SetParameter("units:T.F", "Mb");
  EXPECT_EQ(AutoCli_FormatField("T", "F", MetaInt::New(512), params), "512 Mb");
  EXPECT_EQ(AutoCli_FormatField("T", "F", MakeStruct(), params), "{'a' => '1', } Mb");
}

TEST(UtilFormatFieldTest, EmptyUnitsStillAddTheSpace) {
  FormatParameters params;
  params.SetParameter("units:T.F", "");
  EXPECT_EQ(AutoCli_FormatField("T", "F", MetaInt::New(512), params), "512 ");
}

TEST(UtilFormatFieldTest, PrintfAndUnitsWorkTogether) {
  FormatParameters params;
  params.SetParameter("printf:T.F", "%04ld");
  params.SetParameter("units:T.F", "MB");
  EXPECT_EQ(AutoCli_FormatField("T", "F", MetaInt::New(5), params), "0005 MB");
}

TEST(UtilFormatFieldTest, UsesOnlyTheKeyOfThatTypeAndFieldJoinedByADot) {
  FormatParameters params;
  params.SetParameter("units:T:F", "colon");
  params.SetParameter("units:U.F", "other type");
  params.SetParameter("units:T.G", "other field");
  params.SetParameter("units:t.f", "other case");
  params.SetParameter("printf:T", "%d");
  params.SetParameter("printf:T.FF", "%d");
  EXPECT_EQ(AutoCli_FormatField("T", "F", MetaInt::New(512), params), "512");
}

TEST(UtilFormatFieldTest, PrintfPrintsAStructureOrAListAsAnEmptyField) {
  FormatParameters params;
  params.SetParameter("printf:T.F", "%d");
  const auto list = MetaList::New(MetaType::Int);
  list->Add(1);
  EXPECT_EQ(AutoCli_FormatField("T", "F", MakeStruct(), params), "");
  EXPECT_EQ(AutoCli_FormatField("T", "F", list, params), "");
  params.SetParameter("units:T.F", "MB");
  EXPECT_EQ(AutoCli_FormatField("T", "F", MakeStruct(), params), " MB");
  EXPECT_EQ(AutoCli_FormatField("T", "F", list, params), " MB");
}

TEST(UtilFormatFieldTest, AnyFormatPrintsAStructureAsEmpty) {
  EXPECT_EQ(Print(MakeStruct(), "%n%s%99999999999d"), "");
}

TEST(UtilFormatFieldTest, AValueWhoseClassDoesNotMatchItsKindIsPrintedUnlessThereIsAFormat) {
  for (const MetaType type : {MetaType::Int, MetaType::Bool, MetaType::String, MetaType::Struct}) {
    FormatParameters params;
    const auto value = std::make_shared<LyingValue>(type);
    EXPECT_EQ(AutoCli_FormatField("T", "F", value, params), "a lie");
    EXPECT_EQ(Print(value, "%d"), "");
    EXPECT_EQ(Print(value, "%s"), "");
  }
}

TEST(UtilFormatFieldTest, AFormatWithoutConversionReplacesTheValue) {
  EXPECT_EQ(PrintInt(5, "text"), "text");
  EXPECT_EQ(PrintString("x", "text"), "text");
  EXPECT_EQ(PrintInt(5, ""), "");
  EXPECT_EQ(PrintInt(5, "100%%"), "100%");
  EXPECT_EQ(PrintInt(5, "%%%d%%"), "%5%");
  EXPECT_EQ(PrintInt(5, "%%d"), "%d");
}

TEST(UtilFormatFieldTest, IntegersTakeEveryIntegerConversion) {
  EXPECT_EQ(PrintInt(42, "<%ld>"), "<42>");
  EXPECT_EQ(PrintInt(-42, "%li"), "-42");
  EXPECT_EQ(PrintInt(8, "%lo"), "10");
  EXPECT_EQ(PrintInt(-1, "%lu"), "18446744073709551615");
  EXPECT_EQ(PrintInt(255, "%lx"), "ff");
  EXPECT_EQ(PrintInt(255, "%lX"), "FF");
  EXPECT_EQ(PrintInt('A', "%c"), "A");
  EXPECT_EQ(PrintInt('A', "%lc"), "A");
  EXPECT_EQ(PrintInt(LONG_MIN, "%ld"), "-9223372036854775808");
}

TEST(UtilFormatFieldTest, IntegersTakeEveryLengthModifier) {
  const long value = 0x123456789abcdef0;
  EXPECT_EQ(PrintInt(value, "%hhx"), "f0");
  EXPECT_EQ(PrintInt(value, "%hx"), "def0");
  EXPECT_EQ(PrintInt(value, "%x"), "9abcdef0");
  for (const char* format : {"%lx", "%llx", "%qx", "%Lx", "%jx", "%zx", "%tx"}) {
    EXPECT_EQ(PrintInt(value, format), "123456789abcdef0") << format;
  }
  EXPECT_EQ(PrintInt(200, "%hhd"), "-56");
  EXPECT_EQ(PrintInt(40000, "%hd"), "-25536");
  for (const char* format : {"%ld", "%lld", "%qd", "%Ld", "%jd", "%zd", "%td"}) {
    EXPECT_EQ(PrintInt(-5000000000, format), "-5000000000") << format;
  }
  for (const char* format :
       {"%c", "%hhc", "%hc", "%lc", "%llc", "%qc", "%Lc", "%jc", "%zc", "%tc"}) {
    EXPECT_EQ(PrintInt('A', format), "A") << format;
  }
}

TEST(UtilFormatFieldTest, TheConversionDWithoutALengthKeepsTheLow32Bits) {
  EXPECT_EQ(PrintInt(0x100000005, "%d"), "5");
  EXPECT_EQ(PrintInt(0xffffffff, "%d"), "-1");
  EXPECT_EQ(PrintInt(-1, "%u"), "4294967295");
}

TEST(UtilFormatFieldTest, FlagsWidthAndPrecisionWork) {
  EXPECT_EQ(PrintInt(5, "[%5ld]"), "[    5]");
  EXPECT_EQ(PrintInt(5, "[%-5ld]"), "[5    ]");
  EXPECT_EQ(PrintInt(5, "[%+ld]"), "[+5]");
  EXPECT_EQ(PrintInt(5, "[% ld]"), "[ 5]");
  EXPECT_EQ(PrintInt(255, "[%#lx]"), "[0xff]");
  EXPECT_EQ(PrintInt(5, "[%'ld]"), "[5]");
  EXPECT_EQ(PrintInt(5, "[%Ild]"), "[5]");
  EXPECT_EQ(PrintInt(5, "[%8.3ld]"), "[     005]");
  EXPECT_EQ(PrintInt(0, "[%.ld]"), "[]");
  EXPECT_EQ(PrintInt(5, "[%-+08ld]"), "[+5      ]");
  EXPECT_EQ(PrintString("abcdef", "[%8s]"), "[  abcdef]");
  EXPECT_EQ(PrintString("abcdef", "[%-8.3s]"), "[abc     ]");
  EXPECT_EQ(PrintString("abcdef", "[%.0s]"), "[]");
}

TEST(UtilFormatFieldTest, BooleansArePrintedAsNumbers) {
  EXPECT_EQ(Print(MetaBool::New(true), "%d"), "1");
  EXPECT_EQ(Print(MetaBool::New(false), "%d"), "0");
  EXPECT_EQ(Print(MetaBool::New(true), "%5ld"), "    1");
  EXPECT_EQ(Print(MetaBool::New(true), "%hhu"), "1");
}

TEST(UtilFormatFieldTest, StringsTakeTheConversionS) {
  EXPECT_EQ(PrintString("text", "<%s>"), "<text>");
  EXPECT_EQ(PrintString("", "<%s>"), "<>");
  EXPECT_EQ(PrintString("100%d %n", "<%s>"), "<100%d %n>");
}

TEST(UtilFormatFieldTest, NumberedConversionsMayRepeatTheArgument) {
  EXPECT_EQ(PrintInt(255, "%1$ld = %1$#lx"), "255 = 0xff");
  EXPECT_EQ(PrintInt(-1, "%1$hhu %1$lu"), "255 18446744073709551615");
  EXPECT_EQ(PrintString("ab", "%1$s%1$s %%"), "abab %");
}

TEST(UtilFormatFieldTest, TheConversionMPrintsTheMessageForErrno) {
  FormatParameters params;
  params.SetParameter("printf:T.F", "%ld: %m");
  const auto value = MetaInt::New(7);
  errno = ENOENT;
  EXPECT_EQ(AutoCli_FormatField("T", "F", value, params), "7: No such file or directory");
  params.SetParameter("printf:T.F", "%28m");
  errno = ENOENT;
  EXPECT_EQ(AutoCli_FormatField("T", "F", value, params), "   No such file or directory");
}

TEST(UtilFormatFieldTest, AnErrorReplacesAFormatThatDoesNotFitTheValue) {
  const char* const formats[] = {"%s",   "%5$d",    "%2$d", "%1$d%d", "%d%1$d", "%d%d",  "%*d",
                                 "%.*d", "%1$*1$d", "%n",   "%1$n",   "%p",     "%f",    "%e",
                                 "%g",   "%a",      "%S",   "%C",     "%ls",    "%y",    "%",
                                 "%5",   "%l",      "%5.",  "abc%",   "%hhhd",  "%lhd",  "%.-5d",
                                 "%d%n", "%5%",     "%1$m", "%lm",    "%$d",    "%01$d", "%ld%s"};
  for (const char* format : formats) {
    EXPECT_EQ(PrintInt(5, format), Invalid()) << format;
    EXPECT_EQ(Print(MetaBool::New(true), format), Invalid()) << format;
  }
  for (const char* format : {"%d", "%c", "%ls", "%hs", "%S", "%s%s", "%*s", "%2$s", "%n", "%s%n",
                             "%p", "%1$s%s", "%", "%s%"}) {
    EXPECT_EQ(PrintString("text", format), Invalid()) << format;
  }
}

TEST(UtilFormatFieldTest, AnErrorTextHasNoUnits) {
  FormatParameters params;
  params.SetParameter("printf:Disk.Size", "%s");
  params.SetParameter("units:Disk.Size", "MB");
  EXPECT_EQ(AutoCli_FormatField("Disk", "Size", MetaInt::New(5), params),
            "Error while handling formatting parameter printf:Disk.Size.  Unable to format field: "
            "Invalid argument");
}

TEST(UtilFormatFieldTest, AWideCharacterWithoutBytesInTheLocaleCausesTheSystemsError) {
  EXPECT_EQ(PrintInt(0x20ac, "%lc"), kError + std::string(std::strerror(EILSEQ)));
}

TEST(UtilFormatFieldTest, WidthsAndPrecisionsBeyondAnIntCauseTheSystemsError) {
  const std::string overflow = kError + std::string(std::strerror(EOVERFLOW));
  for (const char* format : {"%2147483648d", "%.2147483648d", "%99999999999999999999999d",
                             "x%.99999999999999999999999ld", "%-2147483648m"}) {
    EXPECT_EQ(PrintInt(5, format), overflow) << format;
  }
  EXPECT_EQ(PrintString("x", "%2147483648s"), overflow);
}

TEST(UtilFormatFieldTest, AFormatThatDoesNotFitIsReportedBeforeAnOverflow) {
  EXPECT_EQ(PrintInt(5, "%2147483648d%n"), Invalid());
}

TEST(UtilFormatFieldTest, TheResultHasAtMostTheSizesOfFormatAndValuePlus64Bytes) {
  EXPECT_EQ(PrintInt(5, "%100d"), std::string(5 + 1 + 64, ' '));
  EXPECT_EQ(PrintInt(5, "%-100d"), "5" + std::string(6 + 1 + 64 - 1, ' '));
  EXPECT_EQ(PrintInt(5, "%0100d"), std::string(6 + 1 + 64, '0'));
  EXPECT_EQ(PrintInt(-5, "%.100d"), "-" + std::string(6 + 2 + 64 - 1, '0'));
  EXPECT_EQ(PrintString("abc", "%100s"), std::string(5 + 3 + 64, ' '));
  EXPECT_EQ(PrintInt(5, "%70d"), std::string(4 + 1 + 64, ' '));
  EXPECT_EQ(PrintInt(5, "%69d"), std::string(68, ' ') + "5");
}

TEST(UtilFormatFieldTest, RepeatedConversionsShareOneLimit) {
  const std::string text(100, 'x');
  const std::string format = "%1$s-%1$s-%1$s";
  EXPECT_EQ(PrintString(text, format),
            (text + "-" + text + "-" + text).substr(0, format.size() + text.size() + 64));
}

TEST(UtilFormatFieldTest, LiteralTextIsNotCut) {
  const std::string literal(5000, 'x');
  EXPECT_EQ(PrintInt(5, literal + "%ld"), literal + "5");
}

TEST(UtilFormatFieldTest, HugeWidthsAndPrecisionsAreReducedToTheLimit) {
  EXPECT_EQ(PrintInt(5, "%2000000000d"), std::string(12 + 1 + 64, ' '));
  EXPECT_EQ(PrintInt(5, "%.1000000000d"), std::string(13 + 1 + 64, '0'));
  EXPECT_EQ(PrintInt(5, "%2147483647d"), std::string(12 + 1 + 64, ' '));
  EXPECT_EQ(PrintString("abc", "%.2147483647s"), "abc");
  EXPECT_EQ(PrintString("abc", "%-2000000000.2000000000s"), "abc" + std::string(24 + 64, ' '));
}

TEST(UtilFormatFieldTest, WidthAndPrecisionAreReducedTogether) {
  EXPECT_EQ(PrintInt(5, "%2000.2000d"), std::string(11 + 1 + 64, '0'));
  EXPECT_EQ(PrintInt(5, "%2003.2000d"), "   " + std::string(11 + 1 + 64 - 3, '0'));
  EXPECT_EQ(PrintInt(5, "%100000.5000d"), std::string(13 + 1 + 64, ' '));
  EXPECT_EQ(PrintInt(5, "%1000.100000d"), std::string(13 + 1 + 64, '0'));
  EXPECT_EQ(PrintInt('A', "%5.5000c"), "    A");
}

TEST(UtilFormatFieldTest, APrecisionOfZeroPrintsNothingOfALongString) {
  const std::string text(300, 'x');
  EXPECT_EQ(PrintString(text, "[%1$.0s]%1$.0s"), "[]");
  EXPECT_EQ(PrintString(text, "%1$.360s%1$300.0s"), text + std::string(17 + 64, ' '));
}

TEST(UtilFormatFieldTest, ManyConversionsOfALongStringCostNoMoreThanTheirOutput) {
  const std::string text(100000, 'x');
  std::string format;
  for (int i = 0; i < 20000; ++i) {
    format += "%1$s%1$99999s";
  }
  EXPECT_EQ(PrintString(text, format), std::string(format.size() + text.size() + 64, 'x'));
  format.clear();
  for (int i = 0; i < 20000; ++i) {
    format += "%1$099999ld%1$.99999ld";
  }
  EXPECT_EQ(PrintInt(0, format), std::string(format.size() + 1 + 64, '0'));
}

/// Returns what snprintf prints for a valid format, up to the limit of AutoCli_FormatField.
template <typename Argument>
std::string SystemPrint(const std::string& format, std::size_t textSize, Argument argument) {
  std::vector<char> buffer(format.size() + textSize + 65);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(buffer.data(), buffer.size(), format.c_str(), argument);
#pragma GCC diagnostic pop
  return buffer.data();
}

/// Makes formats with at most three conversions, which all refer to the same argument.
class RandomFormats {
 public:
  int Pick(int from, int to) { return random_.Between(from, to); }

  std::string HowToRepeat() const { return random_.HowToRepeat(); }

  std::string Make(const std::string& flags, const std::vector<std::string>& letters) {
    const int conversions = Pick(0, 3);
    std::string format;
    for (int i = 0; i < conversions; ++i) {
      format += MakeLiteral() + (conversions > 1 ? "%1$" : "%");
      for (int count = Pick(0, 2); count > 0; --count) {
        format += flags[static_cast<std::size_t>(Pick(0, static_cast<int>(flags.size()) - 1))];
      }
      format += MakeNumber("");
      format += MakeNumber(".");
      format += letters[static_cast<std::size_t>(Pick(0, static_cast<int>(letters.size()) - 1))];
    }
    return format + MakeLiteral();
  }

 private:
  std::string MakeLiteral() {
    static const char* const kLiterals[] = {"", "", "text ", "%%", " %% "};
    return kLiterals[Pick(0, 4)];
  }

  std::string MakeNumber(const std::string& start) {
    switch (Pick(0, 4)) {
      case 0:
        return start + std::to_string(Pick(1, 30));
      case 1:
        return start + std::to_string(Pick(30, 5000));
      default:
        return "";
    }
  }

  Testing::Random random_;
};

TEST(UtilFormatFieldTest, EqualsTheSystemsPrintfOnRandomFormatsThatFit) {
  RandomFormats formats;
  SCOPED_TRACE(formats.HowToRepeat());
  for (int round = 0; round < 20000; ++round) {
    const long number =
        formats.Pick(0, 3) == 0 ? LONG_MIN + formats.Pick(0, 9) : formats.Pick(-100000, 100000);
    const std::string integers = formats.Make("-+ #0", {"ld", "li", "lu", "lo", "lx", "lX"});
    ASSERT_EQ(PrintInt(number, integers),
              SystemPrint(integers, std::to_string(number).size(), number))
        << integers << " of " << number;
    const std::string text(static_cast<std::size_t>(formats.Pick(0, 1) * formats.Pick(0, 3000)),
                           'x');
    const std::string strings = formats.Make("-", {"s"});
    ASSERT_EQ(PrintString(text, strings), SystemPrint(strings, text.size(), text.c_str()))
        << strings << " of " << text.size() << " bytes";
  }
}

TEST(UtilFormatFieldTest, ANulByteEndsTheResult) {
  EXPECT_EQ(PrintString(std::string("ab\0cd", 5), "<%s>"), "<ab>");
  EXPECT_EQ(PrintInt(0, "a%cb"), "a");
  EXPECT_EQ(PrintInt(5, std::string("a%db\0%n", 7)), "a5b");
}

TEST(UtilFormatFieldTest, AValueOfAHundredThousandBytesIsPrintedWhole) {
  const std::string text(100000, 'x');
  EXPECT_EQ(PrintString(text, "<%s>"), "<" + text + ">");
  FormatParameters params;
  EXPECT_EQ(AutoCli_FormatField("T", "F", MetaString::New(text), params), text);
}

TEST(UtilFormatFieldTest, TheParametersDoNotChange) {
  FormatParameters params;
  params.SetParameter("printf:T.F", "%ld");
  AutoCli_FormatField("T", "F", MetaInt::New(5), params);
  AutoCli_FormatField("T", "G", MetaInt::New(5), params);
  EXPECT_EQ(params.GetParameters().size(), 1u);
}

}  // namespace
}  // namespace Kestrel::AutoCli
