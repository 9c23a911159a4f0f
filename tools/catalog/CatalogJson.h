// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "tools/catalog/Catalog.h"

namespace Kestrel::Catalog {

/// The tree as canonical JSON: equal trees give equal bytes.
///
/// UTF-8, keys in byte order, a line for each key and element, two spaces a level, a last line end.
/// The structures become objects whose keys are the names of their members; enumerators become the
/// words of CatalogWords.h. Three more rules: the root has a key "format", the number of this
/// form; a constraint has those members only that have a meaning for its type; a result without
/// kind has no "kind".
///
/// Throws KestrelException when a string is not valid UTF-8 or a kind does not exist.
std::string WriteJson(const Tree& tree);

/// Reads what `WriteJson` has written; the result equals the tree that was written. The order of
/// keys and the spaces between tokens do not matter.
///
/// Throws KestrelException, which names the place, when the text is not JSON, is of another format,
/// lacks a key, or has an unknown key or a value of the wrong kind.
Tree ReadJson(std::string_view text);

}  // namespace Kestrel::Catalog
