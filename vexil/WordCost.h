// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Vexil {

/// The cost of one edit of a word, in the unit of all costs.
inline constexpr int kEditCost = 4;

/// Returns how much a typed word differs from a name; nothing if they are not similar. The cost
/// increases in this order: the same word, a different case, singular instead of plural or the
/// reverse, one edit, a prefix of the name, several edits. A short word allows fewer edits.
std::optional<int> WordCost(std::string_view typed, std::string_view name);

/// Returns the names that are most similar to `typed`, all at the same cost, but at most `limit`.
/// Empty if none is similar.
std::vector<std::string> NearestNames(std::string_view typed, const std::vector<std::string>& names,
                                      std::size_t limit);

}  // namespace Kestrel::Vexil
