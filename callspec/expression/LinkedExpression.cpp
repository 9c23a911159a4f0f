// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Used by programs that link the library's object files instead of the shared library. Such
// programs contain Boost.Regex, so there is no module to load.

#include "callspec/expression/BoostExpression.h"

namespace Kestrel::CallSpec {

std::unique_ptr<const Expression> CompileExpression(const std::string& text) {
  return std::unique_ptr<const Expression>(Kestrel_CompileExpression(text));
}

}  // namespace Kestrel::CallSpec
