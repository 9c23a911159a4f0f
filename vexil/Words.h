// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Vexil {

/// The words of a path below the root, or other words and names.
using Words = std::vector<std::string>;

/// Splits `text` at any of the bytes in `separators`. No piece is empty.
Words SplitWords(std::string_view text, std::string_view separators);

std::string JoinWords(const Words& words, std::string_view separator);

}  // namespace Kestrel::Vexil
