// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/single_threaded.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "metaobj/FieldName.h"

// A layout is what structures of one shape have in common: the type name, the names of the fields
// in byte order and their documentation. A structure has its values in slots, in the order of its
// layout's fields. A table contains each layout once. When a structure gains a field, a transition
// from its layout usually leads to the next layout, so the other fields need not be compared.
//
// A layout is destroyed with its last owner, usually a structure or another layout. A layout owns
// its predecessors and has plain pointers to its successors; the destructor of a successor removes
// the pointer to it.
//
// The number of layouts in the table, the fields of a layout and the length of a name are bounded.
// A structure that exceeds such a bound has its own index (a map from names to fields) and a layout
// without fields, which is not in the table if the table was full. The transitions from and to a
// layout are bounded too; where there is none, the next layout is looked up in the table.
//
// Several threads may use layouts. While the process has one thread, the functions take no lock,
// and execute a locked instruction only to destroy a layout.
namespace Kestrel::MetaObj {

class FieldLayout;

/// The name and the documentation of a field, shared by the layouts that have the field.
struct FieldText {
  std::string name;
  std::string documentation;
};

/// A reference-counted owner of a layout; may be empty.
class LayoutRef {
 public:
  LayoutRef() = default;
  /// Becomes one more owner of `layout`, which may be null.
  explicit LayoutRef(const FieldLayout* layout);
  LayoutRef(const LayoutRef& other) : LayoutRef(other.layout_) {}
  LayoutRef(LayoutRef&& other) noexcept : layout_(std::exchange(other.layout_, nullptr)) {}
  LayoutRef& operator=(LayoutRef other) noexcept {
    std::swap(layout_, other.layout_);
    return *this;
  }
  ~LayoutRef();

  /// Makes an owner from what `Detach` returned.
  static LayoutRef Attach(const FieldLayout* layout);
  /// Returns the layout without releasing it, and leaves this object empty.
  const FieldLayout* Detach() { return std::exchange(layout_, nullptr); }

  const FieldLayout* Get() const { return layout_; }
  const FieldLayout* operator->() const { return layout_; }
  explicit operator bool() const { return layout_ != nullptr; }

 private:
  const FieldLayout* layout_ = nullptr;
};

/// The type name and the names and documentation of the fields of one shape; they never change.
class FieldLayout {
 public:
  static constexpr std::size_t kMaxFields = 64;
  static constexpr std::size_t kMaxNameSize = 255;
  static constexpr std::size_t kMaxLayouts = 4096;
  static constexpr std::size_t kMaxTransitions = 8;
  static constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

  /// The result of adding a field: the layout that has the field, and the field's position there.
  /// `layout` is empty when the field would exceed a bound.
  struct Step {
    LayoutRef layout;
    std::size_t position = 0;
  };

  /// A step that a structure has taken. It exists as long as the layout to which it leads.
  struct Transition {
    FieldName name;
    const FieldText* text;
    FieldLayout* next;
    std::size_t position;
  };

  /// Returns the layout of this type that has no fields. The LayoutRef is never empty.
  static LayoutRef Root(std::string_view typeName);

  /// Fast path of `Root` for building many structures of one type: returns the layout if it is the
  /// last one that `Root` found in the table or added to it; empty means unknown.
  static LayoutRef NewestRoot(std::string_view typeName);

  /// Returns the layout with one more field. This layout must not have a field of that name.
  Step With(const FieldName& name, std::string_view documentation) const;

  /// Fast path of `With` for building many structures of one shape: returns the step if a structure
  /// has taken it before; null means unknown. If there is such a step, this layout has no field of
  /// that name.
  const Transition* KnownStep(const FieldName& name, std::string_view documentation) const;

  /// Returns the layout in which the field at `position` has this documentation; empty if there
  /// would be too many layouts.
  LayoutRef WithDocumentation(std::size_t position, std::string_view documentation) const;

  /// Returns the layout without the field at `position`; empty if there would be too many layouts.
  LayoutRef Without(std::size_t position) const;

