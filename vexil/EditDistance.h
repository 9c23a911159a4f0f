// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string_view>

namespace Kestrel::Vexil {

/// Returns the least number of edits that turn one string into the other. An edit inserts, removes
/// or replaces a byte, or swaps two adjacent bytes; no byte is edited twice.
std::size_t EditDistance(std::string_view left, std::string_view right);

}  // namespace Kestrel::Vexil
