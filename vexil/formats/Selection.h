// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/formats/FormatOptions.h"
#include "vexil/formats/Values.h"

namespace Kestrel::Formats {

/// The name of the only column of rows that are scalars.
inline constexpr std::string_view kScalarName = "value";

/// Returns what the command declares as its result, or null if that is not known.
using DeclaredResult = std::function<std::shared_ptr<MetaObj::MetaObject>()>;

/// The names that lead from a structure to a field inside it, through structures only.
using FieldPath = std::vector<std::string>;

/// Returns the names in `path` with full stops between them.
std::string JoinNames(const FieldPath& path);

/// Which fields of a structure are printed: those in `fields` first, in that order.
struct FieldChoice {
  /// One of the fields. If its value is not a structure, all of it is printed.
  struct Field;

  /// Returns what is chosen inside a field; null if the field is not in `fields`.
  const FieldChoice* Find(const std::string& name) const;

  std::vector<Field> fields;
  bool hasOthers = true;  ///< whether all other fields follow, in byte order of their names
};

struct FieldChoice::Field {
  std::string name;
  FieldChoice inside;
};

/// The rows of a result, sorted and limited, and the fields to print of each row.
///
/// If the result is a list, its elements are the rows; otherwise the result is the only row. The
/// result must exist as long as this object, and must not change.
class Selection {
 public:
  /// A sequence of rows.
  struct Rows {
    const Value* first;
    std::size_t count;

    const Value* begin() const { return first; }
    const Value* end() const { return first + count; }
  };

  /// Selects from `root`, which is not null. If nothing is known about the structures in an empty
  /// list, their shape is taken from what `declared` returns. Appends a message to `errors` for
  /// each field that does not exist or cannot be sorted by. Throws ValueFault if a value is not of
  /// the class of its kind, and ResultFault if a row lacks the field to sort by.
  Selection(const Value& root, const DeclaredResult& declared, const FormatOptions& options,
            std::vector<std::string>& errors);

  Selection(const Selection&) = delete;
  Selection& operator=(const Selection&) = delete;

  /// The result if it is a list, otherwise null.
  const MetaObj::MetaList* List() const { return list_; }

  const Rows& GetRows() const { return rows_; }

  /// Whether each row is a boolean, an integer or a string.
  bool HasScalarRows() const { return hasScalarRows_; }

  /// A structure with the fields of each row; null if rows are scalars, or if nothing is known
  /// about the rows of an empty list.
  const MetaObj::MetaStruct* Shape() const { return shape_.get(); }

  /// The fields of each row in the order in which they were chosen. Empty if all are printed.
  const std::vector<FieldPath>& Paths() const { return paths_; }

  /// The chosen fields as a tree, in which the fields of a structure are together.
  const FieldChoice& Choice() const { return choice_; }

 private:
  void ReadShape(const Value& root, const DeclaredResult& declared);
  void ChooseFields(const std::vector<std::string>& names, std::vector<std::string>& errors);
  void Sort(const FormatOptions& options, std::vector<std::string>& errors);
  bool Find(const std::string& name, FieldPath& path) const;

  const MetaObj::MetaList* list_ = nullptr;
  std::shared_ptr<MetaObj::MetaStruct> shape_;
  bool hasScalarRows_ = false;
  std::vector<Value> ownRows_;  // the rows, unless `rows_` points into the list
  Rows rows_ = {nullptr, 0};
  std::vector<FieldPath> paths_;
  FieldChoice choice_;
};

/// A field of a structure that is printed.
struct ChosenField {
  std::string name;
  std::size_t position;       ///< in the byte order of the names of all fields
  const FieldChoice* inside;  ///< null means everything that the value contains
};

/// Returns the fields of `structure` that are printed, in order; all if `choice` is null.
std::vector<ChosenField> ChosenFields(const MetaObj::MetaStruct& structure,
                                      const FieldChoice* choice);

}  // namespace Kestrel::Formats
