// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Registers a command and then throws an exception; KESTREL_THROW_AS is the name of the function
// that throws.

#include <kestrel/autocli/PluginEntryPoint.h>

#include <stdexcept>

#include "modules/AnswerCommand.h"

namespace {

// An exception of a class that is unloaded together with the plug-in.
class Own {
 public:
  virtual ~Own() = default;
};

// Each plug-in built from this file uses one of these three functions.
[[maybe_unused]] void KestrelException() {
  throw Kestrel::KestrelException("the plug-in has no fuel");
}

[[maybe_unused]] void StandardException() { throw std::runtime_error("the plug-in has no oil"); }

[[maybe_unused]] void OwnObject() { throw Own(); }

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->SubNamespace("throwing")
      ->RegisterNamespaceNode(std::make_shared<AnswerCommand>("before the throw"), "early");
  KESTREL_THROW_AS();
}
