// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/Columns.h"

#include <algorithm>

namespace Kestrel::Formats {

namespace {

using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

std::size_t PositionOf(const std::string& name, const MetaStruct& structure) {
  const std::vector<std::string> names = structure.GetFieldNames();
  return static_cast<std::size_t>(std::lower_bound(names.begin(), names.end(), name) -
                                  names.begin());
}

}  // namespace

Columns::Columns(const Selection& selection) : isScalar_(selection.HasScalarRows()) {
  isScalar_ ? AddColumn({kRow, std::string(kScalarName), 0}) : AddColumns(selection);
  structures_.resize(nested_.size() + 1);
  for (Column& column : columns_) {
    column.structure = &structures_[column.field.structure];
  }
}

FieldPath Columns::PathOf(std::size_t column) const {
  if (isScalar_) {
    return {};
  }
  const Field& field = columns_[column].field;
  FieldPath outwards = {field.name};
  for (std::size_t outer = field.structure; outer != kRow; outer = nested_[outer - 1].structure) {
    outwards.push_back(nested_[outer - 1].name);
  }
  return {outwards.rbegin(), outwards.rend()};
}

std::vector<std::string> Columns::Headers() const {
  std::vector<std::string> headers;
  headers.reserve(columns_.size());
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    headers.push_back(isScalar_ ? std::string(kScalarName) : JoinNames(PathOf(column)));
  }
  return headers;
}

void Columns::AddColumns(const Selection& selection) {
  const MetaStruct* const shape = selection.Shape();
  for (const FieldPath& path : selection.Paths()) {
    shape == nullptr ? AddColumn({kRow, path[0], 0}) : AddPath(*shape, path);
  }
  if (shape != nullptr && selection.Choice().hasOthers) {
    const std::vector<std::string> names = shape->GetFieldNames();
    for (std::size_t i = 0; i < names.size(); ++i) {
      AddAll(shape->GetField(names[i]), {kRow, names[i], i});
    }
  }
}

void Columns::AddPath(const MetaStruct& shape, const FieldPath& path) {
  Value value = shape.GetField(path[0]);
  Field field = {kRow, path[0], PositionOf(path[0], shape)};
  for (std::size_t depth = 1; depth < path.size(); ++depth) {
    const Value outer = value;
    const auto& structure = static_cast<const MetaStruct&>(*outer);
    value = structure.GetField(path[depth]);
    field = {AddStructure(field), path[depth], PositionOf(path[depth], structure)};
  }
  AddAll(value, field);
}

/// Adds a column for the value, or a column for each scalar and list that a structure contains.
/// Uses its own stack, because structures may be nested deeply.
void Columns::AddAll(const Value& value, const Field& field) {
  std::vector<std::pair<Value, Field>> left = {{value, field}};
  while (!left.empty()) {
    const auto [next, place] = std::move(left.back());
    left.pop_back();
    if (KindOf(*next) != MetaType::Struct) {
      AddColumn(place);
      continue;
    }
    const auto& structure = static_cast<const MetaStruct&>(*next);
    const std::vector<std::string> names = structure.GetFieldNames();
    const std::size_t index = AddStructure(place);
    for (std::size_t i = names.size(); i > 0; --i) {
      left.emplace_back(structure.GetField(names[i - 1]), Field{index, names[i - 1], i - 1});
    }
  }
}

std::size_t Columns::AddStructure(const Field& field) {
  const auto [place, isNew] =
      nestedIndex_.try_emplace({field.structure, field.name}, nested_.size() + 1);
  if (isNew) {
    nested_.push_back(field);
  }
  return place->second;
}

void Columns::AddColumn(const Field& field) {
  if (columnIndex_.try_emplace({field.structure, field.name}, columns_.size()).second) {
    columns_.push_back({nullptr, field});
  }
}

}  // namespace Kestrel::Formats
