// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/Random.h"
#include "tools/catalog/Catalog.h"

namespace Kestrel::Catalog {

/// A tree with something of everything: strings of all kinds of characters, every kind of
/// parameter, constraint and value, the limits of integers, empty lists. Its paths are in order.
Tree MakeRandomTree(Testing::Random& random);

/// The tree with one member of one structure changed, even one that has no meaning for the type of
/// its constraint.
Tree MakeChangedTree(const Tree& tree, Testing::Random& random);

}  // namespace Kestrel::Catalog
