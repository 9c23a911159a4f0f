// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "autocli/text/ShortCopy.h"
#include "autocli/text/TextWriter.h"

namespace Kestrel::Formats {

using AutoCli::Decimal;
using AutoCli::Spaces;

/// Keeps output in memory until it is known that all of it can be printed.
///
/// The memory consists of blocks of growing size, so appending never copies earlier output.
class TextBuffer {
 public:
  void Append(char byte) {
    *Reserve(1) = byte;
    ++end_;
  }

  void Append(std::string_view text) {
    if (text.size() > kMaxShort || Room() < kMaxShort) {
      return AppendLong(text);
    }
    CopyShort(end_, text.data(), text.size());
    end_ += text.size();
  }

  /// Appends strings, bytes, Spaces and Decimals in order. Faster than one call for each, because
  /// there is a single check for room.
  template <typename... Pieces>
  void AppendAll(const Pieces&... pieces) {
    if (((MaxBytes(pieces) <= kMaxShort) && ...)) {
      char* place = Reserve(sizeof...(pieces) * kMaxShort);
      ((place = Put(pieces, place)), ...);
      end_ = place;
    } else {
      (Append(pieces), ...);
    }
  }

  void Append(Decimal number) { end_ = Put(number, Reserve(kMaxDecimal)); }

  void Append(Spaces spaces);

  /// Removes the byte that was appended last, by one of the operations above.
  void RemoveLast() { --end_; }

  /// Writes the output to `out` and flushes it. Stops as soon as the stream fails.
  void WriteTo(std::ostream& out) const;

  /// Returns a copy of the output.
  std::string ToString() const;

  /// Removes all output.
  void Clear();

 private:
  struct Block {
    std::unique_ptr<char[]> bytes;
    std::size_t size;
  };

  static constexpr std::size_t kMaxShort = 64;
  static constexpr std::size_t kMaxDecimal = 20;
  static constexpr std::size_t kFirstBlock = std::size_t{4} << 10U;
  static constexpr std::size_t kMaxBlock = std::size_t{1} << 20U;

  /// The numbers from 00 to 99.
  static constexpr std::array<char, 200> kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
      pairs[2 * i] = static_cast<char>('0' + i / 10);
      pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
  }();

  static std::size_t MaxBytes(char /*byte*/) { return 1; }
  static std::size_t MaxBytes(std::string_view text) { return text.size(); }
  static std::size_t MaxBytes(Decimal /*number*/) { return kMaxDecimal; }
  static std::size_t MaxBytes(Spaces spaces) { return spaces.count; }

  /// Writes a piece to `place`, where there is room for kMaxShort bytes, and returns its end.
  static char* Put(char byte, char* place) {
    *place = byte;
    return place + 1;
  }
  static char* Put(std::string_view text, char* place) {
    CopyShort(place, text.data(), text.size());
    return place + text.size();
  }
  static char* Put(Spaces spaces, char* place) {
    std::memset(place, ' ', kMaxShort);  // a fixed size needs no function call
    return place + spaces.count;
  }
  static char* Put(Decimal number, char* place);

  /// Writes the last digits of `number` before `at`, two at a time, and returns the others: a
  /// number below 100. Moves `at` to the first of them.
  template <typename Number>
  static Number PutPairs(Number number, char*& at);

  /// Like memcpy, but without a function call. Up to kMaxShort bytes at `to` may be overwritten.
  [[gnu::always_inline]] static void CopyShort(char* to, const char* from, std::size_t size) {
    if (size > 16) {
      std::memcpy(to, from, 16);
      std::memcpy(to + size - 16, from + size - 16, 16);
      if (size > 32) {
        std::memcpy(to + 16, from + 16, 16);
        std::memcpy(to + size - 32, from + size - 32, 16);
      }
    } else {
      AutoCli::CopyUpTo16(to, from, size);
    }
  }

  std::size_t Room() const { return static_cast<std::size_t>(limit_ - end_); }
  std::size_t Used() const { return static_cast<std::size_t>(end_ - block_.get()); }

  /// Makes room for `count` bytes and returns where to write them.
  char* Reserve(std::size_t count) {
    if (Room() < count) {
      AddBlock(count);
    }
    return end_;
  }

  template <typename Use>
  void ForEachPart(const Use& use) const;

  void AppendLong(std::string_view text);
  void AddBlock(std::size_t atLeast);

  std::vector<Block> full_;
  std::unique_ptr<char[]> block_;
  char* end_ = nullptr;    // of the text in `block_`
  char* limit_ = nullptr;  // of `block_`
};

template <typename Number>
Number TextBuffer::PutPairs(Number number, char*& at) {
  for (; number >= 100; number /= 100) {
    at -= 2;
    std::memcpy(at, &kDigitPairs[number % 100 * 2], 2);
  }
  return number;
}

// Prints two digits at a time, from the last ones on.
inline char* TextBuffer::Put(Decimal number, char* place) {
  const bool isNegative = number.value < 0;
  const auto value = static_cast<unsigned long>(number.value);
  const unsigned long magnitude = isNegative ? 0 - value : value;
  *place = '-';
  char* const end = place + AutoCli::TextWriter::Measure(number);
  char* at = end;
  // Most numbers fit into 32 bits, which are divided faster.
  const auto rest = magnitude <= UINT32_MAX ? PutPairs(static_cast<std::uint32_t>(magnitude), at)
                                            : static_cast<std::uint32_t>(PutPairs(magnitude, at));
  if (rest >= 10) {
    std::memcpy(at - 2, &kDigitPairs[rest * 2], 2);
  } else {
    at[-1] = static_cast<char>('0' + rest);
  }
  return end;
}

}  // namespace Kestrel::Formats
