// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Kestrel::Testing {

/// A new empty folder that goes, with all that is in it, when the object does.
class ScopedTempDir {
 public:
  ScopedTempDir();
  ~ScopedTempDir();
  ScopedTempDir(const ScopedTempDir&) = delete;
  ScopedTempDir& operator=(const ScopedTempDir&) = delete;

  /// The absolute path of the folder.
  const std::string& GetPath() const { return path_; }

  /// The absolute path of `name` within the folder, whether it exists or not.
  std::string GetPath(const std::string& name) const { return path_ + "/" + name; }

  /// Writes a file, making the folders that its name mentions, and returns its absolute path.
  std::string Write(const std::string& name, std::string_view text) const;

  /// Makes a folder and those above it, and returns its absolute path.
  std::string MakeDirectory(const std::string& name) const;

  /// The content of a file, empty when there is none.
  std::string Read(const std::string& name) const;

 private:
  std::string path_;
};

}  // namespace Kestrel::Testing
