// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "autocli/text/Utf8.h"

namespace Kestrel::Formats {

using AutoCli::AppendCharacter;
using AutoCli::Character;
using AutoCli::FirstCharacter;

/// Returns `text` for a message on one line: control characters and bytes that are not UTF-8 become
/// `\xNN` or `\u{NNNN}`.
std::string ShownText(std::string_view text);

}  // namespace Kestrel::Formats
