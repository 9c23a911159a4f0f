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

/// The lines of a file, from the last one to the first, read block by block: to get the last few
/// lines of a long log, only its end is read.
///
/// Lines that are added after the file was opened are ignored. A last line without a newline is a
/// line like the others.
class LogFile {
 public:
  /// A longer line is an error: no log has one, and all of it would have to be in memory.
  static constexpr std::size_t kMaxLineSize = std::size_t{64} << 20;

  /// Throws KestrelException with the system's text if the file cannot be opened, and if it is not
  /// a regular file: pipes and devices could block, and files in /proc and /sys have no end to
  /// start from.
  explicit LogFile(const std::string& path);

  /// The line before the one that was returned last, without its newline, until the next call;
  /// nothing before the first line. Throws KestrelException when the file cannot be read, became
  /// shorter in the meantime, or has a line of more than kMaxLineSize.
  std::optional<std::string_view> PreviousLine();

 private:
  void Start();
  std::size_t ReadBlockBefore();
  void ReadAt(char* buffer, std::size_t size, std::uint64_t offset) const;

  std::string path_;
  FileDescriptor file_;
  std::uint64_t offset_;  // in the file, of the first byte of buffer_
  std::string buffer_;
  std::size_t end_ = 0;  // of what has not been returned, in buffer_
  bool isStarted_ = false;
  bool hasFirstLine_;  // which has no newline before it, and has not been returned
};

}  // namespace Kestrel::Host
