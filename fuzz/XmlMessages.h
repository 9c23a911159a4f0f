// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <libxml/xmlerror.h>

#include <cstdarg>
#include <cstdio>
#include <string>

namespace Kestrel::Fuzz {

/// Keeps libxml2's diagnostics, which almost every input brings, off standard error.
class XmlMessages {
 public:
  /// From now on every message is kept.
  XmlMessages() { xmlSetGenericErrorFunc(this, Keep); }
  ~XmlMessages() { xmlSetGenericErrorFunc(nullptr, nullptr); }
  XmlMessages(const XmlMessages&) = delete;
  XmlMessages& operator=(const XmlMessages&) = delete;

  /// What was said so far.
  const std::string& GetText() const { return text_; }

 private:
  __attribute__((format(printf, 2, 3))) static void Keep(void* messages, const char* format, ...) {
    // Longer messages quote the input, and go on in the next one.
    char buffer[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    static_cast<XmlMessages*>(messages)->text_ += buffer;
  }

  std::string text_;
};

}  // namespace Kestrel::Fuzz
