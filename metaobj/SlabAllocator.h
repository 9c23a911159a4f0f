// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

// Values are small, of few sizes and very many, so they come from slabs: a block of one size is
// cut from a large chunk and, once freed, kept for the next value of its size. Each thread keeps
// its own lists and takes no lock; a block may be freed by another thread than the one that made
// it, it then serves that thread. Slabs are never given back, not even at exit, because values may
// outlive every static object. The address sanitizer sees plain blocks of its own instead.
namespace Kestrel::MetaObj {

class Slab {
 public:
  /// The largest block that comes from a slab; larger ones are the caller's to allocate.
  static constexpr std::size_t kLargestBlock = 256;

  /// Every block starts at a multiple of this.
  static constexpr std::size_t kGranule = 8;

  /// A block of at least `size` bytes, 1 to `kLargestBlock`.
  static void* Allocate(std::size_t size);

  /// Takes back a block that `Allocate` gave for the same size.
  static void Free(void* block, std::size_t size) noexcept;
};

/// A standard allocator over the slabs, made for `std::allocate_shared`.
template <typename T>
class SlabAllocator {
 public:
  using value_type = T;

  SlabAllocator() noexcept = default;
  template <typename U>
  SlabAllocator(const SlabAllocator<U>&) noexcept {}  // NOLINT: rebinding converts

  T* allocate(std::size_t count) {
    if (kFits && count == 1) {
      return static_cast<T*>(Slab::Allocate(sizeof(T)));
    }
    return std::allocator<T>().allocate(count);
  }

  void deallocate(T* block, std::size_t count) noexcept {
    if (kFits && count == 1) {
      return Slab::Free(block, sizeof(T));
    }
    std::allocator<T>().deallocate(block, count);
  }

  /// A value was made as what it is, so its destructor needs no look at its class.
  template <typename U>
  void destroy(U* value) noexcept {
    value->U::~U();
  }

 private:
  static constexpr bool kFits = sizeof(T) <= Slab::kLargestBlock && alignof(T) <= Slab::kGranule;
};

template <typename T, typename U>
bool operator==(const SlabAllocator<T>&, const SlabAllocator<U>&) noexcept {
  return true;
}

template <typename T, typename U>
bool operator!=(const SlabAllocator<T>&, const SlabAllocator<U>&) noexcept {
  return false;
}

/// Makes a value of class T and its shared owner in one block of a slab.
template <typename T, typename... Arguments>
std::shared_ptr<T> MakeInSlab(Arguments&&... arguments) {
  return std::allocate_shared<T>(SlabAllocator<T>(), std::forward<Arguments>(arguments)...);
}

}  // namespace Kestrel::MetaObj
