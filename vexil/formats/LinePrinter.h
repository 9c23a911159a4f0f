// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "vexil/formats/Columns.h"
#include "vexil/formats/EscapedText.h"
#include "vexil/formats/Faults.h"
#include "vexil/formats/FormatOptions.h"
#include "vexil/formats/JsonSyntax.h"
#include "vexil/formats/Selection.h"
#include "vexil/formats/TextBuffer.h"
#include "vexil/formats/Values.h"

namespace Kestrel::Formats {

/// Prints the rows of a result as lines with a cell for each column, for the formats csv and tsv.
/// `Syntax` has these members:
///
///   static constexpr char kSeparator;
///   static constexpr std::string_view kLineEnd;
///   struct Ordinary;
///       Stops, as described in EscapedText.h, at all bytes that are not simply copied. May stop at
///       others, if that takes fewer comparisons.
///   static void Text(std::string_view text, bool isAlone, TextBuffer& out);
///       Prints the text of a cell. Throws ValueFault if that is not possible. `isAlone` is true if
///       there is only one column.
template <typename Syntax>
class LinePrinter {
 public:
  LinePrinter(const Selection& selection, TextBuffer& out)
      : selection_(selection),
        columns_(selection),
        lists_(columns_.Count()),
        room_(columns_.Count() * kMaxCell + Syntax::kLineEnd.size()),
        out_(out) {}

  /// Prints all lines; none if there are no columns. Throws ResultFault if that is not possible.
  void Print(bool hasHeader) {
    if (columns_.Count() == 0) {
      return;
    }
    if (hasHeader) {
      PrintHeader();
    }
    for (const Value& row : selection_.GetRows()) {
      PrintRow(row);
    }
  }

 private:
  /// The room for a cell and its separator.
  static constexpr std::size_t kMaxCell = kMaxShort + 1;

  /// Prints the lists in one column as JSON.
  struct ListPrinter {
    TextBuffer text;
    JsonLine syntax{text};
    ValuePrinter<JsonLine> printer{syntax};
    std::string printed;
  };

  void PrintHeader() {
    char* place = PrepareLine();
    for (const std::string& name : columns_.Headers()) {
      try {
        place = PutPiece(Syntax::kSeparator, OtherText(name, place));
      } catch (const ValueFault& fault) {
        throw LocateNameFault(fault, name);
      }
    }
    EndLine(place);
  }

  void PrintRow(const Value& row) {
    char* place = PrepareLine();
    std::size_t column;
    try {
      columns_.ReadRow(row, column, [this, &column, &place](const MetaObj::MetaObject& value) {
        place = PrintCell(value, column, place);
      });
    } catch (const ValueFault& fault) {
      throw Locate(fault, column, row);
    }
    EndLine(place);
  }

  // PrepareLine makes room for a whole line of short cells, which are written at `place`, with
  // their separators, without further checks. A long or special cell is printed by OtherText, which
  // then makes room again.

  char* PrepareLine() { return out_.Prepare(room_); }

  /// Prints a cell and a separator at `place`, and returns the place for the next cell.
  [[gnu::always_inline]] char* PrintCell(const MetaObj::MetaObject& value, std::size_t column,
                                         char* place) {
    switch (KindOf(value)) {
      case MetaObj::MetaType::Int:
        place = PutPiece(Decimal{static_cast<const MetaObj::MetaInt&>(value).GetValue()}, place);
        return PutPiece(Syntax::kSeparator, place);
      case MetaObj::MetaType::Bool:
        place = static_cast<const MetaObj::MetaBool&>(value).GetValue() ? PutPiece("true", place)
                                                                        : PutPiece("false", place);
        return PutPiece(Syntax::kSeparator, place);
      case MetaObj::MetaType::String:
        return Text(static_cast<const MetaObj::MetaString&>(value).GetValue(), place);
      default:
        return PutPiece(Syntax::kSeparator, OtherText(ListText(value, lists_[column]), place));
    }
  }

  /// Returns a list as JSON. The text is valid until the next list of the column is printed.
  [[gnu::noinline]] static std::string_view ListText(const MetaObj::MetaObject& value,
                                                     std::unique_ptr<ListPrinter>& list) {
    if (list == nullptr) {
      list = std::make_unique<ListPrinter>();
    }
    list->text.Clear();
    list->printer.PrintValue(value);
    list->printed = list->text.ToString();
    return list->printed;
  }

  [[gnu::always_inline]] char* Text(std::string_view text, char* place) {
    // Whether the text has 1 to `kMaxShort` bytes, in one comparison: for the empty text, the
    // subtraction wraps around to the largest number.
    const bool isShort = text.size() - 1 < kMaxShort;
    const bool isSimple = isShort && CopyOrdinary<typename Syntax::Ordinary>(text, place);
    return PutPiece(Syntax::kSeparator, isSimple ? place + text.size() : OtherText(text, place));
  }

  [[gnu::noinline]] char* OtherText(std::string_view text, char* place) {
    out_.Commit(place);
    Syntax::Text(text, columns_.Count() == 1, out_);
    return PrepareLine();
  }

  /// Ends a line. A separator follows even the last cell; the end of the line replaces it.
  void EndLine(char* place) { out_.Commit(PutPiece(Syntax::kLineEnd, place - 1)); }

  [[gnu::noinline]] ResultFault Locate(const ValueFault& fault, std::size_t column,
                                       const Value& row) const {
    ValueLocation location = {columns_.PathOf(column), {}};
    if (selection_.List() != nullptr) {
      const auto index = static_cast<std::size_t>(&row - selection_.GetRows().first);
      location.elements.push_back(index + 1);
    }
    return LocateFault(fault, location);
  }

  const Selection& selection_;
  Columns columns_;
  std::vector<std::unique_ptr<ListPrinter>> lists_;  // by column; null until a list is printed
  const std::size_t room_;                           // for a line
  TextBuffer& out_;
};

}  // namespace Kestrel::Formats
