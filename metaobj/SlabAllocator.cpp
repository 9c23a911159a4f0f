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
#define KESTREL_PLAIN_BLOCKS 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
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

// A thread that only frees keeps at most so many blocks to itself.
constexpr int kMaxFrees = 1024;

struct FreeBlock {
  FreeBlock* next;
};

// What a thread owns. Nothing to construct or destroy, so it serves all of the thread's life, the
// destructors of other thread-local objects included.
struct ThreadBlocks {
  FreeBlock* freed[kClasses];  // by class
  char* next;                  // what is left of the newest chunk
  char* end;
  std::size_t chunkSize;
  int freesLeft;  // until the lists go to the pool; below 0 before the first time
  bool isEnding;
};

thread_local ThreadBlocks blocks __attribute__((tls_model("initial-exec")));

// The memory that threads have given away, for any thread that needs some. Constant-initialised and
// never destroyed, so it serves static objects at both ends of the process.
class Pool {
 public:
  // Takes the lists of the calling thread.
  void TakeLists(ThreadBlocks& owner) {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (std::size_t sizeClass = 0; sizeClass < kClasses; ++sizeClass) {
      if (FreeBlock* const first = std::exchange(owner.freed[sizeClass], nullptr)) {
        lists_[sizeClass] = new (first) List{first->next, lists_[sizeClass]};
      }
    }
  }

  // Takes the rest of the calling thread's chunk. A rest too small for the largest block is lost.
  void TakeRest(ThreadBlocks& owner) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (static_cast<std::size_t>(owner.end - owner.next) >= Slab::kMaxBlock) {
      rests_ = new (owner.next) Rest{rests_, owner.end};
    }
    owner.next = owner.end = nullptr;
  }

  // Returns a list of blocks of that class, null when there is none.
  FreeBlock* GiveList(std::size_t sizeClass) {
    const std::lock_guard<std::mutex> lock(mutex_);
    List* const list = lists_[sizeClass];
    if (list == nullptr) {
      return nullptr;
    }
    lists_[sizeClass] = list->nextList;
    return new (list) FreeBlock{list->next};
  }

  // Makes the rest of a chunk, room for any block, that of the calling thread. False without one.
  bool GiveRest(ThreadBlocks& owner) {
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
  // Each lies in the memory that it stands for.
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

void GiveAllAway() {
  pool.TakeLists(blocks);
  pool.TakeRest(blocks);
}

// Gives away all that a thread owns when the thread ends. Destructors that run later may free and
// allocate on; from now on the thread keeps nothing to itself.
struct ThreadEnd {
  ~ThreadEnd() {
    blocks.isEnding = true;
    blocks.freesLeft = 0;
    GiveAllAway();
  }
};

// The only thread of a process keeps everything.
void GiveAwayAtThreadEnd() {
  if (!__libc_single_threaded) {
    thread_local const ThreadEnd end;
    static_cast<void>(end);
  }
}

// Asks the system for all pages of a chunk at once, as it will soon be full: a page fault for each
// would cost more than the values in it. A system that does not know the call does it page by page.
void Populate([[maybe_unused]] char* chunk, [[maybe_unused]] std::size_t size) {
#ifdef MADV_POPULATE_WRITE
  const int errorBefore = errno;
  char* const firstPage = chunk + kPage - reinterpret_cast<std::uintptr_t>(chunk) % kPage;
  madvise(firstPage, size - kPage, MADV_POPULATE_WRITE);
  errno = errorBefore;
#endif
}

// Each chunk is twice as large as the one before, up to a limit. Only the largest are populated, so
// that a program with few values pays for what it uses.
void StartChunk() {
  const std::size_t size = std::clamp(blocks.chunkSize * 2, kMinChunk, kMaxChunk);
  blocks.next = static_cast<char*>(::operator new(size));
  blocks.end = blocks.next + size;
  blocks.chunkSize = size;
  if (size == kMaxChunk) {
    Populate(blocks.next, size);
  }
}

void* Cut(std::size_t size) {
  void* const block = blocks.next;
  blocks.next += size;
  return block;
}

void* TakeFromPool(std::size_t sizeClass) {
  FreeBlock* const list = pool.GiveList(sizeClass);
  if (list != nullptr) {
    blocks.freed[sizeClass] = list->next;
  }
  return list;
}

// The thread has no block of that class and too little is left of its chunk.
[[gnu::noinline]] void* AllocateElsewhere(std::size_t sizeClass) {
  GiveAwayAtThreadEnd();
  void* block = TakeFromPool(sizeClass);
  if (block == nullptr) {
    if (!pool.GiveRest(blocks)) {
      StartChunk();
    }
    block = Cut(SizeOf(sizeClass));
  }
  if (blocks.isEnding) {
    GiveAllAway();
  }
  return block;
}

[[gnu::noinline]] void GiveListsAway() noexcept {
  blocks.freesLeft = blocks.isEnding ? 0 : kMaxFrees;
  if (!__libc_single_threaded) {
    GiveAwayAtThreadEnd();
    pool.TakeLists(blocks);
  }
}

}  // namespace

void* Slab::AllocateClass(std::size_t sizeClass) {
  if (FreeBlock* const block = blocks.freed[sizeClass]) {
    blocks.freed[sizeClass] = block->next;
    return block;
  }
  const std::size_t size = SizeOf(sizeClass);
  return static_cast<std::size_t>(blocks.end - blocks.next) < size ? AllocateElsewhere(sizeClass)
                                                                   : Cut(size);
}

void Slab::FreeClass(void* block, std::size_t sizeClass) noexcept {
  FreeBlock*& first = blocks.freed[sizeClass];
  first = new (block) FreeBlock{first};
  if (--blocks.freesLeft < 0) {
    GiveListsAway();
  }
}

#endif

}  // namespace Kestrel::MetaObj
