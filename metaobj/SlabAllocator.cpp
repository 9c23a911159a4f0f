// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "metaobj/SlabAllocator.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KESTREL_PLAIN_BLOCKS 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define KESTREL_PLAIN_BLOCKS 1
#endif

namespace Kestrel::MetaObj {

#ifdef KESTREL_PLAIN_BLOCKS

void* Slab::Allocate(std::size_t size) { return ::operator new(size); }

void Slab::Free(void* block, std::size_t) noexcept { ::operator delete(block); }

#else

namespace {

constexpr std::size_t kFirstChunk = 16 * 1024;
constexpr std::size_t kLargestChunk = 256 * 1024;
constexpr std::size_t kPage = 4096;
constexpr std::size_t kClasses = Slab::kLargestBlock / Slab::kGranule;

struct FreeBlock {
  FreeBlock* next;
};

// One thread's blocks: what was freed, by size, and what is left of the newest chunk.
struct ThreadBlocks {
  FreeBlock* freed[kClasses];
  char* next;
  char* end;
  std::size_t chunkSize;
};

// Nothing to construct or destroy, so that it serves from a thread's first breath to its last.
thread_local ThreadBlocks blocks __attribute__((tls_model("initial-exec")));

std::size_t ClassOf(std::size_t size) { return (size - 1) / Slab::kGranule; }

// Has the system put memory behind a chunk in one go, as it will soon be full: a fault for each of
// its pages would cost more than the values that come to stand there. A system that does not know
// how will do it page by page.
void Populate([[maybe_unused]] char* chunk, [[maybe_unused]] std::size_t size) {
#ifdef MADV_POPULATE_WRITE
  const int errorBefore = errno;
  char* const firstPage = chunk + kPage - reinterpret_cast<std::uintptr_t>(chunk) % kPage;
  madvise(firstPage, size - kPage, MADV_POPULATE_WRITE);
  errno = errorBefore;
#endif
}

// Each chunk is twice as large as the one before, until they are large enough. Only those are
// populated, so that a program with few values pays for what it uses.
void StartChunk() {
  const std::size_t size = std::clamp(blocks.chunkSize * 2, kFirstChunk, kLargestChunk);
  blocks.next = static_cast<char*>(::operator new(size));
  blocks.end = blocks.next + size;
  blocks.chunkSize = size;
  if (size == kLargestChunk) {
    Populate(blocks.next, size);
  }
}

void* Cut(std::size_t size) {
  if (static_cast<std::size_t>(blocks.end - blocks.next) < size) {
    StartChunk();
  }
  void* const block = blocks.next;
  blocks.next += size;
  return block;
}

}  // namespace

void* Slab::Allocate(std::size_t size) {
  const std::size_t sizeClass = ClassOf(size);
  FreeBlock* const block = blocks.freed[sizeClass];
  if (block == nullptr) {
    return Cut((sizeClass + 1) * kGranule);
  }
  blocks.freed[sizeClass] = block->next;
  return block;
}

void Slab::Free(void* block, std::size_t size) noexcept {
  FreeBlock*& first = blocks.freed[ClassOf(size)];
  first = new (block) FreeBlock{first};
}

#endif

}  // namespace Kestrel::MetaObj
