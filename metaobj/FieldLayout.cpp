// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "metaobj/FieldLayout.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <mutex>
#include <unordered_map>

namespace Kestrel::MetaObj {

/// The shared layouts, by the hash of their contents.
struct LayoutTable {
  std::unordered_multimap<std::size_t, FieldLayout*> shared;
  const FieldLayout* newestRoot = nullptr;
  std::recursive_mutex mutex;

  /// Never destroyed, because structures may outlive every static object.
  static LayoutTable& Get() {
    static LayoutTable& table = *new LayoutTable;
    return table;
  }

  FieldLayout* Find(std::size_t hash, const FieldLayout* root,
                    const FieldLayout::FieldTexts& texts);
  FieldLayout* FindRoot(std::size_t hash, std::string_view typeName);
  LayoutRef Enter(FieldLayout* layout);
  void Remove(const FieldLayout* layout);
};

namespace {

// Guards the table and the transitions. Locks only in multi-threaded processes.
class TableLock {
 public:
  TableLock() : isNeeded_(!__libc_single_threaded) {
    if (isNeeded_) {
      LayoutTable::Get().mutex.lock();
    }
  }
  ~TableLock() {
    if (isNeeded_) {
      LayoutTable::Get().mutex.unlock();
    }
  }
  TableLock(const TableLock&) = delete;
  TableLock& operator=(const TableLock&) = delete;

