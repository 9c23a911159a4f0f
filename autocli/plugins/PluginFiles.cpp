// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/plugins/PluginFiles.h"

#include <dirent.h>

#include <algorithm>
#include <memory>

namespace Kestrel::AutoCli {

namespace {

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};

// At least one byte, of any value, must precede the suffix.
bool HasSuffix(std::string_view path, std::string_view suffix) {
  return path.size() > suffix.size() &&
         path.compare(path.size() - suffix.size(), suffix.size(), suffix) == 0;
}

}  // namespace

PluginFileKind KindOfPluginFile(std::string_view path) {
  if (HasSuffix(path, ".so")) {
    return PluginFileKind::SharedLibrary;
  }
  return HasSuffix(path, ".xml") ? PluginFileKind::Descriptor : PluginFileKind::Other;
}

std::optional<std::vector<std::string>> ListDirectory(const std::string& dir) {
  const std::unique_ptr<DIR, DirectoryCloser> directory(opendir(dir.c_str()));
  if (directory == nullptr) {
    return std::nullopt;
  }
  std::vector<std::string> paths;
  while (const dirent64* const entry = readdir64(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      paths.push_back((dir + "/").append(name));
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

}  // namespace Kestrel::AutoCli
