// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/doctor/AbiNumber.h"

#include <elf.h>
#include <link.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <ios>
#include <string_view>

namespace Kestrel::Doctor {

namespace {

using FileHeader = ElfW(Ehdr);
using Section = ElfW(Shdr);
using Segment = ElfW(Phdr);
using Symbol = ElfW(Sym);

constexpr std::string_view kName = "AutoCli_PluginAbi";

/// The bytes of a shared object. Bytes beyond the end of the file are read as 0.
class ObjectFile {
 public:
  explicit ObjectFile(const std::string& path)
      : file_(path, std::ios::binary), header_(Read<FileHeader>(0)) {}

  std::optional<unsigned> FindNumber() {
    const unsigned char kind = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;
    if (std::memcmp(header_.e_ident, ELFMAG, SELFMAG) != 0 || header_.e_ident[EI_CLASS] != kind) {
      return std::nullopt;
    }
    for (unsigned i = 0; i < header_.e_shnum; ++i) {
      const Section section = ReadSection(i);
      if (section.sh_type == SHT_DYNSYM) {
        return FindNumber(section);
      }
    }
    return std::nullopt;
  }

 private:
  template <typename Value>
  Value Read(std::uint64_t place) {
    Value value = {};
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(place));
    file_.read(reinterpret_cast<char*>(&value), sizeof value);
    return value;
  }

  Section ReadSection(unsigned index) {
    return Read<Section>(header_.e_shoff + std::uint64_t{index} * sizeof(Section));
  }

  std::optional<unsigned> FindNumber(const Section& symbols) {
    const Section names = ReadSection(symbols.sh_link);
    const std::size_t count = symbols.sh_size / sizeof(Symbol);
    for (std::size_t i = 0; i < count && file_.good(); ++i) {
      const auto symbol = Read<Symbol>(symbols.sh_offset + i * sizeof(Symbol));
      if (symbol.st_shndx != SHN_UNDEF && symbol.st_size == sizeof(unsigned) &&
          IsNamed(names.sh_offset + symbol.st_name)) {
        return ReadAtAddress(symbol.st_value);
      }
    }
    return std::nullopt;
  }

  bool IsNamed(std::uint64_t place) {
    struct Name {
      char text[kName.size() + 1];
    };
    const auto name = Read<Name>(place);
    return name.text[kName.size()] == '\0' && kName == std::string_view(name.text);
  }

  std::optional<unsigned> ReadAtAddress(std::uint64_t address) {
    for (unsigned i = 0; i < header_.e_phnum; ++i) {
      const auto segment = Read<Segment>(header_.e_phoff + std::uint64_t{i} * sizeof(Segment));
      if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
          address - segment.p_vaddr < segment.p_filesz) {
        return Read<unsigned>(segment.p_offset + (address - segment.p_vaddr));
      }
    }
    return std::nullopt;
  }

  std::ifstream file_;
  FileHeader header_;
};

}  // namespace

std::optional<unsigned> ReadAbiNumber(const std::string& file) {
  return ObjectFile(file).FindNumber();
}

}  // namespace Kestrel::Doctor
