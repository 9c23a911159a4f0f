// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/FieldCursor.h"
#include "metaobj/FieldLayout.h"
#include "metaobj/ValueAccess.h"

namespace Kestrel::AutoCli {

/// Finds the field of one name in any number of structures; those of one layout, one after the
/// other, cost one look-up together.
class FieldSlot {
 public:
  explicit FieldSlot(std::string name) : name_(std::move(name)) {}

  const std::string& GetName() const { return name_; }

  /// The field's value, null when the structure has none of that name. The pointer holds while the
  /// structure stays as it is.
  const std::shared_ptr<MetaObj::MetaObject>* Find(const MetaObj::MetaStruct& record) {
    const MetaObj::FieldLayout* const layout = MetaObj::ValueAccess::Layout(record);
    if (layout == nullptr) {
      return MetaObj::ValueAccess::Find(record, name_);
    }
    if (layout != layout_.Get()) {
      layout_ = MetaObj::LayoutRef(layout);
      position_ = layout->Find(name_);
    }
    return position_ == MetaObj::FieldLayout::kNotFound
               ? nullptr
               : MetaObj::ValueAccess::Slots(record) + position_;
  }

 private:
  std::string name_;
  MetaObj::LayoutRef layout_;  // owned, so that no other can come to stand at its address
  std::size_t position_ = 0;
};

/// Finds many fields of one structure, those of a large one in a single walk when they are asked
/// for in the order of their names. The structure must stay as it is meanwhile.
class FieldFinder {
 public:
  explicit FieldFinder(const MetaObj::MetaStruct& record)
      : record_(record),
        hasLayout_(MetaObj::ValueAccess::Layout(record) != nullptr),
        cursor_(record) {}

  /// The field's value, null when the structure has none of that name.
  const std::shared_ptr<MetaObj::MetaObject>* Find(const std::string& name) {
    if (hasLayout_ || cursor_.AtEnd() || cursor_.Name() != name) {
      return MetaObj::ValueAccess::Find(record_, name);
    }
    const std::shared_ptr<MetaObj::MetaObject>* const value = &cursor_.Value();
    cursor_.Next();
    return value;
  }

 private:
  const MetaObj::MetaStruct& record_;
  const bool hasLayout_;
  MetaObj::FieldCursor cursor_;
};

}  // namespace Kestrel::AutoCli
