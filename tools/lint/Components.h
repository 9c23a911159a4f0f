// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <vector>

namespace Kestrel::Lint {

/// The successors of each node of a directed graph.
using Graph = std::vector<std::vector<std::size_t>>;

/// Numbers the strongly connected components: two nodes have the same number if each can be reached
/// from the other.
std::vector<std::size_t> NumberComponents(const Graph& graph);

}  // namespace Kestrel::Lint
