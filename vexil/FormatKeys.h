// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vexil/ResultTypes.h"

namespace Kestrel::Vexil {

/// The keys of format parameters that have an effect when one of the library's formatters prints a
/// result of these types, the usual ones first. Nothing for every other formatter.
std::optional<std::vector<std::string>> ListFormatKeys(const std::string& formatter,
                                                       const std::vector<ResultType>& types);

/// The fields that the value of `key` may name: those of the type after the colon, or of all types;
/// empty when `key` does not choose fields.
std::vector<std::string> ListChoosableFields(const std::string& key,
                                             const std::vector<ResultType>& types);

/// The names in the value of such a key, without spaces around them.
std::vector<std::string> SplitFieldNames(const std::string& value);

}  // namespace Kestrel::Vexil
