// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstring>
#include <streambuf>

namespace Kestrel::Testing {

/// Counts the bytes and lines that are written to it and stores nothing.
class CountingBuffer : public std::streambuf {
 public:
  std::size_t bytes = 0;
  std::size_t lines = 0;

 protected:
  std::streamsize xsputn(const char* data, std::streamsize size) override {
    bytes += static_cast<std::size_t>(size);
    const char* const end = data + size;
    while (data != end) {
      const void* const found = std::memchr(data, '\n', static_cast<std::size_t>(end - data));
      lines += found == nullptr ? 0 : 1;
      data = found == nullptr ? end : static_cast<const char*>(found) + 1;
    }
    return size;
  }

  int_type overflow(int_type letter) override {
    if (!traits_type::eq_int_type(letter, traits_type::eof())) {
      const char byte = traits_type::to_char_type(letter);
      xsputn(&byte, 1);
    }
    return traits_type::not_eof(letter);
  }
};

}  // namespace Kestrel::Testing
