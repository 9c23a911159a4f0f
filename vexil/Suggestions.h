// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "vexil/NodePaths.h"

namespace Kestrel::Vexil {

/// The paths that the user may have meant by `typed`, at most three, the nearest first; empty when
/// none is near. Each is the whole path, its words separated by a space.
std::vector<std::string> SuggestPaths(const std::vector<NodePath>& paths, const Words& typed);

/// "Did you mean: A, B?", or nothing when there are no suggestions.
std::string DidYouMean(const std::vector<std::string>& suggestions);

}  // namespace Kestrel::Vexil
