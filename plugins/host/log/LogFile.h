// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "plugins/host/frame/FileDescriptor.h"

namespace Kestrel::Host {

/// Reads the lines of a file from the last to the first, block by block, so that only the end of a
/// long log is read for its last few lines.
///
/// Lines added after the file was opened are ignored. The last line need not end with a line feed.
class LogFile {
 public:
  /// A longer line is an error: no log contains one, and it would have to be kept in memory.
  static constexpr std::size_t kMaxLineSize = std::size_t{64} << 20;

  /// Throws KestrelException with the reason if the file cannot be opened, is not a regular file,
  /// or is in /proc or /sys: pipes and devices could block, and a file that the kernel generates
  /// has no known end to start from.
  explicit LogFile(const std::string& path);

  /// The first call returns the last line of the file, and each further call returns the line
  /// before the one returned last, without the line feed. Returns nothing once the first line of
  /// the file has been returned. The view is valid until the next call. Throws KestrelException if
  /// the file cannot be read, has become shorter, or has a line longer than kMaxLineSize.
  std::optional<std::string_view> PreviousLine();

 private:
  std::string_view TakeLine(std::size_t first, std::size_t end);
  void RequireLineSize(std::size_t size) const;
  void Start();
  std::size_t ReadBlockBefore();
  void ReadAt(char* buffer, std::size_t size, std::uint64_t offset) const;

  std::string path_;
  FileDescriptor file_;
  std::uint64_t offset_;  // of the first byte of buffer_ in the file
  std::string buffer_;
  std::size_t end_ = 0;  // of the unreturned part of buffer_
  bool isStarted_ = false;
  bool hasFirstLine_;  // whether the first line is yet to be returned
};

}  // namespace Kestrel::Host
