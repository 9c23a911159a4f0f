// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/formats/PrettyPrinter.h"
#include "vexil/formats/Selection.h"
#include "vexil/formats/Values.h"

namespace Kestrel::Formats {

/// A table for people: a column for each field, as wide as its widest cell if there is room for
/// that. Otherwise long cells are broken into several lines. Integers are aligned to the right.
class PrettyTable {
 public:
  /// A table without columns.
  PrettyTable(const PrettyPrinter& printer, const Room& room) : printer_(printer), room_(room) {}

  /// Adds a column for each field of `shape`, a structure with the fields of the rows.
  void AddAllColumns(const MetaObj::MetaStruct& shape);

  /// Adds a column for the field to which the names in `path` lead, unless there is one.
  void AddColumn(const FieldPath& path);

  /// Adds the only column of rows that are scalars, for which no header is printed.
  void AddScalarColumn();

  /// Chooses the widths of the columns for these rows. Returns false if there is no room for all
  /// columns, or if the table has none.
  bool Fit(const Value* rows, std::size_t count);

  void PrintHeader(Block& block) const;
  void PrintRow(const MetaObj::MetaObject& row, Block& block) const;

 private:
  struct Column {
    FieldPath path;     // empty: the row itself
    std::string title;  // the names with full stops between them
    bool isRightAligned = false;
    std::size_t minWidth = 0;
    std::size_t width = 0;
    bool isWhole = true;    // whether the column is wide enough for all of its cells
    std::size_t slack = 0;  // by how much a terminal may draw a cell wider than usual
  };

  static const MetaObj::MetaObject& CellOf(const MetaObj::MetaObject& row, const Column& column);
  void Measure(const MetaObj::MetaObject& row, Column& column) const;
  void MeasureTitle(Column& column) const;
  bool Shrink();
  void PrintCells(const std::vector<Block>& cells, Block& block) const;

  const PrettyPrinter& printer_;
  Room room_;
  std::vector<Column> columns_;
};

}  // namespace Kestrel::Formats
