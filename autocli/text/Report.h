// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <iostream>
#include <string>

#include "autocli/text/WriteUnpadded.h"

namespace Kestrel::AutoCli {

/// Writes `line` and a line end to standard error in one piece, so that the lines of several
/// processes do not mix.
inline void Report(std::string line) {
  line += '\n';
  WriteUnpadded(std::cerr, line);
}

}  // namespace Kestrel::AutoCli
