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
#include "vexil/formats/Faults.h"
#include "vexil/formats/Selection.h"
#include "vexil/formats/Values.h"

namespace Kestrel::Formats {

/// The columns of a result: one for each field that is chosen. A nested structure has no column,
/// but its fields do. Rows that are scalars have the single column `value`. There are no columns
/// for a structure without fields.
class Columns {
 public:
  explicit Columns(const Selection& selection);

  Columns(const Columns&) = delete;
  Columns& operator=(const Columns&) = delete;

  std::size_t Count() const { return columns_.size(); }

  /// Returns the names that lead to the field of a column.
  FieldPath PathOf(std::size_t column) const;

  /// Returns the headers of all columns.
  std::vector<std::string> Headers() const;

  /// Calls `use` with each value of `row`, one for each column. `column` is the index of the column
  /// whose value is being read or used, also when an exception is thrown. Throws ValueFault if the
  /// row does not have the shape of the result.
  template <typename Use>
  void ReadRow(const Value& row, std::size_t& column, const Use& use) {
    column = 0;
    OpenRow(row);
    for (const Column& each : columns_) {
      use(FieldReader::Get(*each.structure, each.field.position, each.field.name));
      ++column;
    }
  }

 private:
  /// A field, and the index of the structure that contains it. The row has index 0; the nested
  /// structures follow.
  struct Field {
    std::size_t structure;
    std::string name;
    std::size_t position;
  };
  struct Column {
    const FieldReader::Fields* structure;  // of the structure that contains the field
    Field field;
  };
  /// The index of the structure and the name of a field.
  using Key = std::pair<std::size_t, std::string>;

  static constexpr std::size_t kRow = 0;

  void AddColumns(const Selection& selection);
  void AddPath(const MetaObj::MetaStruct& shape, const FieldPath& path);
  void AddAll(const Value& value, const Field& field);
  std::size_t AddStructure(const Field& field);
  void AddColumn(const Field& field);

  void OpenRow(const Value& row) {
    if (isScalar_) {
      structures_[kRow] = {nullptr, &row};  // as if it were the only field
      return;
    }
    OpenStructure(kRow, *row);
    for (std::size_t i = 0; i < nested_.size(); ++i) {
      OpenStructure(i + 1, Get(nested_[i]));
    }
  }

  void OpenStructure(std::size_t index, const MetaObj::MetaObject& value) {
    if (KindOf(value) != MetaObj::MetaType::Struct) {
      throw ValueFault{"is not a structure"};
    }
    const auto& structure = static_cast<const MetaObj::MetaStruct&>(value);
    if (index == readers_.size()) {
      readers_.emplace_back(structure);
    }
    structures_[index] = readers_[index].Open(structure);
  }

  const MetaObj::MetaObject& Get(const Field& field) const {
    return FieldReader::Get(structures_[field.structure], field.position, field.name);
  }

  bool isScalar_;
  std::vector<Field> nested_;  // the nested structures, from index 1
  std::map<Key, std::size_t> nestedIndex_;
  std::vector<Column> columns_;
  std::map<Key, std::size_t> columnIndex_;
  std::vector<FieldReader> readers_;             // by index of the structure, made by the first row
  std::vector<FieldReader::Fields> structures_;  // those in the present row
};

}  // namespace Kestrel::Formats
