// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "kestrel/autocli/Util.h"

void Panic(const char* format, ...) {
  static char message[256];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(message, sizeof(message), format, arguments);
  va_end(arguments);
  std::fprintf(stderr, "panic: %s", message);
  std::abort();
}
