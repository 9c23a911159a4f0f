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

namespace Kestrel::AutoCli {

/// What a writer makes text of, beside texts and bytes: so many blanks,
struct Blanks {
  std::size_t count;
};
/// a number in decimal, with a sign when it is negative,
struct Decimal {
  long value;
};
/// and a text with what the table has for each byte.
struct Escaped {
  std::string_view text;
  const EscapeTable& table;
};

/// Composes text in one buffer and hands it to a stream in large pieces.
///
/// The stream's width, fill, flags and locale do not change a byte: nothing is written through its
/// formatting operators. A writer ends by `Finish` or `HandOn`; one that is left by an exception
/// still hands on what was composed, so that the reader sees how far the work came. Once the
/// stream has failed, all further text is dropped; long walks ask `HasFailed` now and then.
///
/// The buffer is inside the object, which belongs on the stack and must not be part of a recursion.
class TextWriter {
 public:
  /// Writes to `out`, which must outlive the writer. No one else writes to it meanwhile.
  explicit TextWriter(std::ostream& out);

  /// Hands on and flushes what an exception left behind; what the stream throws now is dropped.
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

  /// Texts, bytes, Blanks, Decimals and Escaped texts one behind the other, for the price of one:
  /// whether there is room is asked once, and the place goes from one to the next in a register.
  template <typename... Pieces>
  void AppendAll(const Pieces&... pieces) {
    if ((MostBytes(pieces) + ...) > kCapacity - used_) {
      (AppendOne(pieces), ...);
      return;
    }
    char* place = buffer_ + used_;
    ((place = Put(pieces, place)), ...);
    used_ = static_cast<std::size_t>(place - buffer_);
  }

  /// The length of the number's text, without making it.
  static std::size_t Measure(Decimal number) {
    const bool isNegative = number.value < 0;
    const auto value = static_cast<unsigned long>(number.value);
    const unsigned long rest = isNegative ? 0 - value : value;
    // A number of n bits has n * log10(2) digits, or one more.
    const int bits = 64 - __builtin_clzl(rest | 1);
    const auto digits = static_cast<std::size_t>(bits * 1233 >> 12);
    return digits + (rest >= kPowersOfTen[digits] ? 1 : 0) + (isNegative ? 1 : 0);
  }

  void Repeat(char byte, std::size_t count) {
    if (count > kSlack || count > kCapacity - used_) {
      RepeatLong(byte, count);
      return;
    }
    // The bytes beyond `count` are overwritten or never sent; a fixed size needs no call.
    std::memset(buffer_ + used_, byte, kSlack);
    used_ += count;
  }

  /// The text, and blanks up to `width` bytes; a longer text is not cut.
  void AppendLeft(std::string_view text, std::size_t width) {
    Append(text);
    if (text.size() < width) {
      Repeat(' ', width - text.size());
    }
  }

  /// Hands on what was composed, without flushing the stream; the writer may go on.
  void HandOn();

  /// Hands on what was composed and flushes the stream: the one flush of a formatter.
  void Finish();

  /// Whether the stream refuses further text. Known after a buffer was handed on.
  bool HasFailed() const { return failed_; }

 private:
  static constexpr std::size_t kCapacity = 32 * 1024;
  static constexpr std::size_t kSlack = 32;
  static constexpr std::size_t kMaxIntLength = 20;
  static constexpr std::size_t kEscapedAtOnce = 1024;

  // The first is 0 instead of 1, so that 0 has a digit too.
  static constexpr std::array<unsigned long, 20> kPowersOfTen = [] {
    std::array<unsigned long, 20> powers{};
    for (unsigned long power = 10, i = 1; i < powers.size(); ++i, power *= 10) {
      powers[i] = power;
    }
    return powers;
  }();

  /// As memcpy, but without a call for texts as short as names and numbers are.
  static void Copy(char* to, const char* from, std::size_t size) {
    if (size > 32) {
      std::memcpy(to, from, size);
    } else if (size >= 16) {
      CopyEnds<16>(to, from, size);
    } else if (size >= 8) {
      CopyEnds<8>(to, from, size);
    } else if (size >= 4) {
      CopyEnds<4>(to, from, size);
    } else if (size > 0) {
      to[0] = from[0];
      to[size / 2] = from[size / 2];
      to[size - 1] = from[size - 1];
    }
  }

  /// Copies `size` bytes, `Half` to twice as many, as two blocks that may overlap.
  template <std::size_t Half>
  static void CopyEnds(char* to, const char* from, std::size_t size) {
    char first[Half];
    char last[Half];
    std::memcpy(first, from, Half);
    std::memcpy(last, from + size - Half, Half);
    std::memcpy(to, first, Half);
    std::memcpy(to + size - Half, last, Half);
  }

  /// How many bytes the piece takes at most; those of the slack may be overwritten besides.
  static std::size_t MostBytes(char /*byte*/) { return 1; }
  static std::size_t MostBytes(std::string_view text) { return text.size(); }
  static std::size_t MostBytes(Blanks blanks) { return std::min(blanks.count, kCapacity + 1); }
  static std::size_t MostBytes(Decimal /*number*/) { return kMaxIntLength; }
  static std::size_t MostBytes(const Escaped& escaped) {
    return escaped.text.size() * EscapeTable::kMaxLength;
  }

  /// Puts the piece to `place`, where there is room for it, and gives its end.
  static char* Put(char byte, char* place) {
    *place = byte;
    return place + 1;
  }
  static char* Put(std::string_view text, char* place) {
    Copy(place, text.data(), text.size());
    return place + text.size();
  }
  static char* Put(Blanks blanks, char* place) {
    if (blanks.count <= kSlack) {
      std::memset(place, ' ', kSlack);
    } else {
      std::memset(place, ' ', blanks.count);
    }
    return place + blanks.count;
  }
  static char* Put(Decimal number, char* place) {
    return std::to_chars(place, place + kMaxIntLength, number.value).ptr;
  }
  static char* Put(const Escaped& escaped, char* place) {
    return escaped.table.Escape(escaped.text, place);
  }

  void AppendOne(char byte) { Append(byte); }
  void AppendOne(std::string_view text) { Append(text); }
  void AppendOne(Blanks blanks) { Repeat(' ', blanks.count); }
  void AppendOne(Decimal number) {
    used_ = static_cast<std::size_t>(Put(number, Reserve(kMaxIntLength)) - buffer_);
  }
  void AppendOne(const Escaped& escaped);

  /// A place for `count` bytes, at most kCapacity, behind the text.
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
  bool settled_ = false;
  char buffer_[kCapacity + kSlack];
};

}  // namespace Kestrel::AutoCli
