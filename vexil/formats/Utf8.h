// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "autocli/text/Utf8.h"

namespace Kestrel::Formats {

using AutoCli::AppendCharacter;
using AutoCli::Character;
using AutoCli::FirstCharacter;

/// The digits of hexadecimal numbers.
inline constexpr char kLowerDigits[] = "0123456789abcdef";
inline constexpr char kUpperDigits[] = "0123456789ABCDEF";

/// Returns `number` in hexadecimal, with zeros before it if it has fewer digits than `minDigits`.
std::string Hex(char32_t number, std::size_t minDigits, const char* digits = kLowerDigits);

/// Returns `text` for a message on one line: control and invisible characters become `\u{NNNN}`,
/// bytes that are not UTF-8 become `\xNN`.
std::string ShownText(std::string_view text);

}  // namespace Kestrel::Formats