 private:
  const bool isNeeded_;
};

std::size_t HashOf(std::string_view text) { return std::hash<std::string_view>()(text); }

// The hash of a layout is the sum of the hashes of its type name and of its fields, so the order of
// the fields does not matter.
std::size_t HashOf(const FieldText& text) {
  constexpr std::size_t kOddFactor = 0x9e3779b97f4a7c15;
  return (HashOf(text.name) + 1) * kOddFactor + HashOf(text.documentation);
}

bool IsSame(const FieldText& left, const FieldText& right) {
  return left.name == right.name && left.documentation == right.documentation;
}

}  // namespace

FieldLayout* LayoutTable::Find(std::size_t hash, const FieldLayout* root,
                               const FieldLayout::FieldTexts& texts) {
  const auto [first, last] = shared.equal_range(hash);
  for (auto each = first; each != last; ++each) {
    FieldLayout* const layout = each->second;
    if (layout->root_.Get() == root &&
        std::equal(texts.begin(), texts.end(), layout->texts_.begin(), layout->texts_.end(),
                   [](const auto& left, const auto& right) { return IsSame(*left, *right); })) {
      return layout;
    }
  }
  return nullptr;
}

FieldLayout* LayoutTable::FindRoot(std::size_t hash, std::string_view typeName) {
  const auto [first, last] = shared.equal_range(hash);
  for (auto each = first; each != last; ++each) {
    if (!each->second->root_ && each->second->typeName_ == typeName) {
      return each->second;
    }
  }
  return nullptr;
}

LayoutRef LayoutTable::Enter(FieldLayout* layout) {
  LayoutRef owner(layout);
  shared.emplace(layout->hash_, layout);
  layout->isShared_ = true;
  return owner;
}

void LayoutTable::Remove(const FieldLayout* layout) {
  if (newestRoot == layout) {
    newestRoot = nullptr;
  }
  const auto [first, last] = shared.equal_range(layout->hash_);
  shared.erase(
      std::find_if(first, last, [layout](const auto& each) { return each.second == layout; }));
}

LayoutRef FieldLayout::Root(std::string_view typeName) {
  const TableLock lock;
  LayoutTable& table = LayoutTable::Get();
  if (FieldLayout* const known = table.FindRoot(HashOf(typeName), typeName)) {
    table.newestRoot = known;
    return LayoutRef(known);
  }
  FieldLayout* const fresh = new FieldLayout(typeName);
  if (table.shared.size() >= kMaxLayouts) {
    return LayoutRef(fresh);
  }
  LayoutRef entered = table.Enter(fresh);
  table.newestRoot = fresh;
  return entered;
}

LayoutRef FieldLayout::NewestRoot(std::string_view typeName) {
  const TableLock lock;
  const FieldLayout* const newest = LayoutTable::Get().newestRoot;
  return LayoutRef(newest != nullptr && newest->typeName_ == typeName ? newest : nullptr);
}

FieldLayout::Step FieldLayout::With(const FieldName& name, std::string_view documentation) const {
  const TableLock lock;
  if (const Transition* const known = FindTransition(name, documentation)) {
    return {LayoutRef(known->next), known->position};
  }
  if (Count() >= kMaxFields || name.Text().size() > kMaxNameSize) {
    return {};
  }
  const auto place = std::lower_bound(
      texts_.begin(), texts_.end(), name.Text(),
      [](const auto& text, std::string_view sought) { return text->name < sought; });
  const std::size_t position = static_cast<std::size_t>(place - texts_.begin());
  FieldTexts texts;
  texts.reserve(Count() + 1);
  texts.assign(texts_.begin(), place);
  texts.push_back(
      std::make_shared<FieldText>(FieldText{std::string(name.Text()), std::string(documentation)}));
  texts.insert(texts.end(), place, texts_.end());
  LayoutRef next = Sibling(std::move(texts));
  if (next) {
    AddTransition(const_cast<FieldLayout*>(next.Get()), position);
  }
  return {std::move(next), position};
}

LayoutRef FieldLayout::WithDocumentation(std::size_t position,
                                         std::string_view documentation) const {
  if (At(position).documentation == documentation) {
    return LayoutRef(this);
  }
  FieldTexts texts = texts_;
  texts[position] =
      std::make_shared<FieldText>(FieldText{At(position).name, std::string(documentation)});
  return Sibling(std::move(texts));
}

LayoutRef FieldLayout::Without(std::size_t position) const {
  if (Count() == 1) {
    return GetRoot();
  }
  FieldTexts texts = texts_;
  texts.erase(texts.begin() + static_cast<std::ptrdiff_t>(position));
  return Sibling(std::move(texts));
}

bool FieldLayout::HasSameNames(const FieldLayout& other) const {
  return this == &other || names_ == other.names_;
}

FieldLayout::FieldLayout(std::string_view typeName)
    : typeName_(typeName), hash_(HashOf(typeName)) {}

FieldLayout::FieldLayout(const LayoutRef& root, FieldTexts&& texts)
    : root_(root), texts_(std::move(texts)), hash_(root->hash_) {
  names_.reserve(texts_.size());
  for (const std::shared_ptr<const FieldText>& text : texts_) {
    names_.emplace_back(text->name);
    hash_ += HashOf(*text);
  }
}

FieldLayout::~FieldLayout() {
  if (isShared_) {
    LayoutTable::Get().Remove(this);
  }
  for (const LayoutRef& origin : origins_) {
    origin->RemoveTransition(this);
  }
}

std::size_t FieldLayout::FindLong(std::string_view name) const {
  const auto place = std::find(names_.begin(), names_.end(), FieldName(name));
  return place == names_.end() ? kNotFound : static_cast<std::size_t>(place - names_.begin());
}

void FieldLayout::AddTransition(FieldLayout* next, std::size_t position) const {
  if (transitions_.size() >= kMaxTransitions || next->origins_.size() >= kMaxTransitions) {
    return;
  }
  next->origins_.reserve(next->origins_.size() + 1);
  transitions_.push_back({next->names_[position], &next->At(position), next, position});
  next->origins_.emplace_back(this);
}

void FieldLayout::RemoveTransition(const FieldLayout* next) const {
  transitions_.erase(std::remove_if(transitions_.begin(), transitions_.end(),
                                    [next](const Transition& each) { return each.next == next; }),
                     transitions_.end());
}

// Returns the layout of the same type with these fields, a new one if there is none. Empty when a
// new one is needed and the table is full, or was full when the root was made.
LayoutRef FieldLayout::Sibling(FieldTexts&& texts) const {
  const TableLock lock;
  LayoutTable& table = LayoutTable::Get();
  const LayoutRef root = GetRoot();
  std::unique_ptr<FieldLayout, void (*)(FieldLayout*)> fresh(
      new FieldLayout(root, std::move(texts)), [](FieldLayout* layout) { delete layout; });
  if (FieldLayout* const known = table.Find(fresh->hash_, root.Get(), fresh->texts_)) {
    return LayoutRef(known);
  }
  if (!root->isShared_ || table.shared.size() >= kMaxLayouts) {
    return LayoutRef();
  }
  return table.Enter(fresh.release());
}

// The last owner releases the layout under the lock, so that no other thread can look it up at the
// same time.
void FieldLayout::ReleaseShared() const {
  std::size_t owners = owners_.load(std::memory_order_relaxed);
  while (owners > 1) {
    if (owners_.compare_exchange_weak(owners, owners - 1, std::memory_order_acq_rel)) {
      return;
    }
  }
  const TableLock lock;
  if (owners_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    delete this;
  }
}

}  // namespace Kestrel::MetaObj
