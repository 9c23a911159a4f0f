// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Testing {

/// While it exists, notes the files and folders that the plug-in opens, and may let one of them
/// fail once. There is one at a time. It does not see what the C library opens by itself.
class FileWatch {
 public:
  FileWatch();
  /// The first attempt to open `path` fails with that error number.
  FileWatch(std::string path, int error);
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;
  ~FileWatch();

  /// The paths in byte order, each once.
  std::vector<std::string> GetOpened() const;

  /// Whether the failure has happened.
  bool HasFailed() const { return hasFailed_; }

  /// Returns the error number with which an attempt to open `path` is to fail, or 0.
  int Note(const char* path);

 private:
  std::vector<std::string> opened_;
  std::string path_;
  int error_ = 0;
  bool hasFailed_ = false;
};

}  // namespace Kestrel::Testing
