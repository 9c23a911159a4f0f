// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Kestrel::AutoCli {

/// Whether `c` may be part of a parameter's name.
inline bool IsNameByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
}

/// A string that remembers for each byte whether it came from the template or from a value, so that
/// a "$" in a value never begins a marker.
class MarkedText {
 public:
  MarkedText() = default;
  explicit MarkedText(std::string_view text) { AppendTemplate(text); }

  void AppendTemplate(std::string_view text) { Append(text, '\0'); }
  void AppendValue(std::string_view text) { Append(text, '\1'); }

  /// Appends the `length` bytes of `other` from `position` on.
  void Append(const MarkedText& other, std::size_t position, std::size_t length) {
    bytes_.append(other.bytes_, position, length);
    fromValue_.append(other.fromValue_, position, length);
  }
  void Append(const MarkedText& other) { Append(other, 0, other.Size()); }

  /// Removes everything after the first `size` bytes. `size` must not exceed `Size()`.
  void Truncate(std::size_t size) {
    bytes_.resize(size);
    fromValue_.resize(size);
  }

  const std::string& Bytes() const { return bytes_; }
  std::size_t Size() const { return bytes_.size(); }
  bool IsFromValue(std::size_t position) const { return fromValue_[position] != '\0'; }

 private:
  void Append(std::string_view text, char fromValue) {
    bytes_.append(text);
    fromValue_.append(text.size(), fromValue);
  }

  std::string bytes_;
  std::string fromValue_;  // 0 or 1 for each byte of `bytes_`
};

}  // namespace Kestrel::AutoCli
