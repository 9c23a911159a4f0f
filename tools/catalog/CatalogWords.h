// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string_view>

#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "tools/catalog/Catalog.h"

namespace Kestrel::Catalog {

// The words for kinds, the same as in descriptors if they occur there. `WordOf` throws
// KestrelException for a kind that does not exist. The inverse functions return nothing for an
// unknown word.

/// Returns "string", "int", "bool", "flag", "string-list", "int-list" or "bool-list".
const char* WordOf(CallSpec::ParameterType kind);
std::optional<CallSpec::ParameterType> ParameterKindOf(std::string_view word);

/// Returns "string", "int", "bool" or "structure"; for a list of them, with "-list" appended.
const char* WordOf(const ValueKind& kind);
std::optional<ValueKind> ValueKindOf(std::string_view word);

/// Returns "none", "range", "intenum", "stringenum" or "regex".
const char* WordOf(CallSpec::ParameterConstraintType type);
std::optional<CallSpec::ParameterConstraintType> ConstraintTypeOf(std::string_view word);

}  // namespace Kestrel::Catalog
