// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "metaobj/SlabAllocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

namespace {

using Kestrel::MetaObj::MakeInSlab;
using Kestrel::MetaObj::Slab;
using Kestrel::MetaObj::SlabAllocator;

#if defined(__SANITIZE_ADDRESS__) && !defined(KESTREL_POISONED_SLABS)
constexpr bool kHasSlabs = false;
#else
constexpr bool kHasSlabs = true;
#endif

TEST(SlabAllocatorTest, BlocksDoNotOverlap) {
  struct Block {
    unsigned char* bytes;
    std::size_t size;
  };
  std::vector<Block> blocks;
  for (std::size_t round = 0; round < 3000; ++round) {
    const std::size_t size = 1 + round * 7 % Slab::kMaxBlock;
    blocks.push_back({static_cast<unsigned char*>(Slab::Allocate(size)), size});
    std::memset(blocks.back().bytes, static_cast<int>(round % 251), size);
  }
  for (std::size_t round = 0; round < blocks.size(); ++round) {
    const Block& block = blocks[round];
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block.bytes) % Slab::kGranule, 0u);
    EXPECT_TRUE(std::all_of(block.bytes, block.bytes + block.size,
                            [round](unsigned char byte) { return byte == round % 251; }));
    Slab::Free(block.bytes, block.size);
  }
}

TEST(SlabAllocatorTest, ReusesAFreedBlockForItsSize) {
  if (!kHasSlabs) {
    GTEST_SKIP() << "the address sanitizer keeps freed blocks back";
  }
  void* const block = Slab::Allocate(40);
  Slab::Free(block, 40);
  void* const larger = Slab::Allocate(48);
  void* const again = Slab::Allocate(33);
  EXPECT_NE(larger, block);
  EXPECT_EQ(again, block);
  Slab::Free(again, 33);
  Slab::Free(larger, 48);
}

// The blocks need several of the largest chunks. Allocating such a chunk makes a system call that
// may fail.
TEST(SlabAllocatorTest, DoesNotChangeErrno) {
  constexpr std::size_t kBlocks = 8 * 1024;
  std::vector<void*> blocks;
  errno = ENOTTY;
  for (std::size_t each = 0; each < kBlocks; ++each) {
    blocks.push_back(Slab::Allocate(Slab::kMaxBlock));
  }
  EXPECT_EQ(errno, ENOTTY);
  for (void* const block : blocks) {
    Slab::Free(block, Slab::kMaxBlock);
  }
}

TEST(SlabAllocatorTest, AllAllocatorsAreEqual) {
  EXPECT_TRUE(SlabAllocator<int>() == SlabAllocator<double>());
  EXPECT_FALSE(SlabAllocator<int>() != SlabAllocator<double>());
}

TEST(SlabAllocatorTest, AllocatesSmallArraysInASlab) {
  if (!kHasSlabs) {
    GTEST_SKIP() << "the address sanitizer keeps freed blocks back";
  }
  constexpr std::size_t kMost = Slab::kMaxBlock / sizeof(long);
  for (const std::size_t count : {std::size_t{1}, std::size_t{3}, kMost}) {
    SlabAllocator<long> several;
    long* const array = several.allocate(count);
    std::fill(array, array + count, 5);
    several.deallocate(array, count);
    void* const again = Slab::Allocate(count * sizeof(long));
    EXPECT_EQ(again, array) << count;
    Slab::Free(again, count * sizeof(long));
  }
}

TEST(SlabAllocatorTest, AllocatesWhatASlabCannotHold) {
  SlabAllocator<long> several;
  for (const std::size_t count : {std::size_t{0}, Slab::kMaxBlock / sizeof(long) + 1}) {
    long* const array = several.allocate(count);
    std::fill(array, array + count, 5);
    several.deallocate(array, count);
  }
  struct Large {
    std::array<char, Slab::kMaxBlock + 1> bytes;
  };
  const std::shared_ptr<Large> large = MakeInSlab<Large>();
  large->bytes.back() = 'x';
  struct alignas(64) Aligned {
    char byte;
  };
  const std::shared_ptr<Aligned> aligned = MakeInSlab<Aligned>();
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned.get()) % 64, 0u);
}

TEST(SlabAllocatorTest, MakesSharedOwners) {
  const std::shared_ptr<std::vector<int>> value = MakeInSlab<std::vector<int>>(3, 7);
  EXPECT_EQ(*value, (std::vector<int>{7, 7, 7}));
  EXPECT_EQ(value.use_count(), 1);
}

TEST(SlabAllocatorTest, DestroysAValueByItsOriginalClass) {
  struct Base {
    virtual ~Base() = default;
  };
  struct Derived : Base {
    explicit Derived(const std::shared_ptr<int>& shared) : owner(shared) {}
    std::shared_ptr<int> owner;
  };
  const auto held = std::make_shared<int>(1);
  std::shared_ptr<Base> value = MakeInSlab<Derived>(held);
  EXPECT_EQ(held.use_count(), 2);
  value.reset();
  EXPECT_EQ(held.use_count(), 1);
}

TEST(SlabAllocatorTest, ABlockMayBeFreedInAnotherThread) {
  constexpr int kBlocks = 1000;
  std::vector<std::shared_ptr<long>> values;
  for (int each = 0; each < kBlocks; ++each) {
    values.push_back(MakeInSlab<long>(each));
  }
  std::vector<std::shared_ptr<long>> others;
  std::thread other([&] {
    values.clear();
    for (int each = 0; each < kBlocks; ++each) {
      others.push_back(MakeInSlab<long>(-each));
    }
  });
  other.join();
  for (int each = 0; each < kBlocks; ++each) {
    values.push_back(MakeInSlab<long>(each));
  }
  for (std::size_t each = 0; each < values.size(); ++each) {
    EXPECT_EQ(*values[each], static_cast<long>(each));
    EXPECT_EQ(*others[each], -static_cast<long>(each));
  }
}

