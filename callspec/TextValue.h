// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Kestrel::CallSpec {

/// Reads `text` as a decimal integer, by the rule of `strtoll` in the C locale: leading white space
/// and one sign may stand before the digits, and nothing may follow them (not even a blank or a
/// NUL). A number beyond 64 bits becomes the nearest bound. Returns false, and leaves `out` alone,
/// when the text is anything else.
bool ReadInteger(std::string_view text, std::int64_t& out);

/// Reads `text` as one of the boolean words, case-sensitively:
/// 1, yes, y, true, True, t, T and 0, no, n, false, False, f, F.
/// Returns false, and leaves `out` alone, when the text is anything else.
bool ReadBoolean(std::string_view text, bool& out);

/// `text` as a string; null stands for the empty text.
std::string TextOrEmpty(const char* text);

}  // namespace Kestrel::CallSpec
