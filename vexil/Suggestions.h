// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "vexil/NodePaths.h"

namespace Kestrel::Vexil {

/// Returns at most three paths that the user may have meant by `typed`, the most similar first;
/// empty if none is similar. Each is a whole path, its words separated by a space.
std::vector<std::string> SuggestPaths(const std::vector<NodePath>& paths, const Words& typed);

/// Returns "Did you mean: A, B?", or an empty string if there are no suggestions.
std::string DidYouMean(const std::vector<std::string>& suggestions);

}  // namespace Kestrel::Vexil