#ifdef KESTREL_POISONED_SLABS

TEST(PoisonedSlabDeathTest, AUseOfAFreedBlockIsReported) {
  auto* const block = static_cast<volatile char*>(Slab::Allocate(40));
  block[39] = 'x';
  Slab::Free(const_cast<char*>(block), 40);
  EXPECT_DEATH(block[0] = 'x', "use-after-poison");
  EXPECT_DEATH(block[39] = 'x', "use-after-poison");
}

TEST(PoisonedSlabDeathTest, AUseOfABlockInThePoolIsReported) {
  volatile char* block = nullptr;
  std::thread([&block] {
    void* const freed = Slab::Allocate(40);
    block = static_cast<volatile char*>(freed);
    Slab::Free(freed, 40);
  }).join();
  EXPECT_DEATH(block[0] = 'x', "use-after-poison");
}

TEST(PoisonedSlabDeathTest, ASecondFreeIsReported) {
  void* const block = Slab::Allocate(40);
  Slab::Free(block, 40);
  EXPECT_DEATH(Slab::Free(block, 40), "use-after-poison");
}

TEST(PoisonedSlabDeathTest, AWriteIntoTheRestOfAChunkIsReported) {
  std::thread([] {
    auto* const block = static_cast<volatile char*>(Slab::Allocate(Slab::kMaxBlock));
    EXPECT_DEATH(block[Slab::kMaxBlock] = 'x', "use-after-poison");
  }).join();
}

#endif

// Memory does not accumulate, whichever threads allocate and free it.

constexpr std::size_t kBlocks = 4096;
constexpr std::size_t kSize = 64;

std::vector<void*> AllocateBlocks() {
  std::vector<void*> blocks;
  for (std::size_t each = 0; each < kBlocks; ++each) {
    blocks.push_back(Slab::Allocate(kSize));
  }
  return blocks;
}

void FreeBlocks(const std::vector<void*>& blocks) {
  for (void* const block : blocks) {
    Slab::Free(block, kSize);
  }
}

class SlabAllocatorThreadTest : public ::testing::Test {
 protected:
  static constexpr int kRounds = 50;

  void SetUp() override {
    if (!kHasSlabs) {
      GTEST_SKIP() << "the address sanitizer keeps freed blocks back";
    }
  }

  void Note(const std::vector<void*>& blocks) { used.insert(blocks.begin(), blocks.end()); }

  std::set<void*> used;
};

TEST_F(SlabAllocatorThreadTest, ReusesWhatAnotherThreadHasFreed) {
  std::vector<void*> blocks;
  for (int round = 0; round < kRounds; ++round) {
    blocks = AllocateBlocks();
    Note(blocks);
    std::thread([&blocks] { FreeBlocks(blocks); }).join();
  }
  EXPECT_LT(used.size(), 5 * kBlocks);
}

TEST_F(SlabAllocatorThreadTest, NewThreadsReuseWhatThisThreadHasFreed) {
  std::vector<void*> blocks;
  for (int round = 0; round < kRounds; ++round) {
    std::thread([&blocks] { blocks = AllocateBlocks(); }).join();
    Note(blocks);
    FreeBlocks(blocks);
  }
  EXPECT_LT(used.size(), 5 * kBlocks);
}

TEST_F(SlabAllocatorThreadTest, ReusesTheMemoryOfAThreadThatHasEnded) {
  std::vector<void*> blocks;
  for (int round = 0; round < kRounds; ++round) {
    std::thread([&blocks] {
      blocks = AllocateBlocks();
      FreeBlocks(blocks);
    }).join();
    Note(blocks);
  }
  EXPECT_LT(used.size(), 5 * kBlocks);
}

// Each thread allocates only one block, so it leaves most of its chunk unused.
TEST_F(SlabAllocatorThreadTest, ReusesTheRestOfTheChunkOfAThreadThatHasEnded) {
  constexpr std::uintptr_t kChunk = 16 * 1024;
  std::set<std::uintptr_t> chunks;
  for (int round = 0; round < 10 * kRounds; ++round) {
    std::thread([&chunks] {
      void* const block = Slab::Allocate(kSize);
      chunks.insert(reinterpret_cast<std::uintptr_t>(block) / kChunk);
      Slab::Free(block, kSize);
    }).join();
  }
  EXPECT_LT(chunks.size(), 20u);
}

// `late` is older than the thread's first block, so its destructor runs after the memory of the
// thread has gone to the pool that all threads share.
TEST_F(SlabAllocatorThreadTest, ReusesWhatThreadLocalDestructorsFree) {
  struct Late {
    ~Late() {
      if (!blocks.empty()) {
        FreeBlocks(blocks);
        seen->insert(Slab::Allocate(kSize));
      }
    }
    std::vector<void*> blocks;
    std::set<void*>* seen = nullptr;
  };
  for (int round = 0; round < kRounds; ++round) {
    std::thread([this] {
      thread_local Late late;
      late.blocks = AllocateBlocks();
      Note(late.blocks);
      late.seen = &used;
    }).join();
  }
  EXPECT_LT(used.size(), 5 * kBlocks);
}

}  // namespace
