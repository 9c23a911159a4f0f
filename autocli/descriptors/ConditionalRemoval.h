// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "autocli/descriptors/MarkedText.h"

namespace Kestrel::AutoCli {

/// Makes one pass through `text` and removes the conditionals found, each with the braces nested
/// in it. Braces and "$" that a value brought in do not count. Returns whether anything was
/// removed; then the next pass may meet more.
///
/// A pass takes time linear in the size of the text. A template as people write it takes one or two
/// passes. Only a nest in which every removal opens another block takes a pass for each block.
bool RemoveConditionalsOnce(MarkedText& text);

}  // namespace Kestrel::AutoCli
