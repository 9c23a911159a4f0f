// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/plugins/SharedObjectFile.h"

#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>

#include "support/ScopedTempDir.h"

namespace Kestrel::AutoCli {
namespace {

using Testing::ScopedTempDir;

constexpr std::size_t kSegmentPlace = sizeof(ElfW(Ehdr));
constexpr std::size_t kHeaders = kSegmentPlace + sizeof(ElfW(Phdr));
struct Segment {
  std::uint32_t type = PT_LOAD;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

/// Returns the header of the running program, which the loader has accepted.
ElfW(Ehdr) ReadOwnHeader() {
  ElfW(Ehdr) header = {};
  std::ifstream("/proc/self/exe", std::ios::binary)
      .read(reinterpret_cast<char*>(&header), sizeof header);
  return header;
}

/// Makes a shared object with one segment, cut or padded to `size` bytes.
std::string MakeObject(const Segment& segment, std::size_t size) {
  ElfW(Ehdr) header = ReadOwnHeader();
  header.e_type = ET_DYN;
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

TEST(SharedObjectFileTest, ASegmentMustEndWithinTheFile) {
  EXPECT_FALSE(IsCutShort(MakeObject({PT_LOAD, 0, 1000}, 1000)));
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, 0, 1001}, 1000)));
  EXPECT_FALSE(IsCutShort(MakeObject({PT_LOAD, 1000, 0}, 1000)));
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, 1001, 0}, 1000)));
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, 500, 501}, 1000)));
}

TEST(SharedObjectFileTest, ASegmentWhoseEndOverflowsEndsAfterTheFile) {
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, UINT64_MAX - 1, 2}, 1000)));
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, 2, UINT64_MAX - 1}, 1000)));
}

TEST(SharedObjectFileTest, ChecksOnlyLoadedSegments) {
  EXPECT_FALSE(IsCutShort(MakeObject({PT_NOTE, 0, 5000}, 1000)));
}

TEST(SharedObjectFileTest, AFileThatEndsWithinItsHeadersIsLeftToTheLoader) {
  EXPECT_FALSE(IsCutShort(MakeObject({PT_LOAD, 0, 5000}, sizeof(ElfW(Ehdr)) - 1)));
  EXPECT_FALSE(IsCutShort(MakeObject({PT_LOAD, 0, 5000}, kSegmentPlace)));
  EXPECT_FALSE(IsCutShort(MakeObject({PT_LOAD, 0, 5000}, kHeaders - 1)));
  EXPECT_TRUE(IsCutShort(MakeObject({PT_LOAD, 0, 5000}, kHeaders)));
}

TEST(SharedObjectFileTest, AFileThatIsNotASharedObjectIsLeftToTheLoader) {
  EXPECT_FALSE(IsCutShort(""));
  EXPECT_FALSE(IsCutShort(ELFMAG));
  EXPECT_FALSE(IsCutShort(std::string(1000, 'x')));
}

TEST(SharedObjectFileTest, AHeaderThatTheLoaderRefusesIsLeftToTheLoader) {
  const std::string cut = MakeObject({PT_LOAD, 0, 1001}, 1000);
  for (const std::size_t place :
       {std::size_t{EI_MAG0}, std::size_t{EI_CLASS}, std::size_t{EI_DATA}, std::size_t{EI_VERSION},
        std::size_t{EI_OSABI}, std::size_t{EI_PAD}, std::size_t{EI_NIDENT - 1},
        offsetof(ElfW(Ehdr), e_type), offsetof(ElfW(Ehdr), e_version),
        offsetof(ElfW(Ehdr), e_phentsize)}) {
    std::string refused = cut;
    refused[place] = 99;
    EXPECT_FALSE(IsCutShort(refused)) << place;
  }
}

TEST(SharedObjectFileTest, AcceptsTheTwoInterfacesThatTheLoaderAccepts) {
  std::string cut = MakeObject({PT_LOAD, 0, 1001}, 1000);
  cut[EI_OSABI] = ELFOSABI_SYSV;
  EXPECT_TRUE(IsCutShort(cut));
  cut[EI_ABIVERSION] = 1;
  EXPECT_FALSE(IsCutShort(cut));
  cut[EI_OSABI] = ELFOSABI_GNU;
  EXPECT_TRUE(IsCutShort(cut));
}

