// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cstddef>
#include <memory>

#include "vexil/formats/ExactFormat.h"
#include "vexil/formats/PrettyPrinter.h"
#include "vexil/formats/PrettyTable.h"

// The format "pretty", for people: a list is a table if the screen has room for its columns,
// otherwise a tree for each element; a structure is a tree. Nothing in a value can act on the
// terminal.

namespace Kestrel::Formats {

namespace {

using MetaObj::MetaObject;

class PrettyResult {
 public:
  PrettyResult(const Selection& selection, const FormatOptions& options, TextBuffer& out)
      : selection_(selection),
        printer_(Palette::For(options), options.isHuman),
        room_({options.screen.width == 0 ? kUnlimitedWidth : options.screen.width}),
        out_(out) {}

  void Print() {
    if (selection_.List() == nullptr) {
      return Write(PrintValue(*selection_.GetRows().first[0]));
    }
    if (selection_.GetRows().count == 0) {
      return Write(printer_.PrintText("no rows", Style::Plain, room_.width));
    }
    PrintRows();
  }

 private:
  Block PrintValue(const MetaObject& value) const {
    return printer_.Print(value, {}, &selection_.Choice(), room_);
  }

  void PrintRows() {
    PrettyTable table(printer_, room_);
    AddColumns(table);
    const Selection::Rows& rows = selection_.GetRows();
    if (!table.Fit(rows.first, rows.count)) {
      return PrintTrees();
    }
    Block block;
    if (!selection_.HasScalarRows()) {
      table.PrintHeader(block);
    }
    for (const Value& row : rows) {
      table.PrintRow(*row, block);
      Write(block);
      block.clear();
    }
  }

  void AddColumns(PrettyTable& table) const {
    if (selection_.HasScalarRows()) {
      return table.AddScalarColumn();
    }
    for (const FieldPath& path : selection_.Paths()) {
      table.AddColumn(path);
    }
    if (selection_.Paths().empty()) {
      table.AddAllColumns(*selection_.Shape());
    }
  }

  /// Prints each row as a tree, with an empty line between two trees.
  void PrintTrees() {
    const Selection::Rows& rows = selection_.GetRows();
    for (const Value& row : rows) {
      if (&row != rows.begin()) {
        out_.Append('\n');
      }
      Write(PrintValue(*row));
    }
  }

  void Write(const Block& block) {
    for (const DisplayLine& line : block) {
      out_.Append(line.text);
      out_.Append('\n');
    }
  }

  const Selection& selection_;
  PrettyPrinter printer_;
  Room room_;
  TextBuffer& out_;
};

void Print(const Selection& selection, const FormatOptions& options, TextBuffer& out) {
  PrettyResult(selection, options, out).Print();
}

}  // namespace

const ExactFormat kPrettyFormat = {"pretty",
                                   "Print tables and trees that fit the terminal, for people.",
                                   false,
                                   {&kColorKey, &kHumanKey},
                                   Print};

}  // namespace Kestrel::Formats
