// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/plugins/SharedObjectFile.h"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <ios>
#include <vector>

namespace Kestrel::AutoCli {

namespace {

using FileHeader = ElfW(Ehdr);
using SegmentHeader = ElfW(Phdr);

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

bool IsForLoader(const unsigned char (&identity)[EI_NIDENT]) {
  const bool isGnu = identity[EI_OSABI] == ELFOSABI_GNU;
  return std::memcmp(identity, kIdentity, sizeof kIdentity) == 0 &&
         (isGnu || (identity[EI_OSABI] == ELFOSABI_SYSV && identity[EI_ABIVERSION] == 0)) &&
         std::all_of(identity + EI_PAD, identity + EI_NIDENT, [](auto byte) { return byte == 0; });
}

/// Whether the loader of this program accepts the header. If not, it reports that itself.
bool IsForLoader(const FileHeader& header) {
  return IsForLoader(header.e_ident) && header.e_version == EV_CURRENT && header.e_type == ET_DYN &&
         header.e_phentsize == sizeof(SegmentHeader);
}

bool EndsAfter(const SegmentHeader& segment, std::uint64_t fileSize) {
  return segment.p_type == PT_LOAD &&
         (segment.p_offset > fileSize || segment.p_filesz > fileSize - segment.p_offset);
}

}  // namespace

bool IsSharedObjectCutShort(const std::string& path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff end = file.tellg();
  FileHeader header;
  if (end < 0 || !ReadAt(file, 0, &header, sizeof header) || !IsForLoader(header)) {
    return false;
  }
  std::vector<SegmentHeader> segments(header.e_phnum);
  if (!ReadAt(file, header.e_phoff, segments.data(), segments.size() * sizeof(SegmentHeader))) {
    return false;
  }
  return std::any_of(segments.begin(), segments.end(), [end](const SegmentHeader& segment) {
    return EndsAfter(segment, static_cast<std::uint64_t>(end));
  });
}

}  // namespace Kestrel::AutoCli
