// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Registers a command that has the name of the plug-in's file, so that copies of the plug-in can be
// told apart.

#include <dlfcn.h>
#include <kestrel/autocli/PluginEntryPoint.h>

#include "modules/AnswerCommand.h"

namespace {

// Returns the file's name up to its last dot, without the other dots.
std::string FileName() {
  Dl_info info = {};
  dladdr(reinterpret_cast<void*>(&FileName), &info);
  const std::string path = info.dli_fname;
  const std::string::size_type start = path.rfind('/') + 1;
  std::string name;
  for (const char c : path.substr(start, path.rfind('.') - start)) {
    if (c != '.') {
      name += c;
    }
  }
  return name;
}

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->RegisterNamespaceNode(std::make_shared<AnswerCommand>(FileName()), FileName());
}
