// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "metaobj/FieldLayout.h"

namespace Kestrel::AutoCli {

/// Remembers a value for each of up to `kMaxEntries` field layouts, so that what depends only on
/// the layout of a structure is worked out once for all structures that share the layout.
///
/// The cache owns the layouts that it remembers. Without that, a layout could be destroyed and
/// another one be created at its address, and would then be taken for the first.
template <typename T, std::size_t kMaxEntries>
class LayoutCache {
 public:
  LayoutCache() = default;
  LayoutCache(LayoutCache&&) = default;
  LayoutCache& operator=(LayoutCache&&) = default;

  /// Returns the value for `layout` and `level`, a second key for values that differ by nesting
  /// level. The value is made by `make()` if it is not in the cache; in a full cache, it replaces
  /// the oldest one. If `make` throws, the cache is unchanged.
  ///
  /// The reference is valid until the next call. A value that must live longer is held by a
  /// `shared_ptr` as `T`.
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
