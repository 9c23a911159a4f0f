// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <ostream>
#include <string_view>

#include "autocli/text/EscapeTable.h"
#include "autocli/text/ShortCopy.h"

namespace Kestrel::AutoCli {

// What TextWriter can append besides strings and bytes.

/// A number of spaces.
struct Spaces {
  std::size_t count;
};

/// A number in decimal, with a sign if it is negative.
struct Decimal {
  long value;
};

/// A string in which the bytes are replaced as in the table.
struct Escaped {
  std::string_view text;
  const EscapeTable& table;
};

/// Collects output in a buffer and writes it to a stream in large pieces.
///
/// The stream's width, fill, flags and locale have no effect, because its formatting operators are
/// not used. Call `Finish` or `Drain` at the end. If neither is called, because of an exception,
/// the destructor writes what was appended, so that the user sees how far the output came. Once the
/// stream has failed, all further output is dropped; long loops should check `HasFailed`.
///
/// The object contains the buffer of 32 KiB. Put it on the stack, but not into a recursive
/// function.
class TextWriter {
 public:
  /// Writes to `out`, which must outlive the writer. Call `Drain` before other code writes to
  /// `out`.
  explicit TextWriter(std::ostream& out);

  /// Calls `Finish`, unless nothing was appended since the last `Drain` or `Finish`. Ignores
  /// exceptions of the stream.
  ~TextWriter();

  TextWriter(const TextWriter&) = delete;
  TextWriter& operator=(const TextWriter&) = delete;

  void Append(char byte) {
    if (used_ == kCapacity) {
      Send();
    }
    buffer_[used_++] = byte;
  }

  void Append(std::string_view text) {
    if (text.size() > kCapacity - used_) {
      AppendLong(text);
      return;
    }
    Copy(buffer_ + used_, text.data(), text.size());
    used_ += text.size();
  }

  /// Appends strings, bytes, Spaces, Decimals and Escaped strings in order. Faster than one call
  /// for each: there is a single check for room, and the position stays in a register.
  template <typename... Pieces>
  void AppendAll(const Pieces&... pieces) {
    if ((MaxBytes(pieces) + ...) > kCapacity - used_) {
      (AppendOne(pieces), ...);
      return;
    }
    char* place = buffer_ + used_;
    ((place = Put(pieces, place)), ...);
    used_ = static_cast<std::size_t>(place - buffer_);
  }

  /// Returns how many bytes the number takes, without formatting it.
  static std::size_t Measure(Decimal number) {
    const bool isNegative = number.value < 0;
    const auto value = static_cast<unsigned long>(number.value);
    const unsigned long rest = isNegative ? 0 - value : value;
    // A number of n bits has n * log10(2) digits, rounded down, or one more. 1233 / 4096 is close
    // enough to log10(2).
    const int bits = 64 - __builtin_clzl(rest | 1);
    const auto digits = static_cast<std::size_t>(bits * 1233 >> 12);
    return digits + (rest >= kPowersOfTen[digits] ? 1 : 0) + (isNegative ? 1 : 0);
  }

  void Repeat(char byte, std::size_t count) {
    if (count > kSlack || count > kCapacity - used_) {
      RepeatLong(byte, count);
      return;
    }
    // A fixed size needs no function call. The bytes after `count` are overwritten or never sent.
    std::memset(buffer_ + used_, byte, kSlack);
    used_ += count;
  }

  /// Appends `text`, then spaces up to a total of `width` bytes. A longer string is not cut.
  void AppendLeft(std::string_view text, std::size_t width) {
    Append(text);
    if (text.size() < width) {
      Repeat(' ', width - text.size());
    }
  }

  /// Writes the contents of the buffer to the stream without flushing it. More may be appended.
  void Drain();

  /// Drains the buffer and flushes the stream. A formatter does this once, at the end.
  void Finish();

  /// Returns whether the stream had failed when the buffer was last written to it.
  bool HasFailed() const { return failed_; }

 private:
  static constexpr std::size_t kCapacity = 32 * 1024;
  static constexpr std::size_t kSlack = 32;
  static constexpr std::size_t kMaxIntLength = 20;
  static constexpr std::size_t kMaxEscapedAtOnce = 1024;

  // The first is 0 instead of 1, so that the number 0 has one digit.
  static constexpr std::array<unsigned long, 20> kPowersOfTen = []() {
    std::array<unsigned long, 20> powers{};
    for (unsigned long power = 10, i = 1; i < powers.size(); ++i, power *= 10) {
      powers[i] = power;
    }
    return powers;
  }();

  /// Like memcpy, but without a function call for short strings, such as names and numbers.
  static void Copy(char* to, const char* from, std::size_t size) {
    if (size > 32) {
      std::memcpy(to, from, size);
    } else if (size >= 16) {
      CopyEnds<16>(to, from, size);
    } else {
      CopyUpTo16(to, from, size);
    }
  }

  /// Returns an upper bound of the bytes that a piece takes. Up to kSlack more may be overwritten.
  static std::size_t MaxBytes(char /*byte*/) { return 1; }
  static std::size_t MaxBytes(std::string_view text) { return text.size(); }
  static std::size_t MaxBytes(Spaces spaces) { return std::min(spaces.count, kCapacity + 1); }
  static std::size_t MaxBytes(Decimal /*number*/) { return kMaxIntLength; }
  static std::size_t MaxBytes(const Escaped& escaped) {
    return escaped.text.size() * EscapeTable::kMaxLength;
  }

  /// Writes the piece to `place`, where there must be room, and returns its end.
  static char* Put(char byte, char* place) {
    *place = byte;
    return place + 1;
  }
  static char* Put(std::string_view text, char* place) {
    Copy(place, text.data(), text.size());
    return place + text.size();
  }
  static char* Put(Spaces spaces, char* place) {
    if (spaces.count <= kSlack) {
      std::memset(place, ' ', kSlack);
    } else {
      std::memset(place, ' ', spaces.count);
    }
    return place + spaces.count;
  }
  static char* Put(Decimal number, char* place) {
    return std::to_chars(place, place + kMaxIntLength, number.value).ptr;
  }
  static char* Put(const Escaped& escaped, char* place) {
    return escaped.table.Escape(escaped.text, place);
  }

  void AppendOne(char byte) { Append(byte); }
  void AppendOne(std::string_view text) { Append(text); }
  void AppendOne(Spaces spaces) { Repeat(' ', spaces.count); }
  void AppendOne(Decimal number) {
    used_ = static_cast<std::size_t>(Put(number, Reserve(kMaxIntLength)) - buffer_);
  }
  void AppendOne(const Escaped& escaped);

  /// Makes room for `count` bytes, at most kCapacity, and returns where they go.
  char* Reserve(std::size_t count) {
    if (count > kCapacity - used_) {
      Send();
    }
    return buffer_ + used_;
  }

  void AppendLong(std::string_view text);
  void RepeatLong(char byte, std::size_t count);
  void Send();
  void WriteOut(std::string_view text);

  std::ostream& out_;
  std::size_t used_ = 0;
  bool failed_;
  bool isDrained_ = false;
  char buffer_[kCapacity + kSlack];
};

}  // namespace Kestrel::AutoCli
