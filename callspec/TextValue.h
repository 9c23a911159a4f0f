// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Kestrel::CallSpec {

/// Reads `text` as a decimal integer, as `strtoll` does in the C locale: optional white space, an
/// optional sign, then digits up to the end of `text`. A number that does not fit into 64 bits is
/// replaced by the nearest one that does. Returns false and leaves `out` unchanged when `text` is
/// anything else.
bool ReadInteger(std::string_view text, std::int64_t& out);

/// Reads `text` as a boolean word: 1, yes, y, true, True, t and T for true; 0, no, n, false, False,
/// f and F for false. Returns false and leaves `out` unchanged when `text` is anything else.
bool ReadBoolean(std::string_view text, bool& out);

/// Returns `text` as a string; null counts as the empty string.
std::string TextOrEmpty(const char* text);

}  // namespace Kestrel::CallSpec
