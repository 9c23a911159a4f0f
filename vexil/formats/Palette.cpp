// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/Palette.h"

#include <unistd.h>

#include <cstdlib>

namespace Kestrel::Formats {

namespace {

/// Returns the value of an environment variable; the empty string if it is null.
std::string_view OrEmpty(const char* value) {
  return value == nullptr ? std::string_view() : value;
}

std::string_view ColorOf(Style style) {
  switch (style) {
    case Style::Integer:
      return "\x1b[36m";
    case Style::Boolean:
      return "\x1b[35m";
    case Style::Good:
      return "\x1b[32m";
    case Style::Warning:
      return "\x1b[33m";
    case Style::Bad:
      return "\x1b[31m";
    default:
      return "";
  }
}

}  // namespace

Palette Palette::For(const FormatOptions& options) {
  switch (options.color) {
    case ColorChoice::Always:
      return {true, true};
    case ColorChoice::Never:
      return {};
    default:
      break;
  }
  const bool isTerminal = options.screen.isStandardOutput && isatty(STDOUT_FILENO) == 1;
  return {isTerminal && OrEmpty(std::getenv("TERM")) != "dumb",
          OrEmpty(std::getenv("NO_COLOR")).empty()};
}

std::string_view Palette::Begin(Style style) const {
  if (style == Style::Name) {
    return hasSequences_ ? "\x1b[1m" : "";
  }
  return hasColors_ ? ColorOf(style) : "";
}

}  // namespace Kestrel::Formats
