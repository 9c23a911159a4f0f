// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kestrel/autocli/Dispatcher.h"
#include "tools/complete/Completion.h"
#include "tools/complete/CursorLine.h"
#include "tools/complete/DataValues.h"

namespace Kestrel::Complete {

/// Returns the possible completions of the word at the cursor, based on the tree that `dispatcher`
/// has loaded. Omits the values that another command lists if its output is incomplete at the
/// deadline. Throws the exceptions of a plug-in's declaration.
Completion CompleteLine(const AutoCli::Dispatcher& dispatcher, const CursorLine& line,
                        Deadline deadline);

}  // namespace Kestrel::Complete
