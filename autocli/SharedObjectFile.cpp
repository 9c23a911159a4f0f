#include "autocli/SharedObjectFile.h"

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

constexpr unsigned char kClass = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;

bool ReadAt(std::ifstream& file, std::uint64_t place, void* data, std::size_t size) {
  file.seekg(static_cast<std::streamoff>(place));
  return static_cast<bool>(file.read(static_cast<char*>(data), static_cast<std::streamsize>(size)));
}

/// Whether this program's loader would go on behind the header.
bool IsForLoader(const FileHeader& header) {
  return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == kClass &&
         header.e_phentsize == sizeof(SegmentHeader);
}

bool EndsBehind(const SegmentHeader& segment, std::uint64_t fileSize) {
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
    return true;
  }
  return std::any_of(segments.begin(), segments.end(), [end](const SegmentHeader& segment) {
    return EndsBehind(segment, static_cast<std::uint64_t>(end));
  });
}

}  // namespace Kestrel::AutoCli
