// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/DeclaredResult.h"

#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/autocli/OptionParser.h"
#include "kestrel/callspec/OutputSpec.h"
#include "vexil/FindNode.h"

namespace Kestrel::Vexil {

std::shared_ptr<MetaObj::MetaObject> FindDeclaredResult(const AutoCli::Dispatcher& dispatcher,
                                                        int argc, const char* const* argv) {
  AutoCli::OptionParser parser;
  parser.ParseArgv(argc, argv);
  if (parser.HasDispatcherParameter("input")) {
    return nullptr;
  }
  const auto words = parser.GetCommandPath();
  const auto node = FindNode(dispatcher.GetRootNamespace(), Words(words.begin(), words.end()));
  const auto command = std::dynamic_pointer_cast<AutoCli::CommandSpec>(node);
  return command == nullptr ? nullptr : command->GetOutputSpec()->GetRootObject();
}

}  // namespace Kestrel::Vexil
