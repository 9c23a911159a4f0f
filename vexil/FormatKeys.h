// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vexil/ResultTypes.h"

namespace Kestrel::Vexil {

/// Returns the format parameters that have an effect if `formatter`, one of the library's, prints a
/// result of these types. The most common parameters come first. Returns nothing for any other
/// formatter.
std::optional<std::vector<std::string>> ListFormatKeys(const std::string& formatter,
                                                       const std::vector<ResultType>& types);

/// Whether `formatter` is one of the tool's own formatters, which have the same keys for all
/// results.
bool IsToolFormatter(const std::string& formatter);

/// Returns the fields that the value of `key` may contain: those of the type after the colon, or of
/// all types. Empty if `key` does not choose fields.
std::vector<std::string> ListChoosableFields(const std::string& key,
                                             const std::vector<ResultType>& types);

/// Returns the names in the value of a key that chooses fields, without the spaces around them.
std::vector<std::string> SplitFieldNames(const std::string& value);

}  // namespace Kestrel::Vexil
