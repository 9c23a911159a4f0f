// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <endian.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "autocli/text/ShortCopy.h"
#include "vexil/formats/Faults.h"
#include "vexil/formats/TextBuffer.h"
#include "vexil/formats/Utf8.h"

namespace Kestrel::Formats {

// A format describes how it prints strings by a type with these members. A member that no function
// uses for that type may be missing.
//
//   template <typename Bytes> static constexpr auto Stops(Bytes bytes);
//       True for a byte that is not simply copied, such as any from 0x80 on, which must be checked.
//       Must consist of comparisons, `|` and `&`, because `bytes` is a byte or a vector of bytes.
//       Bytes are signed, so those from 0x80 on are negative; this makes comparing vectors faster.
//   static bool IsCopied(char32_t character);
//       Whether a character that is not ASCII is copied.
//   static void Replace(char32_t character, TextBuffer& out);
//       Prints a character that is not copied. May throw ValueFault.

/// The length up to which strings are copied without a check for room, because room was made for
/// several values at once.
inline constexpr std::size_t kMaxShort = 64;

/// Sixteen bytes that are compared at once. gcc and clang generate vector instructions for them.
using ByteVector = signed char __attribute__((vector_size(16)));

template <typename Rules>
constexpr std::array<bool, 256> MakeStopTable() {
  std::array<bool, 256> table{};
  for (std::size_t byte = 0; byte < table.size(); ++byte) {
    table[byte] = Rules::Stops(static_cast<signed char>(byte)) != 0;
  }
  return table;
}

/// Whether a byte is a stop.
template <typename Rules>
bool IsStop(char byte) {
  static constexpr std::array<bool, 256> kTable = MakeStopTable<Rules>();
  return kTable[static_cast<unsigned char>(byte)];
}

/// The lower and the upper half of `bytes` as numbers whose lowest byte is the first one.
struct ByteHalves {
  explicit ByteHalves(ByteVector bytes) {
    std::uint64_t halves[2];
    std::memcpy(halves, &bytes, sizeof halves);
    lower = le64toh(halves[0]);
    upper = le64toh(halves[1]);
  }

