// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string_view>

#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "tools/catalog/Catalog.h"

namespace Kestrel::Catalog {

// The kinds as people and files name them, in the words that descriptors use. `WordOf` throws
// KestrelException for a kind that does not exist; a word that names no kind yields nothing.

/// "string", "int", "bool", "flag", "string-list", "int-list" or "bool-list".
const char* WordOf(CallSpec::ParameterType kind);
std::optional<CallSpec::ParameterType> ParameterKindOf(std::string_view word);

/// "string", "int", "bool" or "structure"; for a list of them the word and "-list".
const char* WordOf(const ValueKind& kind);
std::optional<ValueKind> ValueKindOf(std::string_view word);

/// "none", "range", "intenum", "stringenum" or "regex".
const char* WordOf(CallSpec::ParameterConstraintType type);
std::optional<CallSpec::ParameterConstraintType> ConstraintTypeOf(std::string_view word);

}  // namespace Kestrel::Catalog
