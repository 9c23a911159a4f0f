// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <libxml/xmlerror.h>

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

namespace Kestrel::Fuzz {

/// The greatest number of bytes that the entities of a document may stand for.
constexpr std::size_t kMaxEntityText = 10'000'000;

/// Collects the diagnostics of libxml2 during its lifetime. Nearly every input causes some, which
/// would otherwise go to standard error.
class XmlMessages {
 public:
  XmlMessages() { xmlSetGenericErrorFunc(this, Keep); }
  ~XmlMessages() { xmlSetGenericErrorFunc(nullptr, nullptr); }
  XmlMessages(const XmlMessages&) = delete;
  XmlMessages& operator=(const XmlMessages&) = delete;

  /// The diagnostics so far.
  const std::string& GetText() const { return text_; }

 private:
  __attribute__((format(printf, 2, 3))) static void Keep(void* messages, const char* format, ...) {
    // Only a message that quotes the input is longer; the rest of the message may be dropped.
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
