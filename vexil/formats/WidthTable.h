// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>

namespace Kestrel::Formats {

/// The first character of each run of characters that have one WidthClass, in ascending order. The
/// lowest two bits contain the class, the others the character.
extern const std::uint32_t kWidthRuns[];
extern const std::size_t kWidthRunCount;

}  // namespace Kestrel::Formats
