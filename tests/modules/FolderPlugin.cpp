// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Registers nothing, and makes the root folder the working directory of the process.

#include <kestrel/KestrelException.h>
#include <kestrel/autocli/PluginEntryPoint.h>
#include <unistd.h>

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> /*root*/) {
  if (chdir("/") != 0) {
    throw Kestrel::KestrelException("Unable to change the current folder");
  }
}
