// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/console/Console.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "autocli/text/TerminalText.h"

namespace Kestrel::Console {

void Console::Complain(const std::string& text) const {
  const std::string message = program_ + ": " + text + "\n";
  std::fputs(AutoCli::MessageFor(STDERR_FILENO, message).c_str(), stderr);
}

bool Console::Print(const std::string& text) const {
  if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) {
    return true;
  }
  Complain(std::string("cannot write to standard output: ") + std::strerror(errno));
  return false;
}

}  // namespace Kestrel::Console
