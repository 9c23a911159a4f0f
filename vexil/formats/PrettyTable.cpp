// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/PrettyTable.h"

#include <algorithm>
#include <utility>

#include "vexil/formats/Faults.h"
#include "vexil/formats/PrettyCell.h"

namespace Kestrel::Formats {

using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

constexpr std::size_t kGap = 2;

// In a narrower column, most words would be broken.
constexpr std::size_t kMinTextWidth = 10;
constexpr std::size_t kMinTreeWidth = 16;

}  // namespace

void PrettyTable::AddAllColumns(const MetaStruct& shape) {
  for (const std::string& name : shape.GetFieldNames()) {
    columns_.push_back({{name}, name});
  }
}

void PrettyTable::AddColumn(const FieldPath& path) {
  const bool isThere = std::any_of(columns_.begin(), columns_.end(),
                                   [&path](const Column& each) { return each.path == path; });
  if (!isThere) {
    columns_.push_back({path, JoinNames(path)});
  }
}

void PrettyTable::AddScalarColumn() { columns_.emplace_back(); }

bool PrettyTable::Fit(const Value* rows, std::size_t count) {
  std::size_t needed = kGap * (columns_.size() - 1);
  for (Column& column : columns_) {
    for (std::size_t row = 0; row < count; ++row) {
      Measure(*rows[row], column);
    }
    MeasureTitle(column);
    needed += column.width + column.slack;
  }
  return !columns_.empty() && (needed <= room_.width || Shrink());
}

const MetaObject& PrettyTable::CellOf(const MetaObject& row, const Column& column) {
  const MetaObject* value = &row;
  for (const std::string& name : column.path) {
    if (KindOf(*value) != MetaType::Struct) {
      throw ValueFault{"is not a structure"};
    }
    value = static_cast<const MetaStruct&>(*value).FindField(name);
    if (value == nullptr) {
      throw ValueFault{"is missing"};
    }
  }
  return *value;
}

void PrettyTable::Measure(const MetaObject& row, Column& column) const {
  const MetaObject& value = CellOf(row, column);
  const Room room = {kUnlimitedWidth, room_.depth + 1, false};
  const TextWidth width = printer_.Measure(value, column.title, room);
  const MetaType kind = value.GetType();
  const bool isText = kind != MetaType::Int && kind != MetaType::Bool;
  const std::size_t smallest = IsNested(value) ? kMinTreeWidth : kMinTextWidth;
  column.isRightAligned = kind == MetaType::Int;
  column.minWidth = std::max(column.minWidth, isText ? std::min(width.max, smallest) : width.max);
  column.width = std::max(column.width, width.max);
  column.slack = std::max(column.slack, width.max - width.usual);
}

void PrettyTable::MeasureTitle(Column& column) const {
  const TextWidth width = MeasureText(column.title);
  column.minWidth = std::max({column.minWidth, std::min(width.max, kMinTextWidth), std::size_t{1}});
  column.width = std::max({column.width, width.max, std::size_t{1}});
  column.slack = std::max(column.slack, width.max - width.usual);
}

/// Makes the columns that exceed their share of the room narrower, so that all fit. Returns false
/// if that is not possible.
bool PrettyTable::Shrink() {
  std::size_t needed = kGap * (columns_.size() - 1);
  for (const Column& column : columns_) {
    needed += column.minWidth + column.slack;
  }
  if (needed > room_.width) {
    return false;
  }
  std::vector<Column*> byNeed;
  for (Column& column : columns_) {
    byNeed.push_back(&column);
  }
  std::sort(byNeed.begin(), byNeed.end(), [](const Column* left, const Column* right) {
    return left->width - left->minWidth < right->width - right->minWidth;
  });
  // Each column gets what it needs or its share of what is left, so narrow columns stay whole.
  std::size_t left = room_.width - needed;
  std::size_t sharers = byNeed.size();
  for (Column* column : byNeed) {
    const std::size_t share = std::min(column->width - column->minWidth, left / sharers--);
    column->isWhole = column->minWidth + share == column->width;
    column->width = column->minWidth + share;
    left -= share;
  }
  return true;
}

void PrettyTable::PrintHeader(Block& block) const {
  std::vector<Block> cells;
  for (const Column& column : columns_) {
    cells.push_back(printer_.PrintText(column.title, Style::Name, column.width));
  }
  PrintCells(cells, block);
}

void PrettyTable::PrintRow(const MetaObject& row, Block& block) const {
  std::vector<Block> cells;
  for (const Column& column : columns_) {
    const Room room = {column.isWhole ? kUnlimitedWidth : column.width, room_.depth + 1, false};
    cells.push_back(printer_.Print(CellOf(row, column), column.title, nullptr, room));
  }
  PrintCells(cells, block);
}

/// Prints cells side by side.
void PrettyTable::PrintCells(const std::vector<Block>& cells, Block& block) const {
  std::size_t height = 0;
  for (const Block& cell : cells) {
    height = std::max(height, cell.size());
  }
  for (std::size_t i = 0; i < height; ++i) {
    DisplayLine& line = block.emplace_back();
    std::size_t column = 0;
    for (std::size_t j = 0; j < columns_.size(); ++j) {
      if (i < cells[j].size() && !cells[j][i].text.empty()) {
        const DisplayLine& text = cells[j][i];
        const bool isRight = columns_[j].isRightAligned;
        AppendAt(column + (isRight ? columns_[j].width - text.width.usual : 0), text, line);
      }
      column += columns_[j].width + kGap;
    }
  }
}

}  // namespace Kestrel::Formats
