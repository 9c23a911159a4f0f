// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ctime>
#include <functional>
#include <optional>
#include <string>

namespace Kestrel::Host {

/// What an archive stores about one of its members.
struct ArchiveMember {
  std::string name;
  std::string kind;  ///< "file", "folder", "link", "hardlink", "pipe", "socket", "device".
  std::string mode;  ///< As in "-rw-r--r--".
  std::string user;  ///< Empty if the archive does not contain the name.
  std::string group;
  long userId = 0;
  long groupId = 0;
  long size = 0;                        ///< The size of the content in bytes.
  std::optional<std::time_t> modified;  ///< None if the archive does not say.
  std::string target;                   ///< The target of a link; empty for other members.
};

/// Calls `visit` for each member of an archive, in the archive's order. The archive is a zip
/// archive, or a tar archive that may be compressed by gzip, bzip2, xz or zstd. The format is
/// recognized by the content of the file, not by its name. Throws KestrelException if the file is
/// anything else or cannot be read completely.
void VisitArchive(const std::string& path, const std::function<void(const ArchiveMember&)>& visit);

}  // namespace Kestrel::Host
