// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// When its command runs, calls a function that another plug-in offers.

#include <kestrel/autocli/PluginEntryPoint.h>

#include "modules/AnswerCommand.h"

extern "C" const char* LentText();

namespace {

class BorrowingCommand : public AnswerCommand {
 public:
  BorrowingCommand() : AnswerCommand("nothing") {}

  void ExecuteInternal(const std::shared_ptr<Kestrel::CallSpec::Input>& /*input*/,
                       const std::shared_ptr<Kestrel::CallSpec::Output>& output) override {
    output->SetRootObject(Kestrel::MetaObj::MetaString::New(LentText()));
  }
};

}  // namespace

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  root->RegisterNamespaceNode(std::make_shared<BorrowingCommand>(), "borrower");
}
