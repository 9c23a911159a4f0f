// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "autocli/descriptors/MarkedText.h"

namespace Kestrel::AutoCli {

/// Makes one pass through `text` and removes each conditional that it finds (a marker `$if{...}`),
/// together with the blocks in braces nested in it. A "$", "{" or "}" from a value is an ordinary
/// byte. Returns whether anything was removed; if so, the next pass may find more.
///
/// A pass takes time linear in the size of the text. A template as people write it takes one or two
/// passes. Only a template in which every removal opens another nested block takes one pass for
/// each block.
bool RemoveConditionalsOnce(MarkedText& text);

}  // namespace Kestrel::AutoCli
