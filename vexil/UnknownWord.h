// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

#include "vexil/Words.h"

namespace Kestrel::Vexil {

/// The words of the path that a message about a word that names nothing is about, up to that word;
/// nothing for every other message.
///
/// The message is all that is left of a line that was read from a file.
std::optional<Words> ReadUnknownWord(const std::string& message);

}  // namespace Kestrel::Vexil
