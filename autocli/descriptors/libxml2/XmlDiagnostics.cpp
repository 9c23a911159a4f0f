// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/libxml2/XmlDiagnostics.h"

#include <libxml/globals.h>

#include <cstdarg>
#include <cstdio>
#include <string>

#include "autocli/text/TerminalText.h"

namespace Kestrel::AutoCli {

namespace {

/// Returns the handler that writes to standard error.
xmlGenericErrorFunc DefaultHandler() {
  const xmlGenericErrorFunc current = xmlGenericError;
  initGenericErrorDefaultFunc(nullptr);
  const xmlGenericErrorFunc handler = xmlGenericError;
  xmlGenericError = current;
  return handler;
}

}  // namespace

XmlDiagnostics::XmlDiagnostics()
    : handler_(xmlGenericError),
      context_(xmlGenericErrorContext),
      structuredHandler_(xmlStructuredError),
      structuredContext_(xmlStructuredErrorContext) {
  xmlSetGenericErrorFunc(this, Receive);
  if (structuredHandler_ != nullptr) {
    xmlSetStructuredErrorFunc(this, ReceiveStructured);
  }
}

XmlDiagnostics::~XmlDiagnostics() {
  xmlSetGenericErrorFunc(context_, handler_);
  xmlSetStructuredErrorFunc(structuredContext_, structuredHandler_);
}

void XmlDiagnostics::Receive(void* self, const char* format, ...) {
  auto& diagnostics = *static_cast<XmlDiagnostics*>(self);
  const xmlError* const last = xmlGetLastError();
  diagnostics.hasMemoryFailure_ |= last != nullptr && last->code == XML_ERR_NO_MEMORY;
  // libxml2 sends a diagnostic in short pieces, none of which is longer than its own buffers.
  char piece[64000];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(piece, sizeof(piece), format, arguments);
  va_end(arguments);
  // The default handler ignores its argument. It uses the global context, which it may also change.
  xmlGenericErrorContext = diagnostics.context_;
  const bool isShown = diagnostics.handler_ == DefaultHandler();
  const std::string shown = isShown ? MessageFor(STDERR_FILENO, piece) : std::string(piece);
  diagnostics.handler_(diagnostics.context_, "%s", shown.c_str());
  diagnostics.context_ = xmlGenericErrorContext;
  xmlGenericErrorContext = self;
}

void XmlDiagnostics::ReceiveStructured(void* self, xmlError* error) {
  auto& diagnostics = *static_cast<XmlDiagnostics*>(self);
  diagnostics.hasMemoryFailure_ |= error->code == XML_ERR_NO_MEMORY;
  diagnostics.structuredHandler_(diagnostics.structuredContext_, error);
}

}  // namespace Kestrel::AutoCli
