// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "tools/catalog/Catalog.h"

namespace Kestrel::Catalog {

/// Returns the tree as canonical JSON: equal trees result in equal bytes.
///
/// The JSON is UTF-8 with keys in byte order, a line for each key and element, two spaces for each
/// level, and a final line feed. The structs of Catalog.h become objects whose keys are the names
/// of their members; kinds and types become words (see CatalogWords.h). There are three more rules:
/// the root has a key "format" with the version number of the format; a constraint has only the
/// members that are meaningful for its type; a result without a kind has no "kind".
///
/// Throws KestrelException if a string is not valid UTF-8 or a kind does not exist.
std::string WriteJson(const Tree& tree);

/// Reads the output of `WriteJson` and returns an equal tree. The order of keys and the white space
/// between tokens do not matter.
///
/// Throws KestrelException, naming the place, if the string is not JSON, has another format
/// version, lacks a key, or has an unknown key or a value of the wrong kind.
Tree ReadJson(std::string_view text);

}  // namespace Kestrel::Catalog
