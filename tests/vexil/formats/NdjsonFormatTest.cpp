// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <limits>

#include "vexil/formats/FormatsFixture.h"

namespace Kestrel::Formats {
namespace {

std::string Ndjson(const std::shared_ptr<MetaObject>& root) { return Print(kNdjsonFormat, root); }

TEST(NdjsonFormatTest, PrintsALinePerElementOfAList) {
  EXPECT_EQ(Ndjson(MakeDisks({{"sda", 1}, {"sdb", 2}})),
            "{\"Name\":\"sda\",\"Size\":1}\n{\"Name\":\"sdb\",\"Size\":2}\n");
  EXPECT_EQ(Ndjson(MakeTexts({"a", ""})), "\"a\"\n\"\"\n");
}

TEST(NdjsonFormatTest, PrintsNothingForAnEmptyList) {
  EXPECT_EQ(Ndjson(MetaList::New(MetaType::Int)), "");
  EXPECT_EQ(Ndjson(MetaList::New(MetaType::Struct, nullptr)), "");
}

TEST(NdjsonFormatTest, PrintsAnyOtherValueOnOneLine) {
  EXPECT_EQ(Ndjson(MetaBool::New(true)), "true\n");
  EXPECT_EQ(Ndjson(MetaString::New("")), "\"\"\n");
  EXPECT_EQ(Ndjson(MetaStruct::New("Empty")), "{}\n");
  EXPECT_EQ(Ndjson(MakeVolume()),
            "{\"Disk\":{\"Name\":\"sda\",\"Size\":7},\"Labels\":[\"a\",\"b\"],\"On\":true}\n");
}

TEST(NdjsonFormatTest, PrintsTheLimitsOfIntegers) {
  EXPECT_EQ(Ndjson(MetaInt::New(std::numeric_limits<long>::min())), "-9223372036854775808\n");
  EXPECT_EQ(Ndjson(MetaInt::New(std::numeric_limits<long>::max())), "9223372036854775807\n");
}

TEST(NdjsonFormatTest, PrintsIntegersOfEveryLength) {
  const long max32 = std::numeric_limits<std::uint32_t>::max();
  std::vector<long> numbers = {0, max32 - 1, max32, max32 + 1};
  for (long power = 1; power <= std::numeric_limits<long>::max() / 10; power *= 10) {
    numbers.insert(numbers.end(), {power - 1, power, power + 1, 10 * power - 1, 9 * power + 7});
  }
  for (const long number : numbers) {
    EXPECT_EQ(Ndjson(MetaInt::New(number)), std::to_string(number) + "\n");
    EXPECT_EQ(Ndjson(MetaInt::New(-number)), std::to_string(-number) + "\n");
  }
}

TEST(NdjsonFormatTest, EscapesOnlyWhatJsonRequires) {
  EXPECT_EQ(Ndjson(MetaString::New("\"\\/\b\f\n\r\t\x01\x1f\x7f")),
            "\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7f\"\n");
  EXPECT_EQ(Ndjson(MetaString::New(std::string("a\0b", 3))), "\"a\\u0000b\"\n");
  EXPECT_EQ(Ndjson(MetaString::New("Zoë € 😀")), "\"Zoë € 😀\"\n");
  EXPECT_EQ(Ndjson(MakeRow("a\"\n", "x")), "{\"a\\\"\\n\":\"x\"}\n");
}

TEST(NdjsonFormatTest, FindsASpecialByteAtEveryPositionOfAString) {
  for (std::size_t size = 1; size < 70; ++size) {
    for (std::size_t at = 0; at < size; ++at) {
      std::string text(size, 'x');
      text[at] = '"';
      const std::string expected =
          '"' + std::string(at, 'x') + "\\\"" + std::string(size - at - 1, 'x') + "\"\n";
      EXPECT_EQ(Ndjson(MetaString::New(text)), expected);
    }
  }
}

TEST(NdjsonFormatTest, PrintsShortAndLongStrings) {
  for (std::size_t size = 0; size < 9000; size = size * 5 / 4 + 1) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
      text += static_cast<char>('a' + i % 26);
    }
    EXPECT_EQ(Ndjson(MakeTexts({text, text})), '"' + text + "\"\n\"" + text + "\"\n");
  }
}

TEST(NdjsonFormatTest, PrintsListsOfDifferentShapesInOneField) {
  // The declared list does not say which structures it contains, so the lists of the rows may
  // contain any.
  const auto makeRow = [](const std::shared_ptr<MetaList>& list) {
    auto row = MetaStruct::New("Row");
    row->SetField("Items", list);
    return row;
  };
  const auto rows =
      MetaList::New(MetaType::Struct, makeRow(MetaList::New(MetaType::Struct, nullptr)));
  rows->Add(makeRow(MakeDisks({{"sda", 1}})));
  rows->Add(makeRow(MakeList({MakeVolume()})));
  rows->Add(makeRow(MakeList({MakeRow("A", "x"), MakeRow("A", "y")})));
  EXPECT_EQ(Ndjson(rows),
            "{\"Items\":[{\"Name\":\"sda\",\"Size\":1}]}\n"
            "{\"Items\":[{\"Disk\":{\"Name\":\"sda\",\"Size\":7},\"Labels\":[\"a\",\"b\"],"
            "\"On\":true}]}\n"
            "{\"Items\":[{\"A\":\"x\"},{\"A\":\"y\"}]}\n");
}

