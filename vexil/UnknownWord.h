// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

#include "vexil/Words.h"

namespace Kestrel::Vexil {

/// If `message` is about an unknown word of a path, returns the words of the path up to and
/// including that word; otherwise nothing. The message does not contain the words after it.
std::optional<Words> ReadUnknownWord(const std::string& message);

}  // namespace Kestrel::Vexil
