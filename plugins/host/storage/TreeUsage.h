// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace Kestrel::Host {

/// The space used by a file, or by a folder together with everything below it.
struct SpaceUsage {
  long diskSize = 0;      ///< The allocated space in bytes.
  long apparentSize = 0;  ///< The sum of the lengths in bytes.
  long files = 0;         ///< The number of files and folders.

  void Add(const SpaceUsage& other);
};

/// A folder or file in the result.
struct TreeEntry {
  std::string path;  ///< Starts with the path passed to MeasureTree.
  bool isFolder = false;
  bool isComplete = true;  ///< Whether everything below it could be read.
  SpaceUsage usage;
};

/// A folder that could not be read, or not completely.
struct UnreadFolder {
  std::string path;
  int error = 0;  ///< The first error that occurred.
};

struct TreeOptions {
  long depth = 0;  ///< The number of levels below the top that the result lists.
  bool listsFiles = false;
  bool crossesFilesystems = false;
};

struct TreeUsage {
  std::vector<TreeEntry> entries;    ///< Each folder follows its contents.
  std::vector<UnreadFolder> unread;  ///< In the order in which they were found.
};

/// Measures the space used by the folder at `path` and everything below it. A file with several
/// names is counted once, under the first name found. The walk needs neither a deep stack nor many
/// open files, and paths may have any length. Whatever is removed before the walk reaches it is not
/// counted. Throws KestrelException if `path` is not a folder that can be opened, or if a folder is
/// moved during the walk so that the walk cannot return to its parent.
TreeUsage MeasureTree(const std::string& path, const TreeOptions& options);

}  // namespace Kestrel::Host
