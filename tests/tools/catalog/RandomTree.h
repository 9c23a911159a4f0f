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

/// Returns a copy of the tree in which one member of the tree or of one of its elements is
/// different. In a constraint, this may be a member that has no meaning for its type.
Tree MakeChangedTree(const Tree& tree, Testing::Random& random);

}  // namespace Kestrel::Catalog
