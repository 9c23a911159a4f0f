#include "autocli/SharedObjectFile.h"

#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "support/ScopedTempDir.h"

namespace Kestrel::AutoCli {
namespace {

using Testing::ScopedTempDir;

constexpr std::size_t kSegmentPlace = sizeof(ElfW(Ehdr));
constexpr std::size_t kHeaders = kSegmentPlace + sizeof(ElfW(Phdr));
constexpr unsigned char kClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;

struct Segment {
  std::uint32_t type = PT_LOAD;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

/// A shared object of one segment that has `size` bytes.
std::string MakeObject(const Segment& segment, std::size_t size) {
  ElfW(Ehdr) header = {};
  std::memcpy(header.e_ident, ELFMAG, SELFMAG);
  header.e_ident[EI_CLASS] = kClass;
  header.e_phoff = kSegmentPlace;
  header.e_phentsize = sizeof(ElfW(Phdr));
  header.e_phnum = 1;
  ElfW(Phdr) entry = {};
  entry.p_type = segment.type;
  entry.p_offset = segment.offset;
  entry.p_filesz = segment.size;
  std::string text(kHeaders, '\0');
  std::memcpy(&text[0], &header, sizeof header);
  std::memcpy(&text[kSegmentPlace], &entry, sizeof entry);
  text.resize(size, 'x');
  return text;
}

bool IsCutShort(const std::string& text) {
  const ScopedTempDir dir;
  return IsSharedObjectCutShort(dir.Write("x.so", text));
}

TEST(SharedObjectFileTest, TheLastSegmentMustEndWithinTheFile) {
  EXPECT_FALSE(IsCutShort(MakeObject({PT_LOAD, 0, 1000}, 1000)));
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, 0, 1001}, 1000)));
  EXPECT_FALSE(IsCutShort(MakeObject({PT_LOAD, 1000, 0}, 1000)));
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, 1001, 0}, 1000)));
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, 500, 501}, 1000)));
}

TEST(SharedObjectFileTest, ASumBeyondAllNumbersIsBehindTheEnd) {
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, UINT64_MAX - 1, 2}, 1000)));
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, 2, UINT64_MAX - 1}, 1000)));
}

TEST(SharedObjectFileTest, OnlyWhatIsLoadedCounts) {
  EXPECT_FALSE(IsCutShort(MakeObject({PT_NOTE, 0, 5000}, 1000)));
}

TEST(SharedObjectFileTest, TheTableOfSegmentsMustBeThere) {
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, 0, 0}, kHeaders - 1)));
  EXPECT_FALSE(IsCutShort(MakeObject({PT_LOAD, 0, 0}, kHeaders)));
}

TEST(SharedObjectFileTest, WhatIsNoSharedObjectIsTheLoadersToReport) {
  EXPECT_FALSE(IsCutShort(""));
  EXPECT_FALSE(IsCutShort(ELFMAG));
  EXPECT_FALSE(IsCutShort(std::string(1000, 'x')));
  std::string foreign = MakeObject({PT_LOAD, 0, 1001}, 1000);
  foreign[EI_CLASS] = ELFCLASSNONE;
  EXPECT_FALSE(IsCutShort(foreign));
  std::string odd = MakeObject({PT_LOAD, 0, 1001}, 1000);
  odd[offsetof(ElfW(Ehdr), e_phentsize)] = 1;
  EXPECT_FALSE(IsCutShort(odd));
}

TEST(SharedObjectFileTest, WhatCannotBeReadIsTheLoadersToReport) {
  const ScopedTempDir dir;
  EXPECT_FALSE(IsSharedObjectCutShort(dir.GetPath("missing.so")));
  EXPECT_FALSE(IsSharedObjectCutShort(dir.MakeDirectory("folder.so")));
}

}  // namespace
}  // namespace Kestrel::AutoCli
