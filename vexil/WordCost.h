// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Vexil {

/// What one edit of a word costs; the measure of all costs.
inline constexpr int kEditCost = 4;

/// How far a typed word is from a name; nothing when the name is not near. In ascending order: the
/// same word, another case, singular and plural, few edits (fewer in a short word), the beginning
/// of the name.
std::optional<int> WordCost(std::string_view typed, std::string_view name);

/// The first `limit` of those names that are nearest to `typed`, all at the same cost; empty when
/// none is near.
std::vector<std::string> NearestNames(std::string_view typed, const std::vector<std::string>& names,
                                      std::size_t limit);

}  // namespace Kestrel::Vexil
