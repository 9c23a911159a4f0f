// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string_view>

#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/FieldCursor.h"
#include "metaobj/FieldLayout.h"

namespace Kestrel::MetaObj {

/// The library's own way to what values hold: no copy of a name, no new owner, no dynamic cast.
/// Pointers and references live as long as the value stays as it is.
class ValueAccess {
 public:
  /// Whether the object is of one of the five value classes, so that its kind tells its class.
  static bool IsValueClass(const MetaObject& object) { return object.isValueClass_; }

  /// The object as a structure, null when it is none, whatever its kind says.
  static const MetaStruct* AsStruct(const MetaObject& object) {
    return object.isValueClass_ && object.type_ == MetaType::Struct
               ? static_cast<const MetaStruct*>(&object)
               : nullptr;
  }

  /// The object as a list, null when it is none, whatever its kind says.
  static const MetaList* AsList(const MetaObject& object) {
    return object.isValueClass_ && object.type_ == MetaType::List
               ? static_cast<const MetaList*>(&object)
               : nullptr;
  }

  /// Whether the object is one of MetaBool, MetaInt and MetaString.
  static bool IsScalarClass(const MetaObject& object) {
    return object.isValueClass_ && object.type_ < MetaType::Struct;
  }

  /// The field's value, null when there is no such field.
  static const std::shared_ptr<MetaObject>* Find(const MetaStruct& record, std::string_view name) {
    return record.Find(FieldName(name));
  }

  /// The layout that the record shares with its like, null when it has an index of its own.
  /// Records of one layout hold a field in the same slot.
  static const FieldLayout* Layout(const MetaStruct& record) {
    return record.hasOwnIndex_ ? nullptr : record.layout_;
  }

  /// The values of a record with a layout, in the layout's order.
  static const std::shared_ptr<MetaObject>* Slots(const MetaStruct& record) {
    const MetaStruct::Overflow* const overflow = record.overflow_.get();
    return overflow != nullptr && !overflow->slots.empty() ? overflow->slots.data()
                                                           : record.inline_.data();
  }

  /// The declared structure of a list, without a new owner.
  static const std::shared_ptr<MetaStruct>& Structure(const MetaList& list) {
    return list.structure_;
  }
};

}  // namespace Kestrel::MetaObj
