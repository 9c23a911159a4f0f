// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/Random.h"
#include "tools/catalog/Catalog.h"

namespace Kestrel::Catalog {

/// Returns a random tree. It may contain strings with all kinds of characters, every kind of
/// parameter, constraint and value, the limits of integers, and empty lists. Its namespaces,
/// commands and faults are sorted by path.
Tree MakeRandomTree(Testing::Random& random);

/// Returns the tree with a change in one member of one structure, which may be a member that is
/// meaningless for the type of its constraint.
Tree MakeChangedTree(const Tree& tree, Testing::Random& random);

}  // namespace Kestrel::Catalog
