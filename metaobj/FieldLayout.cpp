#include "metaobj/FieldLayout.h"

#include <sys/single_threaded.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <mutex>
#include <unordered_map>

namespace Kestrel::MetaObj {

/// The layouts that are shared by shape, found by their content.
struct LayoutTable {
  std::unordered_multimap<std::size_t, FieldLayout*> shared;
  const FieldLayout* newestRoot = nullptr;
  std::recursive_mutex mutex;

  /// Never destroyed, because records may outlive every static object.
  static LayoutTable& Get() {
    static LayoutTable& table = *new LayoutTable;
    return table;
  }

  FieldLayout* Find(std::size_t hash, const FieldLayout* root, const FieldLayout::Texts_& texts);
  FieldLayout* FindRoot(std::size_t hash, const std::string& typeName);
  LayoutRef Enter(FieldLayout* layout);
  void Remove(const FieldLayout* layout);
};

namespace {

// Guards the table and the ways between layouts, once there is anybody to guard against.
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

// Independent of the order in which fields were added, as it is summed up.
std::size_t HashOf(const FieldText& text) {
  constexpr std::size_t kOddFactor = 0x9e3779b97f4a7c15;
  return (HashOf(text.name) + 1) * kOddFactor + HashOf(text.documentation);
}

bool IsSame(const FieldText& left, const FieldText& right) {
  return left.name == right.name && left.documentation == right.documentation;
}

}  // namespace

FieldLayout* LayoutTable::Find(std::size_t hash, const FieldLayout* root,
                               const FieldLayout::Texts_& texts) {
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

FieldLayout* LayoutTable::FindRoot(std::size_t hash, const std::string& typeName) {
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

LayoutRef FieldLayout::Root(const std::string& typeName) {
  const TableLock lock;
  LayoutTable& table = LayoutTable::Get();
  if (table.newestRoot != nullptr && table.newestRoot->typeName_ == typeName) {
    return LayoutRef(table.newestRoot);
  }
  if (FieldLayout* const known = table.FindRoot(HashOf(typeName), typeName)) {
    table.newestRoot = known;
    return LayoutRef(known);
  }
  FieldLayout* const fresh = new FieldLayout(typeName);
  if (table.shared.size() >= kMostLayouts) {
    return LayoutRef(fresh);
  }
  LayoutRef entered = table.Enter(fresh);
  table.newestRoot = fresh;
  return entered;
}

FieldLayout::Step FieldLayout::With(std::string_view name, std::string_view documentation) const {
  const TableLock lock;
  if (const Transition* const known = FindTransition(name, documentation)) {
    return {LayoutRef(known->next), known->position};
  }
  if (Count() >= kMostFields || name.size() > kLongestName) {
    return {};
  }
  const auto place = std::lower_bound(
      texts_.begin(), texts_.end(), name,
      [](const auto& text, std::string_view sought) { return text->name < sought; });
  const std::size_t position = static_cast<std::size_t>(place - texts_.begin());
  Texts_ texts;
  texts.reserve(Count() + 1);
  texts.assign(texts_.begin(), place);
  texts.push_back(
      std::make_shared<FieldText>(FieldText{std::string(name), std::string(documentation)}));
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
  Texts_ texts = texts_;
  texts[position] =
      std::make_shared<FieldText>(FieldText{At(position).name, std::string(documentation)});
  return Sibling(std::move(texts));
}

LayoutRef FieldLayout::Without(std::size_t position) const {
  if (Count() == 1) {
    return GetRoot();
  }
  Texts_ texts = texts_;
  texts.erase(texts.begin() + static_cast<std::ptrdiff_t>(position));
  return Sibling(std::move(texts));
}

std::size_t FieldLayout::Find(std::string_view name) const {
  const std::uint32_t signature = Signature(name);
  for (std::size_t position = 0; position < signatures_.size(); ++position) {
    if (signatures_[position] == signature && texts_[position]->name == name) {
      return position;
    }
  }
  return kNotFound;
}

bool FieldLayout::HasSameNames(const FieldLayout& other) const {
  return this == &other || (signatures_ == other.signatures_ &&
                            std::equal(texts_.begin(), texts_.end(), other.texts_.begin(),
                                       other.texts_.end(), [](const auto& left, const auto& right) {
                                         return left->name == right->name;
                                       }));
}

std::size_t FieldLayout::CountShared() {
  const TableLock lock;
  return LayoutTable::Get().shared.size();
}

FieldLayout::FieldLayout(const std::string& typeName)
    : typeName_(typeName), hash_(HashOf(typeName)) {}

FieldLayout::FieldLayout(const LayoutRef& root, Texts_&& texts)
    : root_(root), texts_(std::move(texts)), hash_(root->hash_) {
  signatures_.reserve(texts_.size());
  for (const std::shared_ptr<const FieldText>& text : texts_) {
    signatures_.push_back(Signature(text->name));
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

// The length and three bytes of a name tell nearly all names of one record apart.
std::uint32_t FieldLayout::Signature(std::string_view name) {
  if (name.empty()) {
    return 0;
  }
  const auto byte = [name](std::size_t index) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(name[index]));
  };
  return static_cast<std::uint32_t>(name.size()) << 24 | byte(0) << 16 |
         byte(name.size() / 2) << 8 | byte(name.size() - 1);
}

const FieldLayout::Transition* FieldLayout::FindTransition(std::string_view name,
                                                           std::string_view documentation) const {
  const std::uint32_t signature = Signature(name);
  for (const Transition& each : transitions_) {
    if (each.signature == signature) {
      const FieldText& added = each.next->At(each.position);
      if (added.name == name && added.documentation == documentation) {
        return &each;
      }
    }
  }
  return nullptr;
}

void FieldLayout::AddTransition(FieldLayout* next, std::size_t position) const {
  if (transitions_.size() >= kMostTransitions || next->origins_.size() >= kMostTransitions) {
    return;
  }
  next->origins_.reserve(next->origins_.size() + 1);
  transitions_.push_back({next->signatures_[position], static_cast<std::uint32_t>(position), next});
  next->origins_.emplace_back(this);
}

void FieldLayout::RemoveTransition(const FieldLayout* next) const {
  transitions_.erase(std::remove_if(transitions_.begin(), transitions_.end(),
                                    [next](const Transition& each) { return each.next == next; }),
                     transitions_.end());
}

// The layout of the same type with these fields: the one that stands already, or a new one.
LayoutRef FieldLayout::Sibling(Texts_&& texts) const {
  const TableLock lock;
  LayoutTable& table = LayoutTable::Get();
  const LayoutRef root = GetRoot();
  std::unique_ptr<FieldLayout, void (*)(FieldLayout*)> fresh(
      new FieldLayout(root, std::move(texts)), [](FieldLayout* layout) { delete layout; });
  if (FieldLayout* const known = table.Find(fresh->hash_, root.Get(), fresh->texts_)) {
    return LayoutRef(known);
  }
  if (!root->isShared_ || table.shared.size() >= kMostLayouts) {
    return LayoutRef();
  }
  return table.Enter(fresh.release());
}

void FieldLayout::Share() const {
  if (__libc_single_threaded) {
    owners_.store(owners_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    return;
  }
  owners_.fetch_add(1, std::memory_order_relaxed);
}

void FieldLayout::Release() const {
  if (ReleaseOneOfMany()) {
    return;
  }
  // The last owner goes under the lock, where nobody can find the layout meanwhile.
  const TableLock lock;
  if (owners_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    delete this;
  }
}

bool FieldLayout::ReleaseOneOfMany() const {
  std::size_t owners = owners_.load(std::memory_order_relaxed);
  if (__libc_single_threaded) {
    owners_.store(owners - (owners > 1 ? 1 : 0), std::memory_order_relaxed);
    return owners > 1;
  }
  while (owners > 1) {
    if (owners_.compare_exchange_weak(owners, owners - 1, std::memory_order_acq_rel)) {
      return true;
    }
  }
  return false;
}

}  // namespace Kestrel::MetaObj
