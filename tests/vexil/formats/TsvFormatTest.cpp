// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/FormatsFixture.h"

namespace Kestrel::Formats {
namespace {

std::string Tsv(const std::shared_ptr<MetaObject>& root, Parameters parameters = {}) {
  return Print(kTsvFormat, root, parameters);
}

TEST(TsvFormatTest, PrintsTheColumnsOfCsvWithTabs) {
  EXPECT_EQ(Tsv(MakeVolume()), "Disk.Name\tDisk.Size\tLabels\tOn\nsda\t7\t[\"a\",\"b\"]\ttrue\n");
  EXPECT_EQ(Tsv(MakeDisks({})), "Name\tSize\n");
  EXPECT_EQ(Tsv(MakeDisks({{"a", 1}}), {{"header", "false"}}), "a\t1\n");
}

TEST(TsvFormatTest, EscapesWhatWouldSplitACell) {
  EXPECT_EQ(Tsv(MakeTexts({"a\tb", "a\nb", "a\rb", "a\\b", "\"a\", b"}), {{"header", "false"}}),
            "a\\tb\na\\nb\na\\rb\na\\\\b\n\"a\", b\n");
  EXPECT_EQ(Tsv(MakeRow("a\tb", "x")), "a\\tb\nx\n");
}

TEST(TsvFormatTest, CopiesOtherControlCharacters) {
  for (const std::string text :
       {"\x01", "a\x1f Zoë", "a long cell\fwith \"other\" characters\x7f"}) {
    EXPECT_EQ(Tsv(MetaString::New(text), {{"header", "false"}}), text + '\n');
  }
}

TEST(TsvFormatTest, PrintsALoneEmptyCellAsAnEmptyLine) {
  EXPECT_EQ(Tsv(MakeTexts({"", "a"})), "value\n\na\n");
}

TEST(TsvFormatTest, NamesTheCellThatIsNotUtf8) {
  EXPECT_THAT(ErrorsOf(kTsvFormat, MakeDisk("\xe2\x82", 1)),
              ElementsAre("The field Name is not valid UTF-8"));
}

}  // namespace
}  // namespace Kestrel::Formats
