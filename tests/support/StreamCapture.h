// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Kestrel::Testing {

/// Takes everything that this process, or a child, writes to one descriptor, for as long as it
/// lives. std::cout, std::cerr and the C streams are flushed at both ends.
class StreamCapture {
 public:
  /// `descriptor` is STDOUT_FILENO or STDERR_FILENO.
  explicit StreamCapture(int descriptor);
  ~StreamCapture();
  StreamCapture(const StreamCapture&) = delete;
  StreamCapture& operator=(const StreamCapture&) = delete;

  /// What was written so far.
  std::string GetText();

 private:
  int descriptor_;
  int original_;
  int file_;
};

/// Lets standard input (descriptor 0, stdin and std::cin) begin anew with a text that then ends,
/// for as long as it lives.
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
