// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>

namespace Kestrel::AutoCli {

/// Reads the decimal integer at the beginning of `text`. White space may precede the integer, and
/// it may have a sign; what follows it is ignored. Returns false and leaves `value` unchanged if
/// there is no integer or if it does not fit in 64 bits.
bool ReadLeadingInteger(const std::string& text, std::int64_t& value);

}  // namespace Kestrel::AutoCli
