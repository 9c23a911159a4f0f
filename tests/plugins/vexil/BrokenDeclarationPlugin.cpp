// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Registers a command that throws when it is asked for its parameters.

#include <kestrel/autocli/PluginEntryPoint.h>

#include <memory>

#include "modules/AnswerCommand.h"

namespace {

class BrokenCommand : public AnswerCommand {
 public:
  BrokenCommand() : AnswerCommand("never") {}

  std::shared_ptr<Kestrel::CallSpec::InputSpec> GetInputSpecInternal() override {
    throw Kestrel::KestrelException("the parameters are lost");
  }
};

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->SubNamespace("broken")->RegisterNamespaceNode(std::make_shared<BrokenCommand>(), "get");
}
