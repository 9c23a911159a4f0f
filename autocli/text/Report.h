// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ios>
#include <iostream>
#include <string>

namespace Kestrel::AutoCli {

/// Writes a line, its end added, to standard error. In one piece, so that it stays whole among the
/// lines of other processes, and unpadded whatever width somebody left on the stream.
inline void Report(std::string line) {
  line += '\n';
  std::cerr.write(line.data(), static_cast<std::streamsize>(line.size()));
}

}  // namespace Kestrel::AutoCli
