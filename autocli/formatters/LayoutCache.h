// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "metaobj/FieldLayout.h"

namespace Kestrel::AutoCli {

/// Keeps up to `kMaxEntries` values, each for a field layout and a nesting level, so that what
/// depends only on the two is determined once for all structures of that layout at that level.
///
/// The cache owns its layouts. Otherwise, a layout could be destroyed and a new one be created at
/// the same address, for which the cache would return the value of the old one.
template <typename T, std::size_t kMaxEntries>
class LayoutCache {
 public:
  LayoutCache() = default;
  LayoutCache(LayoutCache&&) = default;
  LayoutCache& operator=(LayoutCache&&) = default;

  /// Returns the value for `layout` at the nesting level `level`. If the cache has none, `make()`
  /// makes one, which replaces the oldest value if the cache is full. If `make` throws, the values
  /// in the cache are unchanged. The reference is valid until the next call; use a shared_ptr as
  /// `T` for values that must live longer.
  template <typename Make>
  T& Get(const MetaObj::FieldLayout& layout, long level, const Make& make) {
    if (lastUsed_ == nullptr || !lastUsed_->IsFor(layout, level)) {
      lastUsed_ = Find(layout, level);
      if (lastUsed_ == nullptr) {
        lastUsed_ = Put({MetaObj::LayoutRef(&layout), level, make()});
      }
    }
    return lastUsed_->value;
  }

  /// As above, for values that do not depend on a level.
  template <typename Make>
  T& Get(const MetaObj::FieldLayout& layout, const Make& make) {
    return Get(layout, 0, make);
  }

 private:
  struct Entry {
    bool IsFor(const MetaObj::FieldLayout& otherLayout, long otherLevel) const {
      return layout.Get() == &otherLayout && level == otherLevel;
    }

    MetaObj::LayoutRef layout;
    long level;
    T value;
  };

  Entry* Find(const MetaObj::FieldLayout& layout, long level) {
    for (Entry& entry : entries_) {
      if (entry.IsFor(layout, level)) {
        return &entry;
      }
    }
    return nullptr;
  }

  Entry* Put(Entry entry) {
    if (entries_.size() < kMaxEntries) {
      entries_.push_back(std::move(entry));
      return &entries_.back();
    }
    Entry* const replaced = &entries_[oldest_];
    *replaced = std::move(entry);
    oldest_ = (oldest_ + 1) % kMaxEntries;
    return replaced;
  }

  std::vector<Entry> entries_;
  Entry* lastUsed_ = nullptr;
  std::size_t oldest_ = 0;
};

}  // namespace Kestrel::AutoCli
