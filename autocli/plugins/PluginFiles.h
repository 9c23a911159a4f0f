// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::AutoCli {

/// What kind of plug-in a file is, judged by its path alone.
enum class PluginFileKind {
  Other,          ///< no plug-in: to be passed over
  SharedLibrary,  ///< the whole path matches ".+\.so"
  Descriptor      ///< the whole path matches ".+\.xml"
};

/// The kind of the file `path`; the case of letters matters, a version after the suffix makes it
/// another file.
PluginFileKind KindOfPluginFile(std::string_view path);

/// The paths of all entries of the directory `dir`, each `dir` + "/" + name, in ascending byte
/// order; "." and ".." are left out, nothing else is. Nothing when `dir` cannot be opened. The
/// directory is closed again when this returns.
std::optional<std::vector<std::string>> ListDirectory(const std::string& dir);

}  // namespace Kestrel::AutoCli
