// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// For programs that link the objects of the library instead of the library: there is no module.

#include "callspec/expression/BoostExpression.h"

namespace Kestrel::CallSpec {

std::unique_ptr<const Expression> CompileExpression(const std::string& text) {
  return std::unique_ptr<const Expression>(Kestrel_CompileExpression(text));
}

}  // namespace Kestrel::CallSpec
