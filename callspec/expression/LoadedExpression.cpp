// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Used by the library. Loads the module with Boost.Regex when the first expression is compiled.

#include "callspec/Expression.h"
#include "callspec/LibraryModule.h"

namespace Kestrel::CallSpec {
namespace {

using Compiler = const Expression*(const std::string&);

constexpr LibraryModule kModule = {KESTREL_EXPRESSION_MODULE, "Kestrel_CompileExpression",
                                   "expressions"};

}  // namespace

std::unique_ptr<const Expression> CompileExpression(const std::string& text) {
  static auto* const compile = reinterpret_cast<Compiler*>(LoadLibraryModule(kModule));
  return std::unique_ptr<const Expression>(compile(text));
}

}  // namespace Kestrel::CallSpec
