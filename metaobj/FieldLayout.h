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

// A layout is what records of one shape have in common: the type name, the names of the fields in
// byte order and their documentation texts. A record keeps its values in slots, in the order of
// its layout's fields. There is one layout per shape; a record that gains a field finds its next
// layout by a transition from the one that it has, without looking at the other fields.
//
// A layout lives as long as a record or another layout uses it: each layout owns those that lead
// to it, the way forward is kept by plain pointers that a dying layout takes back. The number of
// layouts is bounded, so are the fields of one, the length of a name and the transitions of one
// layout: a record beyond a bound keeps its fields in an index of its own.
//
// While the process has one thread, counting and looking up is free of locked operations.
namespace Kestrel::MetaObj {

class FieldLayout;

/// The name and the documentation text of a field, shared by the layouts that have the field.
struct FieldText {
  std::string name;
  std::string documentation;
};

/// A counted owner of a layout, or of none.
class LayoutRef {
 public:
  LayoutRef() = default;
  /// Owns `layout` beside its present owners.
  explicit LayoutRef(const FieldLayout* layout);
  LayoutRef(const LayoutRef& other) : LayoutRef(other.layout_) {}
  LayoutRef(LayoutRef&& other) noexcept : layout_(std::exchange(other.layout_, nullptr)) {}
  LayoutRef& operator=(LayoutRef other) noexcept {
    std::swap(layout_, other.layout_);
    return *this;
  }
  ~LayoutRef();

  /// An owner from what `Detach` gave away.
  static LayoutRef Attach(const FieldLayout* layout);
  /// Gives the ownership away.
  const FieldLayout* Detach() { return std::exchange(layout_, nullptr); }

  const FieldLayout* Get() const { return layout_; }
  const FieldLayout* operator->() const { return layout_; }
  explicit operator bool() const { return layout_ != nullptr; }

 private:
  const FieldLayout* layout_ = nullptr;
};

class FieldLayout {
 public:
  static constexpr std::size_t kMaxFields = 64;
  static constexpr std::size_t kMaxNameSize = 255;
  static constexpr std::size_t kMaxLayouts = 4096;
  static constexpr std::size_t kMaxTransitions = 8;
  static constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

  /// Where a new field leads: the layout that has it, and its place there. No layout when the
  /// field would pass a bound.
  struct Step {
    LayoutRef layout;
    std::size_t position = 0;
  };

  /// A step that a record has taken, as long as its layout lives.
  struct Transition {
    FieldName name;
    const FieldText* text;
    FieldLayout* next;
    std::size_t position;
  };

  /// The layout of a record of this type without fields; always there.
  static LayoutRef Root(std::string_view typeName);

  /// The same, but none when it is not the newest one: a quick look for records in a row.
  static LayoutRef NewestRoot(std::string_view typeName);

  /// The layout with one more field; this layout has none of that name.
  Step With(const FieldName& name, std::string_view documentation) const;

  /// The same for a step that a record has taken before, else null: a quick look for records that
  /// are built alike. Where there is such a step, there is no field of that name yet.
  const Transition* KnownStep(const FieldName& name, std::string_view documentation) const;

  /// The layout with another documentation text for one field, or none.
  LayoutRef WithDocumentation(std::size_t position, std::string_view documentation) const;

  /// The layout without one of the fields, or none.
  LayoutRef Without(std::size_t position) const;

  /// The layout without fields from which this one descends.
  LayoutRef GetRoot() const { return LayoutRef(root_ ? root_.Get() : this); }

  /// One text for all layouts of a type: it lives as long as any of them.
  const std::string& TypeName() const { return root_ ? root_->typeName_ : typeName_; }

  std::size_t Count() const { return texts_.size(); }

  /// The place of the field of that name, or kNotFound.
  std::size_t Find(const FieldName& name) const;
  std::size_t Find(std::string_view name) const { return Find(FieldName(name)); }

  const FieldText& At(std::size_t position) const { return *texts_[position]; }

  /// The fields' texts, `Count()` of them in the byte order of the names.
  const std::shared_ptr<const FieldText>* Texts() const { return texts_.data(); }

  /// Whether both have fields of the same names, whatever their types and documentation.
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
  void ReleaseAmongThreads() const;

  mutable std::atomic<std::size_t> owners_{0};
  const LayoutRef root_;        // none in a root
  const std::string typeName_;  // of a root only
  const FieldTexts texts_;
  std::vector<FieldName> names_;  // of the texts
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
    return ReleaseAmongThreads();
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

// Among threads a layout may be about to die: With looks again, under the lock.
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
