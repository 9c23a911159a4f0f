// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::AutoCli {

/// The kind of plug-in that the path of a file shows.
enum class PluginFileKind {
  Other,          ///< not a plug-in: to be skipped
  SharedLibrary,  ///< the whole path matches ".+\.so"
  Descriptor      ///< the whole path matches ".+\.xml"
};

/// Returns the kind of the file `path`. Case matters. A version after the suffix, as in "a.so.1",
/// makes it `Other`.
PluginFileKind KindOfPluginFile(std::string_view path);

/// Returns the path `dir` + "/" + name of every entry of the directory `dir` except "." and "..",
/// in ascending byte order. Nothing when `dir` cannot be opened.
std::optional<std::vector<std::string>> ListDirectory(const std::string& dir);

}  // namespace Kestrel::AutoCli
