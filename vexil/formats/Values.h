// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/ValueAccess.h"
#include "vexil/formats/Faults.h"

namespace Kestrel::Formats {

// Reads the fields of a row in place, through a private header of the library. Otherwise it would
// take longer to read them than to print them.

using Value = std::shared_ptr<MetaObj::MetaObject>;

/// Returns the kind of `value`, after checking that its class is the one for that kind. Throws
/// ValueFault if it is not: a plug-in may have its own classes, which can return any kind.
inline MetaObj::MetaType KindOf(const MetaObj::MetaObject& value) {
  if (!MetaObj::ValueAccess::IsValueClass(value)) {
    throw ValueFault{"has a value that is not of the class of its kind"};
  }
  return value.GetType();
}

/// Reads fields of structures whose fields have the same names, such as the elements of a list.
class FieldReader {
 public:
  /// The values of a structure. Valid until the structure changes.
  struct Fields {
    const MetaObj::MetaStruct* structure;
    const Value* slots;  // null if the fields must be looked up by name
  };

  FieldReader() = default;

  /// `structure` is one of the structures. It must exist as long as the reader.
  explicit FieldReader(const MetaObj::MetaStruct& structure)
      : layout_(MetaObj::ValueAccess::Layout(structure)) {}

  Fields Open(const MetaObj::MetaStruct& structure) const {
    const bool isKnown = layout_ != nullptr && MetaObj::ValueAccess::Layout(structure) == layout_;
    return {&structure, isKnown ? MetaObj::ValueAccess::Slots(structure) : nullptr};
  }

  /// Returns the value of the field `name`, which is at `position` in the byte order of all names.
  /// Throws ValueFault if there is no such field.
  static const MetaObj::MetaObject& Get(const Fields& fields, std::size_t position,
                                        const std::string& name) {
    return fields.slots == nullptr ? GetByName(*fields.structure, name) : *fields.slots[position];
  }

 private:
  static const MetaObj::MetaObject& GetByName(const MetaObj::MetaStruct& structure,
                                              const std::string& name) {
    const MetaObj::MetaObject* const value = structure.FindField(name);
    if (value == nullptr) {
      throw ValueFault{"is missing"};
    }
    return *value;
  }

  const MetaObj::FieldLayout* layout_ = nullptr;
};

}  // namespace Kestrel::Formats
