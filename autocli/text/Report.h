// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <iostream>
#include <string>
#include <utility>

#include "autocli/text/TerminalText.h"
#include "autocli/text/WriteUnpadded.h"

namespace Kestrel::AutoCli {

/// Writes `line` and a line end to standard error in one piece, so that the lines of several
/// processes do not mix. On a terminal, the control characters of `line` are made visible.
inline void Report(std::string line) {
  line += '\n';
  WriteUnpadded(std::cerr, MessageFor(STDERR_FILENO, std::move(line)));
}

}  // namespace Kestrel::AutoCli