TEST(SharedObjectFileTest, AFileThatCannotBeReadIsLeftToTheLoader) {
  const ScopedTempDir dir;
  EXPECT_FALSE(IsSharedObjectCutShort(dir.GetPath("missing.so")));
  EXPECT_FALSE(IsSharedObjectCutShort(dir.MakeDirectory("folder.so")));
}

constexpr std::uint64_t kAddress = 0x1000;  // where the file begins in memory

template <class Value>
void Append(std::string& text, const Value& value) {
  text.append(reinterpret_cast<const char*>(&value), sizeof value);
}

/// Makes a shared object in which the loader finds an entry with the tag `tag` and the string
/// `value`.
std::string MakeDynamicObject(std::int64_t tag, const std::string& value) {
  constexpr std::size_t kCount = 3;
  constexpr std::size_t kEntryPlace = kSegmentPlace + 2 * sizeof(ElfW(Phdr));
  constexpr std::size_t kStringPlace = kEntryPlace + kCount * sizeof(ElfW(Dyn));
  ElfW(Ehdr) header = ReadOwnHeader();
  header.e_type = ET_DYN;
  header.e_phoff = kSegmentPlace;
  header.e_phentsize = sizeof(ElfW(Phdr));
  header.e_phnum = 2;
  ElfW(Phdr) load = {};
  load.p_type = PT_LOAD;
  load.p_vaddr = kAddress;
  load.p_filesz = kStringPlace + 1 + value.size() + 1;
  ElfW(Phdr) dynamic = {};
  dynamic.p_type = PT_DYNAMIC;
  dynamic.p_offset = kEntryPlace;
  dynamic.p_filesz = kCount * sizeof(ElfW(Dyn));
  std::string text;
  Append(text, header);
  Append(text, load);
  Append(text, dynamic);
  Append(text, ElfW(Dyn){tag, {1}});
  Append(text, ElfW(Dyn){DT_STRTAB, {kAddress + kStringPlace}});
  Append(text, ElfW(Dyn){DT_NULL, {0}});
  return text.append(1, '\0').append(value).append(1, '\0');
}

bool UsesOriginIn(const std::string& text) {
  const ScopedTempDir dir;
  return UsesOrigin(dir.Write("x.so", text));
}

TEST(SharedObjectFileTest, FindsOriginInEveryEntryThatNamesLibraries) {
  for (const std::int64_t tag : {DT_NEEDED, DT_RPATH, DT_RUNPATH, DT_AUXILIARY, DT_FILTER}) {
    EXPECT_TRUE(UsesOriginIn(MakeDynamicObject(tag, "$ORIGIN/lib"))) << tag;
    EXPECT_TRUE(UsesOriginIn(MakeDynamicObject(tag, "/lib:${ORIGIN}"))) << tag;
    EXPECT_FALSE(UsesOriginIn(MakeDynamicObject(tag, "/lib"))) << tag;
  }
  EXPECT_FALSE(UsesOriginIn(MakeDynamicObject(DT_SONAME, "$ORIGIN")));
}

TEST(SharedObjectFileTest, AFileCutAnywhereDoesNotUseOrigin) {
  const std::string text = MakeDynamicObject(DT_RUNPATH, "$ORIGIN");
  for (std::size_t size = 0; size < text.size() - 2; ++size) {
    EXPECT_FALSE(UsesOriginIn(text.substr(0, size))) << size;
  }
}

TEST(SharedObjectFileTest, AnObjectWithoutReadableStringsDoesNotUseOrigin) {
  EXPECT_FALSE(UsesOriginIn(MakeObject({PT_LOAD, 0, 1000}, 1000)));
  EXPECT_FALSE(UsesOriginIn(MakeObject({PT_DYNAMIC, UINT64_MAX - 1, UINT64_MAX}, 1000)));
  std::string text = MakeDynamicObject(DT_RUNPATH, "$ORIGIN");
  const std::size_t address =
      text.find("$ORIGIN") - 1 - 2 * sizeof(ElfW(Dyn)) + sizeof(ElfW(Sxword));
  text[address + 4] = 1;  // 4 GB after the end
  EXPECT_FALSE(UsesOriginIn(text));
  text[address + 1] = 0;  // before the beginning
  text[address + 4] = 0;
  EXPECT_FALSE(UsesOriginIn(text));
}

}  // namespace
}  // namespace Kestrel::AutoCli
