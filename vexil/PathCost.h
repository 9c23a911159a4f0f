// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>

#include "vexil/NodePaths.h"

namespace Kestrel::Vexil {

/// Returns how much typed words differ from the path of a node; nothing if they are not similar.
///
/// Each typed word has to be similar to a name of the path, in the same order. Names may be
/// missing, two adjacent names may be swapped, two may be written as one word, or one as two. Extra
/// words are accepted before the path, at most two, and after the exact path of a command.
std::optional<int> PathCost(const Words& typed, const NodePath& path);

}  // namespace Kestrel::Vexil