  std::uint64_t lower;
  std::uint64_t upper;
};

/// Whether any byte is not 0.
inline bool IsAnySet(ByteVector bytes) {
  const ByteHalves halves(bytes);
  return (halves.lower | halves.upper) != 0;
}

/// Whether all bits are 1.
inline bool AreAllSet(ByteVector bytes) {
  const ByteHalves halves(bytes);
  return (halves.lower & halves.upper) == UINT64_MAX;
}

/// Returns the index of the first byte that is not 0; 16 if there is none.
inline std::size_t FindFirstSet(ByteVector bytes) {
  const ByteHalves halves(bytes);
  if (halves.lower != 0) {
    return static_cast<std::size_t>(__builtin_ctzll(halves.lower)) / 8;
  }
  return halves.upper == 0 ? 16 : 8 + static_cast<std::size_t>(__builtin_ctzll(halves.upper)) / 8;
}

/// Loads the 16 bytes at `bytes`.
inline ByteVector LoadBytes(const char* bytes) {
  ByteVector loaded;
  std::memcpy(&loaded, bytes, sizeof loaded);
  return loaded;
}

/// Loads the 8 bytes at `first` and the 8 bytes at `second`.
inline ByteVector LoadHalves(const char* first, const char* second) {
  char both[16];
  std::memcpy(both, first, 8);
  std::memcpy(both + 8, second, 8);
  return LoadBytes(both);
}

/// Stores the first 8 bytes at `first` and the others at `second`.
inline void StoreHalves(ByteVector bytes, char* first, char* second) {
  std::memcpy(first, &bytes, 8);
  std::memcpy(second, reinterpret_cast<const char*>(&bytes) + 8, 8);
}

/// Copies the 16 bytes at `from` and returns them.
inline ByteVector CopyVector(char* to, const char* from) {
  const ByteVector bytes = LoadBytes(from);
  std::memcpy(to, &bytes, sizeof bytes);
  return bytes;
}

/// Whether any byte of `text` is a stop.
template <typename Rules>
bool AnyStop(std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  if (text.size() < 8) {
    return std::any_of(at, end, IsStop<Rules>);
  }
  if (text.size() < 16) {
    return IsAnySet(Rules::Stops(LoadHalves(at, end - 8)));
  }
  ByteVector ordinary = ~Rules::Stops(LoadBytes(end - 16));
  for (; end - at > 16; at += 16) {
    ordinary &= ~Rules::Stops(LoadBytes(at));  // the last ones may overlap those at the end
  }
  return !AreAllSet(ordinary);
}

/// Copies `text` to `to`, where there must be room, and returns whether no byte of it is a stop.
/// One pass does both, because most strings are copied unchanged. Inlined, because a call would
/// take as long as copying a short string.
template <typename Rules>
[[gnu::always_inline]] inline bool CopyOrdinary(std::string_view text, char* to) {
  const char* const from = text.data();
  const std::size_t size = text.size();
  if (size < 8) {
    AutoCli::CopyUpTo16(to, from, size);
    return std::none_of(from, from + size, IsStop<Rules>);
  }
  if (size < 16) {
    const ByteVector halves = LoadHalves(from, from + size - 8);
    StoreHalves(halves, to, to + size - 8);
    return !IsAnySet(Rules::Stops(halves));
  }
  const std::size_t last = size - 16;
  ByteVector ordinary = ~Rules::Stops(CopyVector(to + last, from + last));
  for (std::size_t at = 0; at < last; at += 16) {
    ordinary &= ~Rules::Stops(CopyVector(to + at, from + at));
  }
  return AreAllSet(ordinary);
}

/// Returns the number of bytes before the first stop in `text`.
template <typename Rules>
std::size_t CountOrdinary(std::string_view text) {
  const char* const begin = text.data();
  const char* const end = begin + text.size();
  if (text.size() < 16) {
    return static_cast<std::size_t>(std::find_if(begin, end, IsStop<Rules>) - begin);
  }
  for (const char* at = begin;; at = std::min(at + 16, end - 16)) {
    const std::size_t count = FindFirstSet(Rules::Stops(LoadBytes(at)));
    if (count < 16 || at == end - 16) {
      return static_cast<std::size_t>(at - begin) + count;
    }
  }
}

/// Returns the length of the first character of `text` if `Rules` copies it, otherwise 0. The text
/// must begin with a stop. Throws ValueFault if it does not begin with valid UTF-8.
template <typename Rules>
std::size_t MeasureCopied(std::string_view text) {
  if (static_cast<unsigned char>(text.front()) < 0x80) {
    return 0;
  }
  const Character character = FirstCharacter(text);
  if (character.size == 0) {
    throw ValueFault{"is not valid UTF-8"};
  }
  return Rules::IsCopied(character.code) ? character.size : 0;
}

/// Returns the number of bytes at the beginning of `text` that `Rules` copies.
/// Throws ValueFault if invalid UTF-8 precedes the first character that is not copied.
template <typename Rules>
std::size_t CountCopied(std::string_view text) {
  std::size_t count = CountOrdinary<Rules>(text);
  while (count < text.size()) {
    const std::string_view rest = text.substr(count);
    const std::size_t size =
        IsStop<Rules>(rest.front()) ? MeasureCopied<Rules>(rest) : CountOrdinary<Rules>(rest);
    if (size == 0) {
      break;
    }
    count += size;
  }
  return count;
}

/// Appends `text` as `Rules` prints it. Throws ValueFault if that is not possible.
template <typename Rules>
void AppendEscaped(std::string_view text, TextBuffer& out) {
  while (true) {
    const std::size_t count = CountCopied<Rules>(text);
    out.Append(text.substr(0, count));
    text.remove_prefix(count);
    if (text.empty()) {
      return;
    }
    const Character character = FirstCharacter(text);
    Rules::Replace(character.code, out);
    text.remove_prefix(character.size);
  }
}

}  // namespace Kestrel::Formats
