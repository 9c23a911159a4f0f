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
///       Prints the text of a cell. `isAlone` is true if there is only one column. Throws
///       ValueFault if that is not possible.
template <typename Syntax>
class LinePrinter {
 public:
  LinePrinter(const Selection& selection, TextBuffer& out)
      : selection_(selection), columns_(selection), lists_(columns_.Count()), out_(out) {}

  /// Prints all lines; none if there are no columns. Throws ResultFault if that is not possible.
  void Print(bool hasHeader) {
    if (columns_.Count() == 0) {
      return;
    }
    if (hasHeader) {
      PrintHeader();
    }
    for (row_ = 0; row_ < selection_.GetRows().count; ++row_) {
      PrintRow(*selection_.GetRows().first[row_]);
    }
  }

 private:
  /// Prints the lists in one column as JSON.
  struct ListPrinter {
    TextBuffer text;
    JsonLine syntax{text};
    ValuePrinter<JsonLine> printer{syntax};
  };

  void PrintHeader() {
    for (std::size_t column = 0; column < columns_.Count(); ++column) {
      const std::string name = NameOf(column);
      try {
        Text(name);
      } catch (const ValueFault& fault) {
        throw LocateNameFault(fault, name);
      }
    }
    EndLine();
  }

  std::string NameOf(std::size_t column) const {
    const FieldPath path = columns_.PathOf(column);
    std::string name(path.empty() ? kScalarName : path[0]);
    for (std::size_t i = 1; i < path.size(); ++i) {
      name += '.' + path[i];
    }
    return name;
  }

  void PrintRow(const MetaObj::MetaObject& row) {
    std::size_t column = 0;
    try {
      columns_.ReadRow(row, column, [this, &column](const MetaObj::MetaObject& value) {
        PrintCell(value, lists_[column]);
      });
    } catch (const ValueFault& fault) {
      throw LocateFault(fault, {columns_.PathOf(column), Position()});
    }
    EndLine();
  }

  [[gnu::always_inline]] void PrintCell(const MetaObj::MetaObject& value,
                                        std::unique_ptr<ListPrinter>& list) {
    switch (KindOf(value)) {
      case MetaObj::MetaType::Int:
        return out_.AppendAll(Decimal{static_cast<const MetaObj::MetaInt&>(value).GetValue()},
                              Syntax::kSeparator);
      case MetaObj::MetaType::Bool:
        return out_.AppendAll(WordFor(static_cast<const MetaObj::MetaBool&>(value).GetValue()),
                              Syntax::kSeparator);
      case MetaObj::MetaType::String:
        return Text(static_cast<const MetaObj::MetaString&>(value).GetValue());
      default:
        return PrintList(value, list);
    }
  }

  static std::string_view WordFor(bool value) { return value ? "true" : "false"; }

  [[gnu::noinline]] void PrintList(const MetaObj::MetaObject& value,
                                   std::unique_ptr<ListPrinter>& list) {
    if (list == nullptr) {
      list = std::make_unique<ListPrinter>();
    }
    list->text.Clear();
    list->printer.PrintValue(value);
    Text(list->text.ToString());
  }

  [[gnu::always_inline]] void Text(std::string_view text) {
    if (text.empty() || AnyStop<typename Syntax::Ordinary>(text)) {
      return SpecialText(text);
    }
    out_.AppendAll(text, Syntax::kSeparator);
  }

  [[gnu::noinline]] void SpecialText(std::string_view text) {
    Syntax::Text(text, columns_.Count() == 1, out_);
    out_.Append(Syntax::kSeparator);
  }

  /// Ends a line. Each cell ends with a separator, also the last one.
  void EndLine() {
    out_.RemoveLast();
    out_.Append(Syntax::kLineEnd);
  }

  std::vector<std::size_t> Position() const {
    return selection_.List() == nullptr ? std::vector<std::size_t>()
                                        : std::vector<std::size_t>{row_ + 1};
  }

  const Selection& selection_;
  Columns columns_;
  std::vector<std::unique_ptr<ListPrinter>> lists_;  // by column; null until one is printed
  std::size_t row_ = 0;
  TextBuffer& out_;
};

}  // namespace Kestrel::Formats