TEST(NdjsonFormatTest, PrintsRowsThatStoreTheirFieldsDifferently) {
  // The rows have more fields than a shared layout allows, and the second one has documentation
  // that the declared structure lacks.
  const auto makeRow = [](bool isDocumented) {
    auto row = MetaStruct::New("Row");
    for (int i = 0; i < 70; ++i) {
      row->SetField("f" + std::to_string(100 + i), MetaInt::New(i), isDocumented ? "About." : "");
    }
    return row;
  };
  const auto plain = MakeList({makeRow(false), makeRow(true)});
  const std::string text = Ndjson(plain);
  const std::string line = text.substr(0, text.find('\n') + 1);
  EXPECT_EQ(text, line + line);
  EXPECT_EQ(line.substr(0, 22), "{\"f100\":0,\"f101\":1,\"f1");

  auto documented = MetaStruct::New("Disk");
  documented->SetField("Size", MetaInt::New(2), "About.");
  documented->SetField("Name", MetaString::New("b"), "");
  EXPECT_EQ(
      Ndjson(MakeList({MakeDisk("a", 1), documented, MakeDisk("c", 3)})),
      "{\"Name\":\"a\",\"Size\":1}\n{\"Name\":\"b\",\"Size\":2}\n{\"Name\":\"c\",\"Size\":3}\n");
}

TEST(NdjsonFormatTest, PrintsVeryDeepNesting) {
  const std::string text = Ndjson(Testing::MakeNested(100000));
  EXPECT_EQ(text.substr(0, 26), "{\"a\":99999,\"child\":{\"a\":99");
  EXPECT_EQ(text.substr(text.size() - 4), "}}}\n");
}

TEST(NdjsonFormatTest, NamesTheFieldThatIsNotUtf8) {
  EXPECT_THAT(ErrorsOf(kNdjsonFormat, MakeRow("Note", "a\xff")),
              ElementsAre("The field Note is not valid UTF-8"));
  EXPECT_THAT(ErrorsOf(kNdjsonFormat, MetaString::New("\xed\xa0\x80")),
              ElementsAre("The result is not valid UTF-8"));
  EXPECT_THAT(ErrorsOf(kNdjsonFormat, MakeTexts({"a", "\xc3"})),
              ElementsAre("The value is not valid UTF-8 (element 2)"));
  const auto volume = MakeVolume();
  volume->SetField("Disk", MakeDisk("\xc0\x80", 1));
  EXPECT_THAT(ErrorsOf(kNdjsonFormat, MakeList({MakeVolume(), volume})),
              ElementsAre("The field Disk.Name is not valid UTF-8 (element 2)"));
  volume->SetField("Disk", MakeDisk("", 1));
  volume->SetField("Labels", std::vector<std::string>{"a", "b", "\xf5\x80\x80\x80"});
  EXPECT_THAT(ErrorsOf(kNdjsonFormat, MakeList({volume})),
              ElementsAre("The field Labels is not valid UTF-8 (element 1, element 3)"));
}

TEST(NdjsonFormatTest, EscapesANameThatIsNotUtf8InTheMessage) {
  EXPECT_THAT(ErrorsOf(kNdjsonFormat, MakeRow("a\xff\n\u202e", "x")),
              ElementsAre("The name of the field a\\xff\\u{0a}\\u{202e} is not valid UTF-8"));
}

TEST(NdjsonFormatTest, RejectsAValueOfAForeignClass) {
  const auto row = MakeRow("A", "x");
  row->SetField("B", std::make_shared<Testing::LyingValue>(MetaType::String));
  EXPECT_THAT(ErrorsOf(kNdjsonFormat, row),
              ElementsAre("The field B has a value that is not of the class of its kind"));
  EXPECT_THAT(ErrorsOf(kNdjsonFormat, std::make_shared<Testing::LyingValue>(MetaType::List)),
              ElementsAre("The result has a value that is not of the class of its kind"));
}

TEST(NdjsonFormatTest, RejectsAnElementThatLostAField) {
  const auto lost = MakeDisk("sdb", 2);
  const auto disks = MakeList({MakeDisk("sda", 1), lost});
  lost->RemoveField("Size");
  EXPECT_THAT(ErrorsOf(kNdjsonFormat, disks), ElementsAre("The field Size is missing (element 2)"));
}

TEST(NdjsonFormatTest, RejectsAnOutputWithoutAResult) {
  EXPECT_THAT(ErrorsOf(kNdjsonFormat, nullptr),
              ElementsAre("The command returned nothing to print"));
}

}  // namespace
}  // namespace Kestrel::Formats
