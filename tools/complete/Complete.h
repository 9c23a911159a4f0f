// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kestrel/autocli/Dispatcher.h"
#include "tools/complete/Completion.h"
#include "tools/complete/CursorLine.h"
#include "tools/complete/DataValues.h"

namespace Kestrel::Complete {

/// What the word at the cursor may become, in the tree that `dispatcher` has loaded. Values from
/// data are left out when they take longer than the deadline. Throws what a plug-in's own
/// declaration throws.
Completion CompleteLine(const AutoCli::Dispatcher& dispatcher, const CursorLine& line,
                        Deadline deadline);

}  // namespace Kestrel::Complete
