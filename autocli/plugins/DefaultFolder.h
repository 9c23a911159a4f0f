// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Kestrel::AutoCli {

/// Marks plug-ins that were found in a default folder, before they are initialised.
struct DefaultFolder {
  template <class FilePlugin>
  static void Mark(FilePlugin& plugin) {
    plugin.isInDefaultFolder_ = true;
  }
};

}  // namespace Kestrel::AutoCli
