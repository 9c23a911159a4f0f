// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>

#include "vexil/NodePaths.h"

namespace Kestrel::Vexil {

/// How far typed words are from the path of a node; nothing when the path is not near.
///
/// Each typed word has to be near a name of the path, in order. Names may be missing, two
/// neighbours may be swapped, or written as one word or one as two. Words too many are accepted
/// before an otherwise good path, and after the exact path of a command.
std::optional<int> PathCost(const Words& typed, const NodePath& path);

}  // namespace Kestrel::Vexil
