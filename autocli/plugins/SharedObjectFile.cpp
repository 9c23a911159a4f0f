// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/plugins/SharedObjectFile.h"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <ios>
#include <limits>
#include <string>
#include <vector>

namespace Kestrel::AutoCli {

namespace {

using FileHeader = ElfW(Ehdr);
using SegmentHeader = ElfW(Phdr);
using DynamicEntry = ElfW(Dyn);

// The first bytes of every file that the loader of this program accepts.
constexpr unsigned char kIdentity[EI_OSABI] = {
    ELFMAG0,
    ELFMAG1,
    ELFMAG2,
    ELFMAG3,
    sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32,
    __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? ELFDATA2LSB : ELFDATA2MSB,
    EV_CURRENT};

bool ReadAt(std::ifstream& file, std::uint64_t place, void* data, std::size_t size) {
  file.seekg(static_cast<std::streamoff>(place));
  return static_cast<bool>(file.read(static_cast<char*>(data), static_cast<std::streamsize>(size)));
}

std::string ReadString(std::ifstream& file, std::uint64_t place) {
  std::string text;
  file.clear();
  file.seekg(static_cast<std::streamoff>(place));
  std::getline(file, text, '\0');
  return text;
}

bool IsForLoader(const unsigned char (&identity)[EI_NIDENT]) {
  const bool isGnu = identity[EI_OSABI] == ELFOSABI_GNU;
  return std::memcmp(identity, kIdentity, sizeof kIdentity) == 0 &&
         (isGnu || (identity[EI_OSABI] == ELFOSABI_SYSV && identity[EI_ABIVERSION] == 0)) &&
         std::all_of(identity + EI_PAD, identity + EI_NIDENT, [](auto byte) { return byte == 0; });
}

/// Whether the loader of this program accepts the header, apart from the machine, which is not
/// checked here. When the loader refuses a header, it reports the reason itself.
bool IsForLoader(const FileHeader& header) {
  return IsForLoader(header.e_ident) && header.e_version == EV_CURRENT && header.e_type == ET_DYN &&
         header.e_phentsize == sizeof(SegmentHeader);
}

bool EndsAfter(const SegmentHeader& segment, std::uint64_t fileSize) {
  return segment.p_type == PT_LOAD &&
         (segment.p_offset > fileSize || segment.p_filesz > fileSize - segment.p_offset);
}

/// Returns the segments of a shared object that the loader accepts; none for any other file.
std::vector<SegmentHeader> ReadSegments(std::ifstream& file) {
  FileHeader header;
  if (!ReadAt(file, 0, &header, sizeof header) || !IsForLoader(header)) {
    return {};
  }
  std::vector<SegmentHeader> segments(header.e_phnum);
  if (!ReadAt(file, header.e_phoff, segments.data(), segments.size() * sizeof(SegmentHeader))) {
    return {};
  }
  return segments;
}

/// Returns the entries for the loader, up to the first one that cannot be read.
std::vector<DynamicEntry> ReadDynamicEntries(std::ifstream& file,
                                             const std::vector<SegmentHeader>& segments) {
  std::vector<DynamicEntry> entries;
  for (const SegmentHeader& segment : segments) {
    const std::size_t count =
        segment.p_type == PT_DYNAMIC ? segment.p_filesz / sizeof(DynamicEntry) : 0;
    DynamicEntry entry;
    for (std::size_t i = 0; i < count; ++i) {
      if (!ReadAt(file, segment.p_offset + i * sizeof entry, &entry, sizeof entry)) {
        break;
      }
      entries.push_back(entry);
    }
  }
  return entries;
}

/// Returns the offset in the file of the byte that is mapped at `address`. If there is none, an
/// offset beyond the end of every file.
std::uint64_t PlaceOf(std::uint64_t address, const std::vector<SegmentHeader>& segments) {
  for (const SegmentHeader& segment : segments) {
    if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
        address - segment.p_vaddr < segment.p_filesz) {
      return segment.p_offset + (address - segment.p_vaddr);
    }
  }
  return std::numeric_limits<std::int64_t>::max();
}

/// Whether the value of the entry is the offset of a string in which the loader replaces $ORIGIN.
bool NamesLibraries(const DynamicEntry& entry) {
  constexpr std::array kTags = {DT_NEEDED, DT_RPATH, DT_RUNPATH, DT_AUXILIARY, DT_FILTER};
  return std::find(kTags.begin(), kTags.end(), entry.d_tag) != kTags.end();
}

}  // namespace

bool IsSharedObjectCutShort(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff end = file.tellg();
  const std::vector<SegmentHeader> segments = ReadSegments(file);
  return std::any_of(segments.begin(), segments.end(), [end](const SegmentHeader& segment) {
    return EndsAfter(segment, static_cast<std::uint64_t>(end));
  });
}

bool UsesOrigin(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<SegmentHeader> segments = ReadSegments(file);
  const std::vector<DynamicEntry> entries = ReadDynamicEntries(file, segments);
  const auto strings = std::find_if(entries.begin(), entries.end(), [](const DynamicEntry& entry) {
    return entry.d_tag == DT_STRTAB;
  });
  return strings != entries.end() &&
         std::any_of(entries.begin(), entries.end(), [&](const DynamicEntry& entry) {
           const std::uint64_t place = PlaceOf(strings->d_un.d_ptr, segments);
           return NamesLibraries(entry) &&
                  ReadString(file, place + entry.d_un.d_val).find("ORIGIN") != std::string::npos;
         });
}

}  // namespace Kestrel::AutoCli
