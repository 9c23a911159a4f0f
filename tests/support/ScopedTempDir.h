// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Kestrel::Testing {

/// A new empty folder. The destructor deletes it with all its contents.
class ScopedTempDir {
 public:
  ScopedTempDir();
  ~ScopedTempDir();
  ScopedTempDir(const ScopedTempDir&) = delete;
  ScopedTempDir& operator=(const ScopedTempDir&) = delete;

  /// Returns the absolute path of the folder.
  const std::string& GetPath() const { return path_; }

  /// Returns the absolute path of `name` in the folder, whether it exists or not.
  std::string GetPath(const std::string& name) const { return path_ + "/" + name; }

  /// Writes a file, creating the folders in its name, and returns its absolute path.
  std::string Write(const std::string& name, std::string_view text) const;

  /// Creates a folder and its parents, and returns its absolute path.
  std::string MakeDirectory(const std::string& name) const;

  /// Returns the contents of a file, or an empty string if there is no such file.
  std::string Read(const std::string& name) const;

 private:
  std::string path_;
};

}  // namespace Kestrel::Testing
