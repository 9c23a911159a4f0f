// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <algorithm>
#include <cstddef>
#include <streambuf>
#include <string>

namespace Kestrel::Testing {

/// Accepts a limited number of bytes and then fails, as a full disk does. Counts the writes that
/// it did not accept completely, and the flushes.
class LimitedBuffer : public std::streambuf {
 public:
  explicit LimitedBuffer(std::size_t limit) : limit_(limit) {}

  const std::string& GetText() const { return text_; }
  int GetRefusals() const { return refusals_; }
  int GetFlushes() const { return flushes_; }

 protected:
  int_type overflow(int_type byte) override {
    const char c = traits_type::to_char_type(byte);
    return xsputn(&c, 1) == 1 ? byte : traits_type::eof();
  }

  std::streamsize xsputn(const char* data, std::streamsize size) override {
    const std::size_t taken = std::min(limit_ - text_.size(), static_cast<std::size_t>(size));
    text_.append(data, taken);
    refusals_ += static_cast<std::streamsize>(taken) < size ? 1 : 0;
    return static_cast<std::streamsize>(taken);
  }

  int sync() override {
    ++flushes_;
    return 0;
  }

 private:
  std::size_t limit_;
  std::string text_;
  int refusals_ = 0;
  int flushes_ = 0;
};

}  // namespace Kestrel::Testing
