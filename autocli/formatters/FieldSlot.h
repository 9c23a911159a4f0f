// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "autocli/formatters/LayoutCache.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/FieldCursor.h"
#include "metaobj/FieldLayout.h"
#include "metaobj/ValueAccess.h"

namespace Kestrel::AutoCli {

/// Returns the value at position `slot` of `slots`, the values of a structure with a layout. Null
/// if `slot` is `FieldLayout::kNotFound`.
inline const std::shared_ptr<MetaObj::MetaObject>* ValueInSlot(
    const std::shared_ptr<MetaObj::MetaObject>* slots, std::size_t slot) {
  return slot == MetaObj::FieldLayout::kNotFound ? nullptr : slots + slot;
}

/// Finds the field with one name in any number of structures. Structures of the same layout that
/// follow one another cost a single look-up.
class FieldSlot {
 public:
  explicit FieldSlot(std::string name) : name_(std::move(name)) {}

  const std::string& GetName() const { return name_; }

  /// Returns the value of the field, null if the structure has no field of that name. The pointer
  /// is valid until the structure changes.
  const std::shared_ptr<MetaObj::MetaObject>* Find(const MetaObj::MetaStruct& structure) {
    const MetaObj::FieldLayout* const layout = MetaObj::ValueAccess::Layout(structure);
    if (layout == nullptr) {
      return MetaObj::ValueAccess::Find(structure, name_);
    }
    const std::size_t slot = slots_.Get(*layout, [&] { return layout->Find(name_); });
    return ValueInSlot(MetaObj::ValueAccess::Slots(structure), slot);
  }

 private:
  static constexpr std::size_t kMaxLayouts = 8;

  std::string name_;
  LayoutCache<std::size_t, kMaxLayouts> slots_;
};

/// Finds any number of fields of one structure, which must not change until the object is
/// destroyed. In a structure without a layout, looking up all fields in the order of their names
/// takes a single pass.
class FieldFinder {
 public:
  explicit FieldFinder(const MetaObj::MetaStruct& structure)
      : structure_(structure),
        hasLayout_(MetaObj::ValueAccess::Layout(structure) != nullptr),
        cursor_(structure) {}

  /// Returns the value of the field, null if the structure has no field of that name.
  const std::shared_ptr<MetaObj::MetaObject>* Find(const std::string& name) {
    if (hasLayout_ || cursor_.AtEnd() || cursor_.Name() != name) {
      return MetaObj::ValueAccess::Find(structure_, name);
    }
    const std::shared_ptr<MetaObj::MetaObject>* const value = &cursor_.Value();
    cursor_.Next();
    return value;
  }

 private:
  const MetaObj::MetaStruct& structure_;
  const bool hasLayout_;
  MetaObj::FieldCursor cursor_;
};

}  // namespace Kestrel::AutoCli
