// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/DocumentPrinter.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>

#include "autocli/text/TextWriter.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/LimitedBuffer.h"
#include "support/SampleValues.h"

namespace Kestrel::AutoCli {
namespace {

using namespace ::Kestrel::Testing;  // NOLINT: helpers of these tests
using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

/// Writes down what it is asked to print.
class TracePrinter : public DocumentPrinter<TracePrinter> {
 public:
  static constexpr long kFieldStep = 10;
  static constexpr long kElementStep = 100;

  static std::string FieldPrefix(const std::string& name, bool isFirst, long level) {
    ++prefixesMade;
    return (isFirst ? "" : ";") + name + "@" + std::to_string(level) + "=";
  }

  explicit TracePrinter(TextWriter& out) : DocumentPrinter(out) {}

  void Bool(std::string_view before, bool value, long level) {
    Note(before, value ? "true" : "false", level);
  }
  void Int(std::string_view before, long value, long level) {
    Note(before, std::to_string(value), level);
  }
  void String(std::string_view before, const std::string& value, long level) {
    Note(before, "'" + value + "'", level);
  }
  void Misread(std::string_view before, const MetaObject* value) {
    out_.AppendAll(before, std::string(value == nullptr ? "null " : "misread "));
  }

  void BeginStruct(std::string_view before, const MetaStruct& structure, long level) {
    Note(before, structure.GetTypeName() + "{", level);
  }
  void EndStruct(bool isEmpty, long level) { Note("", isEmpty ? "}" : ";}", level); }
  void BeginList(std::string_view before, const MetaList&, long level) { Note(before, "[", level); }
  void BeginElement(bool isFirst, long level) { Note("", isFirst ? "-" : ",-", level); }
  void EndList(bool isEmpty, long level) { Note("", isEmpty ? "]" : ",]", level); }

  static inline int prefixesMade = 0;
  int notes = 0;

