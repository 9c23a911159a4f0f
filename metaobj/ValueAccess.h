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

/// Access to private contents of values that copies no names, shares no ownership and needs no
/// dynamic cast. Pointers and references are valid until the value changes.
class ValueAccess {
 public:
  /// Whether the object is of one of the five value classes, so that its kind determines its class.
  static bool IsValueClass(const MetaObject& object) { return object.isValueClass_; }

  /// Returns the object as a structure; null when it is not one, even if its kind says so.
  static const MetaStruct* AsStruct(const MetaObject& object) {
    return object.isValueClass_ && object.type_ == MetaType::Struct
               ? static_cast<const MetaStruct*>(&object)
               : nullptr;
  }

  /// Returns the object as a list; null when it is not one, even if its kind says so.
  static const MetaList* AsList(const MetaObject& object) {
    return object.isValueClass_ && object.type_ == MetaType::List
               ? static_cast<const MetaList*>(&object)
               : nullptr;
  }

  /// Whether the object is a MetaBool, MetaInt or MetaString.
  static bool IsScalarClass(const MetaObject& object) {
    return object.isValueClass_ && object.type_ < MetaType::Struct;
  }

  /// Returns the field's value, null when there is no such field.
  static const std::shared_ptr<MetaObject>* Find(const MetaStruct& structure,
                                                 std::string_view name) {
    return structure.Find(FieldName(name));
  }

  /// Returns the layout of the structure; null when the structure has its own index. Structures of
  /// one layout have each field in the same slot.
  static const FieldLayout* Layout(const MetaStruct& structure) {
    return structure.hasOwnIndex_ ? nullptr : structure.layout_;
  }

  /// Returns the values of a structure that has a layout, in the layout's order.
  static const std::shared_ptr<MetaObject>* Slots(const MetaStruct& structure) {
    const MetaStruct::Overflow* const overflow = structure.overflow_.get();
    return overflow != nullptr && !overflow->slots.empty() ? overflow->slots.data()
                                                           : structure.inline_.data();
  }

  /// Returns the declared structure of a list, null when there is none.
  static const std::shared_ptr<MetaStruct>& Structure(const MetaList& list) {
    return list.structure_;
  }
};

}  // namespace Kestrel::MetaObj
