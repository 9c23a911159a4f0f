// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "tools/catalog/Catalog.h"

namespace Kestrel::Vexil {

/// Returns the fields that a command's default formatter prints, in the order of printing: the
/// columns of a table, or the lines of `simple`. The other formatters print every field. Empty if
/// the command has no default formatter, or if its result is neither a structure nor a list of
/// structures.
std::vector<std::string> ColumnNames(const Catalog::Command& command);

}  // namespace Kestrel::Vexil
