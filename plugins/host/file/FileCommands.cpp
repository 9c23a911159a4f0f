// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/file/FileCommands.h"

#include "plugins/host/frame/HostCommand.h"

namespace Kestrel::Host {

void RegisterFile(const std::shared_ptr<AutoCli::Namespace>& root) {
  const auto file = AddNamespace(root, "file", "Files and archives.");
#ifdef KESTREL_HOST_HAS_NETTLE
  file->RegisterNamespaceNode(NewFileChecksum(), "checksum");
#endif
#ifdef KESTREL_HOST_HAS_LIBARCHIVE
  file->RegisterNamespaceNode(NewFileMembers(), "members");
#endif
}

}  // namespace Kestrel::Host