  /// Returns the layout of the same type without fields.
  LayoutRef GetRoot() const { return LayoutRef(root_ ? root_.Get() : this); }

  /// The type name. The reference is valid as long as a layout with the same root exists.
  const std::string& TypeName() const { return root_ ? root_->typeName_ : typeName_; }

  std::size_t Count() const { return texts_.size(); }

  /// Returns the position of the field, or kNotFound.
  std::size_t Find(const FieldName& name) const;
  std::size_t Find(std::string_view name) const { return Find(FieldName(name)); }

  const FieldText& At(std::size_t position) const { return *texts_[position]; }

  /// The names and documentation of all `Count()` fields, in byte order of the names.
  const std::shared_ptr<const FieldText>* Texts() const { return texts_.data(); }

  /// Whether both have fields with the same names; type names and documentation do not matter.
  bool HasSameNames(const FieldLayout& other) const;

  FieldLayout(const FieldLayout&) = delete;
  FieldLayout& operator=(const FieldLayout&) = delete;

 private:
  friend class LayoutRef;
  friend struct LayoutTable;

  using FieldTexts = std::vector<std::shared_ptr<const FieldText>>;

  explicit FieldLayout(std::string_view typeName);
  FieldLayout(const LayoutRef& root, FieldTexts&& texts);
  ~FieldLayout();

  std::size_t FindLong(std::string_view name) const;
  const Transition* FindTransition(const FieldName& name, std::string_view documentation) const;
  void AddTransition(FieldLayout* next, std::size_t position) const;
  void RemoveTransition(const FieldLayout* next) const;
  LayoutRef Sibling(FieldTexts&& texts) const;

  void Share() const;
  void Release() const;
  void ReleaseShared() const;

  mutable std::atomic<std::size_t> owners_{0};
  const LayoutRef root_;        // empty in a root
  const std::string typeName_;  // empty except in a root
  const FieldTexts texts_;
  std::vector<FieldName> names_;  // refer to texts_
  std::size_t hash_;
  bool isShared_ = false;
  mutable std::vector<Transition> transitions_;
  std::vector<LayoutRef> origins_;
};

inline void FieldLayout::Share() const {
  if (__libc_single_threaded) {
    owners_.store(owners_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    return;
  }
  owners_.fetch_add(1, std::memory_order_relaxed);
}

inline void FieldLayout::Release() const {
  const std::size_t owners = owners_.load(std::memory_order_relaxed);
  if (!__libc_single_threaded || owners == 1) {
    return ReleaseShared();
  }
  owners_.store(owners - 1, std::memory_order_relaxed);
}

inline LayoutRef::LayoutRef(const FieldLayout* layout) : layout_(layout) {
  if (layout_ != nullptr) {
    layout_->Share();
  }
}

inline LayoutRef::~LayoutRef() {
  if (layout_ != nullptr) {
    layout_->Release();
  }
}

inline LayoutRef LayoutRef::Attach(const FieldLayout* layout) {
  LayoutRef ref;
  ref.layout_ = layout;
  return ref;
}

inline const FieldLayout::Transition* FieldLayout::FindTransition(
    const FieldName& name, std::string_view documentation) const {
  for (const Transition& each : transitions_) {
    if (each.name == name && each.text->documentation == documentation) {
      return &each;
    }
  }
  return nullptr;
}

// In a multi-threaded process the next layout may be about to be destroyed, so `With` has to look
// it up under the lock.
inline const FieldLayout::Transition* FieldLayout::KnownStep(const FieldName& name,
                                                             std::string_view documentation) const {
  return __libc_single_threaded ? FindTransition(name, documentation) : nullptr;
}

inline std::size_t FieldLayout::Find(const FieldName& name) const {
  if (!name.IsShort()) {
    return FindLong(name.Text());
  }
  for (const FieldName& each : names_) {
    if (each.HasSameNumbers(name)) {
      return static_cast<std::size_t>(&each - names_.data());
    }
  }
  return kNotFound;
}

}  // namespace Kestrel::MetaObj
