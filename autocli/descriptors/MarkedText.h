// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "autocli/process/TypedSecrets.h"

namespace Kestrel::AutoCli {

/// Whether `c` may be part of a parameter's name.
inline bool IsNameByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
}

/// A string that remembers for each byte whether it came from the template or from a value, so that
/// a "$" in a value never begins a marker.
class MarkedText {
 public:
  /// Where a byte came from. A bare value is not in quotes, so the shell may interpret some of its
  /// bytes. If it also ends a comment that it began, the shell would run the rest of the value as
  /// another command.
  enum class Origin : char { Template, Value, BareValue, ValueThatEndsItsComment };

  MarkedText() = default;
  explicit MarkedText(std::string_view text) { AppendTemplate(text); }
  MarkedText(const MarkedText&) = default;
  MarkedText(MarkedText&&) = default;
  MarkedText& operator=(const MarkedText&) = default;
  MarkedText& operator=(MarkedText&&) = default;
  ~MarkedText() { TypedSecrets::WipeIfHeld(bytes_); }

  void Reserve(std::size_t size) { bytes_.reserve(size); }

  void AppendTemplate(std::string_view text) { Append(text, Origin::Template); }
  void AppendValue(std::string_view text, Origin origin = Origin::Value) { Append(text, origin); }

  /// Appends the `length` bytes of `other` from `position` on.
  void Append(const MarkedText& other, std::size_t position, std::size_t length) {
    bytes_.append(other.bytes_, position, length);
    origins_.append(other.origins_, position, length);
  }
  void Append(const MarkedText& other) { Append(other, 0, other.Size()); }

  /// Removes everything after the first `size` bytes. `size` must not exceed `Size()`.
  void Truncate(std::size_t size) {
    bytes_.resize(size);
    origins_.resize(size);
  }

  const std::string& Bytes() const { return bytes_; }
  std::size_t Size() const { return bytes_.size(); }
  Origin OriginOf(std::size_t position) const { return static_cast<Origin>(origins_[position]); }
  bool IsFromValue(std::size_t position) const { return OriginOf(position) != Origin::Template; }

 private:
  void Append(std::string_view text, Origin origin) {
    bytes_.append(text);
    origins_.append(text.size(), static_cast<char>(origin));
  }

  std::string bytes_;
  std::string origins_;  // one for each byte of `bytes_`
};

}  // namespace Kestrel::AutoCli
