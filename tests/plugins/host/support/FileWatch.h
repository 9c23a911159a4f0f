// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Testing {

/// While a watch exists, it records which files and folders this program and its plug-ins try to
/// open, and can make one of these attempts fail. Only one watch may exist at a time. A watch does
/// not see files that the C library itself opens.
class FileWatch {
 public:
  FileWatch();
  /// Makes the first attempt to open `path` fail with the error number `error`.
  FileWatch(std::string path, int error);
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;
  ~FileWatch();

  /// Returns the paths of these attempts, in byte order and each only once.
  std::vector<std::string> GetOpened() const;

  /// Returns whether the watch has made that attempt fail.
  bool HasFailed() const { return hasFailed_; }

  /// Records an attempt to open `path`. Returns the error number with which it must fail, or 0 if
  /// it need not fail.
  int Note(const char* path);

 private:
  std::vector<std::string> opened_;
  std::string path_;
  int error_ = 0;
  bool hasFailed_ = false;
};

}  // namespace Kestrel::Testing
