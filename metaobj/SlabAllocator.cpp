// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "metaobj/SlabAllocator.h"

#include <sys/mman.h>
#include <sys/single_threaded.h>

#include <cerrno>
#include <cstdint>
#include <mutex>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KESTREL_ADDRESS_SANITIZER 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define KESTREL_ADDRESS_SANITIZER 1
#endif

#if defined(KESTREL_POISONED_SLABS)
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>
#elif defined(KESTREL_ADDRESS_SANITIZER)
#define KESTREL_PLAIN_BLOCKS 1
#endif

namespace Kestrel::MetaObj {

namespace {

constexpr std::size_t SizeOf(std::size_t sizeClass) { return (sizeClass + 1) * Slab::kGranule; }

}  // namespace

#ifdef KESTREL_PLAIN_BLOCKS

void* Slab::AllocateClass(std::size_t sizeClass) { return ::operator new(SizeOf(sizeClass)); }

void Slab::FreeClass(void* block, std::size_t) noexcept { ::operator delete(block); }

#else

namespace {

constexpr std::size_t kMinChunk = 16 * 1024;
constexpr std::size_t kMaxChunk = 256 * 1024;
constexpr std::size_t kPage = 4096;
constexpr std::size_t kClasses = Slab::kMaxBlock / Slab::kGranule;

// After this many frees, a thread that is not the only one passes its free blocks to the pool.
constexpr int kMaxFrees = 1024;

struct FreeBlock {
  FreeBlock* next;
};

// With KESTREL_POISONED_SLABS, the sanitizer reports any use of free memory, except in functions
// marked `no_sanitize_address`.
#ifdef KESTREL_POISONED_SLABS
void Poison(const void* memory, std::size_t size) { ASAN_POISON_MEMORY_REGION(memory, size); }
void Unpoison(const void* memory, std::size_t size) { ASAN_UNPOISON_MEMORY_REGION(memory, size); }
void RequireInUse(void* block) { *static_cast<volatile char*>(block) = 0; }
void PoisonChunk(const void* memory, std::size_t size) {
  Poison(memory, size);
  __lsan_ignore_object(memory);
}
#else
void Poison(const void*, std::size_t) {}
void Unpoison(const void*, std::size_t) {}
void PoisonChunk(const void*, std::size_t) {}
void RequireInUse(void*) {}
#endif

// The memory of a thread. It has neither constructor nor destructor, so it works during the whole
// lifetime of the thread, even in destructors of other thread-local objects.
struct ThreadBlocks {
  FreeBlock* freed[kClasses];  // by class
  char* next;                  // what is left of the newest chunk
  char* end;
  std::size_t chunkSize;
  int freesLeft;  // until the free blocks go to the pool; 0 before the first free
  bool isEnding;
};

thread_local ThreadBlocks blocks __attribute__((tls_model("initial-exec")));

// The memory that threads have passed on, for any thread that needs some. It is initialised at
// compile time and never destroyed, so it works for all static objects.
class Pool {
 public:
  // Takes the lists of the calling thread.
  [[gnu::no_sanitize_address]] void PutLists(ThreadBlocks& owner) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (std::size_t sizeClass = 0; sizeClass < kClasses; ++sizeClass) {
      if (FreeBlock* const first = std::exchange(owner.freed[sizeClass], nullptr)) {
        lists_[sizeClass] = new (first) List{first->next, lists_[sizeClass]};
      }
    }
  }

  // Takes the rest of the calling thread's chunk. A rest that is too small for the largest block is
  // lost.
  [[gnu::no_sanitize_address]] void PutRest(ThreadBlocks& owner) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (static_cast<std::size_t>(owner.end - owner.next) >= Slab::kMaxBlock) {
      rests_ = new (owner.next) Rest{rests_, owner.end};
    }
    owner.next = owner.end = nullptr;
  }

  // Returns a list of blocks of that class, null when there is none.
  [[gnu::no_sanitize_address]] FreeBlock* GetList(std::size_t sizeClass) {
    const std::lock_guard<std::mutex> lock(mutex_);
    List* const list = lists_[sizeClass];
    if (list == nullptr) {
      return nullptr;
    }
    lists_[sizeClass] = list->nextList;
    return new (list) FreeBlock{list->next};
  }

