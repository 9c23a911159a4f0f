// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

// Memory for values, which are small, of few sizes and very many. A block is cut from a large
// chunk. A freed block goes to a list of its size and is reused for the next value of that size.
//
// Each thread has lists and a chunk of its own, so allocating and freeing seldom take a lock. A
// block that a thread frees belongs to this thread from then on, even if another thread allocated
// it. So that memory does not accumulate in a thread that only frees, a thread passes its lists to
// a shared pool from time to time, and all its memory when it ends. Only the pool has a lock. A
// thread that has used up its chunk takes memory from the pool before it starts another chunk.
//
// Memory is never returned to the system, not even at exit: values may outlive every static object.
// Under the address sanitizer, or with KESTREL_PLAIN_BLOCKS, each block is a separate allocation,
// so that the sanitizer or another checker detects uses of freed blocks. With
// KESTREL_POISONED_SLABS, blocks are cut from chunks all the same, and free blocks are poisoned, so
// that the sanitizer checks this code, too.
namespace Kestrel::MetaObj {

/// Allocates blocks of up to 256 bytes.
class Slab {
 public:
  /// The size of the largest block, in bytes.
  static constexpr std::size_t kMaxBlock = 256;

  /// The alignment of every block, in bytes.
  static constexpr std::size_t kGranule = 8;

  /// Returns a block of at least `size` bytes. `size` must be from 1 to `kMaxBlock`.
  /// Throws `std::bad_alloc` when memory runs out.
  static void* Allocate(std::size_t size) { return AllocateClass(ClassOf(size)); }

  /// Takes back a block that `Allocate` returned for the same size, in any thread.
  static void Free(void* block, std::size_t size) noexcept { FreeClass(block, ClassOf(size)); }

 private:
  // A block in the pool holds two pointers.
  static constexpr std::size_t kMinBlock = 2 * sizeof(void*);

  // The blocks of one class have one size.
  static constexpr std::size_t ClassOf(std::size_t size) {
    return (std::max(size, kMinBlock) - 1) / kGranule;
  }

  static void* AllocateClass(std::size_t sizeClass);
  static void FreeClass(void* block, std::size_t sizeClass) noexcept;
};

/// A standard allocator that uses the slabs, or `std::allocator` for what does not fit into a
/// block.
template <typename T>
class SlabAllocator {
 public:
  using value_type = T;

  SlabAllocator() noexcept = default;
  template <typename U>
  SlabAllocator(const SlabAllocator<U>&) noexcept {}  // NOLINT: rebinding converts

  T* allocate(std::size_t count) {
    if (IsInSlab(count)) {
      return static_cast<T*>(Slab::Allocate(count * sizeof(T)));
    }
    return std::allocator<T>().allocate(count);
  }

  void deallocate(T* block, std::size_t count) noexcept {
    if (IsInSlab(count)) {
      return Slab::Free(block, count * sizeof(T));
    }
    std::allocator<T>().deallocate(block, count);
  }

  /// Destroys `value`, whose class is exactly `U`, without a virtual call.
  template <typename U>
  void destroy(U* value) noexcept {
    value->U::~U();
  }

 private:
  static constexpr bool IsInSlab(std::size_t count) {
    return alignof(T) <= Slab::kGranule && count > 0 && count <= Slab::kMaxBlock / sizeof(T);
  }
};

template <typename T, typename U>
bool operator==(const SlabAllocator<T>&, const SlabAllocator<U>&) noexcept {
  return true;
}

template <typename T, typename U>
bool operator!=(const SlabAllocator<T>&, const SlabAllocator<U>&) noexcept {
  return false;
}

/// Makes an object of class T and the counts of its shared owners in one block.
template <typename T, typename... Arguments>
std::shared_ptr<T> MakeInSlab(Arguments&&... arguments) {
  return std::allocate_shared<T>(SlabAllocator<T>(), std::forward<Arguments>(arguments)...);
}

}  // namespace Kestrel::MetaObj
