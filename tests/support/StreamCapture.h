// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "support/MemoryFile.h"

namespace Kestrel::Testing {

/// Captures everything that this process or a child writes to one file descriptor, for as long as
/// the object lives. All its functions flush std::cout, std::cerr and the C streams.
class StreamCapture {
 public:
  /// `descriptor` is STDOUT_FILENO or STDERR_FILENO.
  explicit StreamCapture(int descriptor);
  ~StreamCapture();
  StreamCapture(const StreamCapture&) = delete;
  StreamCapture& operator=(const StreamCapture&) = delete;

  /// Returns what was written so far.
  std::string GetText();

 private:
  MemoryFile file_;
  int descriptor_;
  int original_;
};

/// Replaces standard input (file descriptor 0, stdin and std::cin) by a string for as long as the
/// object lives.
class ScopedInput {
 public:
  explicit ScopedInput(std::string_view text);
  ~ScopedInput();
  ScopedInput(const ScopedInput&) = delete;
  ScopedInput& operator=(const ScopedInput&) = delete;

 private:
  int original_;
};

}  // namespace Kestrel::Testing
