// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Kestrel::MetaObj {

/// The name of a field, and numbers for a fast comparison: its length, and its first and last eight
/// bytes (four, two or one of a shorter name). The numbers determine a name of up to 16 bytes. The
/// name is not copied and must outlive this object.
class FieldName {
 public:
  explicit FieldName(std::string_view text) : text_(text) {
    if (text.size() >= sizeof(std::uint64_t)) {
      Read<std::uint64_t>();
    } else if (text.size() >= sizeof(std::uint32_t)) {
      Read<std::uint32_t>();
    } else if (text.size() >= sizeof(std::uint16_t)) {
      Read<std::uint16_t>();
    } else if (!text.empty()) {
      Read<std::uint8_t>();
    }
  }

  std::string_view Text() const { return text_; }

  /// Whether the numbers determine the name.
  bool IsShort() const { return text_.size() <= 2 * sizeof(std::uint64_t); }

  /// Whether the numbers are equal. For short names: whether the names are equal.
  bool HasSameNumbers(const FieldName& other) const {
    return first_ == other.first_ && last_ == other.last_ && text_.size() == other.text_.size();
  }

  bool operator==(const FieldName& other) const {
    return HasSameNumbers(other) && (IsShort() || text_ == other.text_);
  }

 private:
  template <typename Number>
  void Read() {
    Number first;
    Number last;
    std::memcpy(&first, text_.data(), sizeof first);
    std::memcpy(&last, text_.data() + text_.size() - sizeof last, sizeof last);
    first_ = first;
    last_ = last;
  }

  std::string_view text_;
  std::uint64_t first_ = 0;
  std::uint64_t last_ = 0;
};

}  // namespace Kestrel::MetaObj
