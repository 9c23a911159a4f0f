// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/formats/Selection.h"
#include "vexil/formats/Values.h"

namespace Kestrel::Formats {

/// The columns of a result: one for each field that is chosen, where a nested structure counts as
/// its fields. Rows that are scalars have the single column `value`. There are no columns for a
/// structure without fields.
class Columns {
 public:
  explicit Columns(const Selection& selection);

  std::size_t Count() const { return columns_.size(); }

  /// Returns the names that lead to the field of a column.
  FieldPath PathOf(std::size_t column) const;

  /// Sets the row that GetCell reads. The row must exist until the next call. Throws ValueFault if
  /// the row does not have the shape of the result.
  void BeginRow(const MetaObj::MetaObject& row);

  /// Returns the value in a cell of the row. Throws ValueFault if there is none.
  const MetaObj::MetaObject& GetCell(std::size_t column) const {
    return isScalar_ ? *row_ : Get(columns_[column]);
  }

 private:
  /// A field of the structure with that index: the row has 0, nested structures follow.
  struct Field {
    std::size_t structure;
    std::string name;
    std::size_t position;
  };
  /// The index of the structure and the name of a field.
  using Key = std::pair<std::size_t, std::string>;

  void AddPath(const MetaObj::MetaStruct& shape, const FieldPath& path);
  void AddAll(const Value& value, const Field& field);
  std::size_t AddStructure(const Field& field);
  void AddColumn(const Field& field);
  void OpenStructure(const MetaObj::MetaObject& value);

  const MetaObj::MetaObject& Get(const Field& field) const {
    return FieldReader::Get(structures_[field.structure], field.position, field.name);
  }

  bool isScalar_;
  std::vector<Field> nested_;  // the nested structures, from index 1
  std::map<Key, std::size_t> nestedIndex_;
  std::vector<Field> columns_;
  std::map<Key, std::size_t> columnIndex_;
  std::vector<FieldReader> readers_;  // by index of the structure
  const MetaObj::MetaObject* row_ = nullptr;
  std::vector<FieldReader::Fields> structures_;  // those in the row
};

}  // namespace Kestrel::Formats