  // Assigns the rest of a chunk to the calling thread; any block fits into it. Returns false when
  // there is none.
  [[gnu::no_sanitize_address]] bool GetRest(ThreadBlocks& owner) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (rests_ == nullptr) {
      return false;
    }
    owner.next = reinterpret_cast<char*>(rests_);
    owner.end = rests_->end;
    rests_ = rests_->nextRest;
    return true;
  }

 private:
  // A list is described in its first block, and the rest of a chunk in its first bytes.
  struct List {
    FreeBlock* next;
    List* nextList;
  };
  struct Rest {
    Rest* nextRest;
    char* end;
  };

  std::mutex mutex_;
  List* lists_[kClasses] = {};
  Rest* rests_ = nullptr;
};

Pool pool;

void PoolEverything() {
  pool.PutLists(blocks);
  pool.PutRest(blocks);
}

// Passes all memory of a thread to the pool when the thread ends. Destructors that run later may
// still free and allocate; the thread then keeps nothing for itself.
struct ThreadEnd {
  ~ThreadEnd() {
    blocks.isEnding = true;
    blocks.freesLeft = 0;
    PoolEverything();
  }
};

// The only thread of a process needs no pool.
void PoolEverythingAtThreadEnd() {
  if (!__libc_single_threaded) {
    thread_local const ThreadEnd end;
    static_cast<void>(end);
  }
}

// Requests the pages of a chunk from the system with one call: the chunk will soon be full, and a
// page fault for each page takes longer than filling the page with values. Where the system call
// does not exist, pages are mapped one by one.
void Populate([[maybe_unused]] char* chunk, [[maybe_unused]] std::size_t size) {
#ifdef MADV_POPULATE_WRITE
  const int errorBefore = errno;
  char* const firstPage = chunk + kPage - reinterpret_cast<std::uintptr_t>(chunk) % kPage;
  madvise(firstPage, size - kPage, MADV_POPULATE_WRITE);
  errno = errorBefore;
#endif
}

// Each chunk is twice as large as the one before, up to a limit. Only chunks of the largest size
// are populated, so that a program with few values uses little memory.
void StartChunk() {
  const std::size_t size = std::clamp(blocks.chunkSize * 2, kMinChunk, kMaxChunk);
  blocks.next = static_cast<char*>(::operator new(size));
  blocks.end = blocks.next + size;
  blocks.chunkSize = size;
  if (size == kMaxChunk) {
    Populate(blocks.next, size);
  }
  PoisonChunk(blocks.next, size);
}

void* Cut(std::size_t size) {
  void* const block = blocks.next;
  blocks.next += size;
  Unpoison(block, size);
  return block;
}

[[gnu::no_sanitize_address]] void* TakeFromPool(std::size_t sizeClass) {
  FreeBlock* const list = pool.GetList(sizeClass);
  if (list != nullptr) {
    blocks.freed[sizeClass] = list->next;
    Unpoison(list, SizeOf(sizeClass));
  }
  return list;
}

// Called when the thread has no free block of that class and its chunk is used up.
[[gnu::noinline]] void* AllocateElsewhere(std::size_t sizeClass) {
  PoolEverythingAtThreadEnd();
  void* block = TakeFromPool(sizeClass);
  if (block == nullptr) {
    if (!pool.GetRest(blocks)) {
      StartChunk();
    }
    block = Cut(SizeOf(sizeClass));
  }
  if (blocks.isEnding) {
    PoolEverything();
  }
  return block;
}

[[gnu::noinline]] void PoolLists() noexcept {
  blocks.freesLeft = blocks.isEnding ? 0 : kMaxFrees;
  if (!__libc_single_threaded) {
    PoolEverythingAtThreadEnd();
    pool.PutLists(blocks);
  }
}

}  // namespace

[[gnu::no_sanitize_address]] void* Slab::AllocateClass(std::size_t sizeClass) {
  if (FreeBlock* const block = blocks.freed[sizeClass]) {
    blocks.freed[sizeClass] = block->next;
    Unpoison(block, SizeOf(sizeClass));
    return block;
  }
  const std::size_t size = SizeOf(sizeClass);
  return static_cast<std::size_t>(blocks.end - blocks.next) < size ? AllocateElsewhere(sizeClass)
                                                                   : Cut(size);
}

[[gnu::no_sanitize_address]] void Slab::FreeClass(void* block, std::size_t sizeClass) noexcept {
  RequireInUse(block);
  FreeBlock*& first = blocks.freed[sizeClass];
  first = new (block) FreeBlock{first};
  Poison(block, SizeOf(sizeClass));
  if (--blocks.freesLeft < 0) {
    PoolLists();
  }
}

#endif

}  // namespace Kestrel::MetaObj