 private:
  void Note(std::string_view before, const std::string& text, long level) {
    ++notes;
    out_.Append(std::string(before) + text + "@" + std::to_string(level) + " ");
  }
};

std::string Trace(const std::shared_ptr<MetaObject>& value, long level) {
  std::ostringstream out;
  TextWriter writer(out);
  TracePrinter::prefixesMade = 0;
  TracePrinter::Print(value.get(), writer, level);
  writer.Finish();
  return out.str();
}

TEST(DocumentPrinterTest, PrintsAScalarAtItsLevel) {
  EXPECT_EQ(Trace(MetaBool::New(true), 1), "true@1 ");
  EXPECT_EQ(Trace(MetaInt::New(-7), -3), "-7@-3 ");
  EXPECT_EQ(Trace(MetaString::New("x"), 0), "'x'@0 ");
}

TEST(DocumentPrinterTest, ReportsAValueWhoseClassDoesNotMatchItsKind) {
  EXPECT_EQ(Trace(nullptr, 1), "null ");
  for (int kind = -1; kind < 6; ++kind) {
    EXPECT_EQ(Trace(std::make_shared<LyingValue>(static_cast<MetaType>(kind)), 1), "misread ");
  }
}

TEST(DocumentPrinterTest, EndsAnEmptyStructureOrListImmediately) {
  EXPECT_EQ(Trace(MetaStruct::New("Row"), 1), "Row{@1 }@1 ");
  EXPECT_EQ(Trace(MetaList::New(MetaType::Int), 1), "[@1 ]@1 ");
}

TEST(DocumentPrinterTest, PrintsFieldsAndElementsDeeperThanWhatContainsThem) {
  const auto structure = MetaStruct::New("Row");
  structure->SetField("b", 1);
  structure->SetField("a", true);
  EXPECT_EQ(Trace(structure, 1), "Row{@1 a@1=true@11 ;b@1=1@11 ;}@1 ");
  const auto list = MetaList::New(MetaType::Int);
  list->Add(1);
  list->Add(2);
  EXPECT_EQ(Trace(list, 1), "[@1 -@1 1@101 ,-@1 2@101 ,]@1 ");
}

TEST(DocumentPrinterTest, ContinuesAfterNestedValues) {
  const auto inner = MetaStruct::New("Inner");
  const auto structure = MetaStruct::New("Row");
  structure->SetField("a", MakeList({inner}));
  structure->SetField("b", inner);
  structure->SetField("c", std::make_shared<LyingValue>(MetaType::List));
  EXPECT_EQ(Trace(structure, 0),
            "Row{@0 a@0=[@10 -@10 Inner{@110 }@110 ,]@10 ;b@0=Inner{@10 }@10 ;c@0=misread ;}@0 ");
}

TEST(DocumentPrinterTest, PrintsLargeStructuresLikeSmallOnes) {
  const auto structure = MetaStruct::New("Row");
  std::string expected = "Row{@1 ";
  for (int i = 100; i < 200; ++i) {
    const std::string name = "f" + std::to_string(i);
    structure->SetField(name, i);
    expected += (i == 100 ? "" : ";") + name + "@1=" + std::to_string(i) + "@11 ";
  }
  EXPECT_EQ(Trace(structure, 1), expected + ";}@1 ");
}

std::shared_ptr<MetaStruct> MakeRow(const std::string& typeName, int value) {
  auto row = MetaStruct::New(typeName);
  row->SetField("a", value);
  row->SetField("b", value);
  return row;
}

/// Makes a structure that contains two rows of one layout and one of another.
std::shared_ptr<MetaStruct> MakeRows() {
  auto rows = MetaStruct::New("Rows");
  rows->SetField("x", MakeRow("Row", 1));
  rows->SetField("y", MakeRow("Row", 2));
  rows->SetField("z", MakeRow("Other", 3));
  return rows;
}

TEST(DocumentPrinterTest, MakesPrefixesOncePerLayoutAndLevel) {
  EXPECT_EQ(Trace(MakeRows(), 54),
            "Rows{@54 x@54=Row{@64 a@64=1@74 ;b@64=1@74 ;}@64 "
            ";y@54=Row{@64 a@64=2@74 ;b@64=2@74 ;}@64 "
            ";z@54=Other{@64 a@64=3@74 ;b@64=3@74 ;}@64 ;}@54 ");
  EXPECT_EQ(TracePrinter::prefixesMade, 3 + 2 + 2);
}

TEST(DocumentPrinterTest, DoesNotShareThePrefixesOfRowsDeeperThanLevel64) {
  EXPECT_EQ(Trace(MakeRows(), 55),
            "Rows{@55 x@55=Row{@65 a@65=1@75 ;b@65=1@75 ;}@65 "
            ";y@55=Row{@65 a@65=2@75 ;b@65=2@75 ;}@65 "
            ";z@55=Other{@65 a@65=3@75 ;b@65=3@75 ;}@65 ;}@55 ");
  EXPECT_EQ(TracePrinter::prefixesMade, 3 + 2 + 2 + 2);
}

TEST(DocumentPrinterTest, PrintsMoreLayoutsThanItRemembers) {
  const auto outer = MetaStruct::New("Outer");
  std::string expected = "Outer{@0 ";
  for (int i = 10; i < 80; ++i) {
    const std::string number = std::to_string(i);
    outer->SetField("f" + number, MakeRow("Row" + number, i));
    expected += (i == 10 ? "f" : ";f") + number + "@0=Row" + number + "{@10 a@10=" + number +
                "@20 ;b@10=" + number + "@20 ;}@10 ";
  }
  const auto twice = MetaStruct::New("Twice");
  twice->SetField("x", outer);
  twice->SetField("y", outer);
  EXPECT_EQ(Trace(outer, 0), expected + ";}@0 ");
  const std::string both = Trace(twice, -10);
  EXPECT_EQ(both, "Twice{@-10 x@-10=" + expected + ";}@0 ;y@-10=" + expected + ";}@0 ;}@-10 ");
}

TEST(DocumentPrinterTest, StopsOnceTheStreamHasFailed) {
  const auto list = MetaList::New(MetaType::Int);
  for (int i = 0; i < 1000000; ++i) {
    list->Add(i);
  }
  LimitedBuffer buffer(10);
  std::ostream out(&buffer);
  TextWriter writer(out);
  TracePrinter printer(writer);
  ValueWalk<TracePrinter>(printer, writer).Run(list.get(), 0);
  EXPECT_EQ(buffer.GetText().size(), 10u);
  EXPECT_LT(printer.notes, 20000);
}

}  // namespace
}  // namespace Kestrel::AutoCli
