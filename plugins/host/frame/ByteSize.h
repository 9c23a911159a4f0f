// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

namespace Kestrel::Host {

/// Formats a number of bytes in IEC units with one decimal, rounded to the nearest:
/// "1.5 KiB", "2.0 GiB". Less than 1 KiB has no decimal: "512 B". A negative number keeps its sign.
std::string FormatByteSize(std::int64_t bytes);

}  // namespace Kestrel::Host
