// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Kestrel::AutoCli {

/// The replacement of each byte in an escaped string. Tables are made at compile time.
class EscapeTable {
 public:
  /// The length of the longest replacement.
  static constexpr std::size_t kMaxLength = 7;

  /// Replaces each byte by itself.
  constexpr EscapeTable() {
    for (std::size_t byte = 0; byte < texts_.size(); ++byte) {
      texts_[byte][0] = static_cast<char>(byte);
      lengths_[byte] = 1;
    }
  }

  /// Replaces `byte` by `text`, of 2 to kMaxLength bytes. A byte with a replacement of length 1
  /// counts as not replaced.
  constexpr EscapeTable& Set(unsigned char byte, std::string_view text) {
    lengths_[byte] = static_cast<std::uint8_t>(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
      texts_[byte][i] = text[i];
    }
    return *this;
  }

  /// Returns the length of `text` after escaping.
  std::size_t Measure(std::string_view text) const {
    std::size_t length = 0;
    for (const char byte : text) {
      length += lengths_[static_cast<unsigned char>(byte)];
    }
    return length;
  }

  /// Writes `text`, escaped, to `place` and returns the end of what was written. May overwrite up
  /// to kMaxLength more bytes.
  char* Escape(std::string_view text, char* place) const {
    const char* at = text.data();
    const char* const end = at + text.size();
    for (; static_cast<std::size_t>(end - at) >= kGroup; at += kGroup) {
      if (IsPlain(at)) {
        std::memcpy(place, at, kGroup);
        place += kGroup;
      } else {
        place = Put(at, kGroup, place);
      }
    }
    return Put(at, static_cast<std::size_t>(end - at), place);
  }

 private:
  // The size of a group in bytes. Most groups contain no byte that is replaced.
  static constexpr std::size_t kGroup = 8;

  /// Whether none of the kGroup bytes is replaced.
  bool IsPlain(const char* bytes) const {
    unsigned lengths = 0;
    for (std::size_t i = 0; i < kGroup; ++i) {
      lengths |= lengths_[static_cast<unsigned char>(bytes[i])];
    }
    return lengths == 1;
  }

  // No branch depends on the bytes, so none is mispredicted.
  char* Put(const char* bytes, std::size_t count, char* place) const {
    for (std::size_t i = 0; i < count; ++i) {
      const auto index = static_cast<unsigned char>(bytes[i]);
      std::memcpy(place, texts_[index].data(), kMaxLength + 1);
      place += lengths_[index];
    }
    return place;
  }

  std::array<std::uint8_t, 256> lengths_{};
  std::array<std::array<char, kMaxLength + 1>, 256> texts_{};
};

}  // namespace Kestrel::AutoCli
