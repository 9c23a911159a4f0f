// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "vexil/formats/Faults.h"
#include "vexil/formats/TextBuffer.h"
#include "vexil/formats/Utf8.h"

namespace Kestrel::Formats {

// A format describes how it prints strings by a type with these members:
//
//   template <typename Bytes> static constexpr auto Stops(Bytes bytes);
//       True for a byte that is not simply copied, such as any from 0x80 on, which must be checked.
//       Must consist of comparisons, `|` and `&`, because `bytes` is a byte or a vector of bytes.
//       They are signed, so those from 0x80 on are negative; this makes comparing vectors faster.
//   static bool IsCopied(char32_t character);
//       Whether a character that is not ASCII is copied.
//   static void Replace(char32_t character, TextBuffer& out);
//       Prints a character that is not copied. May throw ValueFault.

/// Sixteen bytes that are compared at once. gcc and clang generate vector instructions for it.
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

/// Whether any byte is not 0.
inline bool IsAnySet(ByteVector bytes) {
  std::uint64_t halves[2];
  std::memcpy(halves, &bytes, sizeof halves);
  return (halves[0] | halves[1]) != 0;
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
  ByteVector stops = Rules::Stops(LoadBytes(end - 16));
  for (; end - at > 16; at += 16) {
    stops |= Rules::Stops(LoadBytes(at));  // the last ones may overlap those at the end
  }
  return IsAnySet(stops);
}

/// Returns the number of bytes at the beginning of `text`, a multiple of 16, that contain no stop.
template <typename Rules>
std::size_t CountOrdinary(std::string_view text) {
  std::size_t count = 0;
  while (text.size() - count >= 16 && !IsAnySet(Rules::Stops(LoadBytes(text.data() + count)))) {
    count += 16;
  }
  return count;
}

/// Returns the number of bytes at the beginning of `text` that `Rules` copies.
/// Throws ValueFault if the text up to there is not valid UTF-8.
template <typename Rules>
std::size_t CountCopied(std::string_view text) {
  std::size_t count = CountOrdinary<Rules>(text);
  while (count < text.size()) {
    if (!IsStop<Rules>(text[count])) {
      ++count;
      continue;
    }
    if (static_cast<unsigned char>(text[count]) < 0x80) {
      break;
    }
    const Character character = FirstCharacter(text.substr(count));
    if (character.size == 0) {
      throw ValueFault{"is not valid UTF-8"};
    }
    if (!Rules::IsCopied(character.code)) {
      break;
    }
    count += character.size;
  }
  return count;
}

/// Appends `text`, which contains a stop, as `Rules` prints it. Throws ValueFault if that is not
/// possible.
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
