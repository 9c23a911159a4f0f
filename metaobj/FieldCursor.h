// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/FieldLayout.h"
#include "metaobj/SlabAllocator.h"

namespace Kestrel::MetaObj {

/// What a structure stores outside of its inline slots: its values or, once it has its own index,
/// all of its fields.
struct MetaStruct::Overflow {
  using Fields =
      std::map<std::string, Field, std::less<>, SlabAllocator<std::pair<const std::string, Field>>>;

  using Slots =
      std::vector<std::shared_ptr<MetaObject>, SlabAllocator<std::shared_ptr<MetaObject>>>;

  static void* operator new(std::size_t size) { return Slab::Allocate(size); }
  static void operator delete(void* block, std::size_t size) noexcept { Slab::Free(block, size); }

  Slots slots;    // all values, unless the structure has its own index
  Fields fields;  // all fields, once the structure has its own index
};

inline const std::shared_ptr<MetaObject>* MetaStruct::Slots() const {
  const bool isOutside = overflow_ != nullptr && !overflow_->slots.empty();
  return isOutside ? overflow_->slots.data() : inline_.data();
}

inline const std::shared_ptr<MetaObject>* MetaStruct::Find(const FieldName& name) const {
  if (hasOwnIndex_) {
    return FindOwn(name.Text());
  }
  const std::size_t position = layout_->Find(name);
  return position == FieldLayout::kNotFound ? nullptr : Slots() + position;
}

/// Walks over the fields of a structure in ascending byte order of their names, without copying a
/// name or sharing a value. The structure must not change while the cursor exists.
class FieldCursor {
 public:
  explicit FieldCursor(const MetaStruct& structure);

  bool AtEnd() const { return left_ == 0; }

  /// The number of fields left, including the current one.
  std::size_t CountLeft() const { return left_; }

  void Next();

  const std::string& Name() const { return text_ ? (*text_)->name : own_->first; }

  /// The documentation, empty when the field has none.
  const std::string& Documentation() const;

  const std::shared_ptr<MetaObject>& Value() const { return text_ ? *slot_ : own_->second.value; }

 private:
  std::size_t left_;
  // Null if the structure has its own index or no fields.
  const std::shared_ptr<const FieldText>* text_ = nullptr;
  const std::shared_ptr<MetaObject>* slot_ = nullptr;
  MetaStruct::Overflow::Fields::const_iterator own_;
};

inline FieldCursor::FieldCursor(const MetaStruct& structure) {
  if (structure.hasOwnIndex_) {
    left_ = structure.overflow_->fields.size();
    own_ = structure.overflow_->fields.begin();
    return;
  }
  left_ = structure.layout_->Count();
  text_ = left_ == 0 ? nullptr : structure.layout_->Texts();
  slot_ = structure.Slots();
}

inline void FieldCursor::Next() {
  --left_;
  if (text_ == nullptr) {
    ++own_;
    return;
  }
  ++text_;
  ++slot_;
}

inline const std::string& FieldCursor::Documentation() const {
  return text_ ? (*text_)->documentation : own_->second.documentation;
}

}  // namespace Kestrel::MetaObj
