// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <libxml/xmlerror.h>

namespace Kestrel::AutoCli {

/// Watches the diagnostics of libxml2 on this thread during its lifetime, and forwards them.
///
/// A parser does not always report in its own state that memory ran out: the document then lacks a
/// part and looks complete. But the parser sends a diagnostic, except while it declares an entity
/// (see `DeclareEntity` in Libxml2Parser.cpp).
class XmlDiagnostics {
 public:
  XmlDiagnostics();
  XmlDiagnostics(const XmlDiagnostics&) = delete;
  XmlDiagnostics& operator=(const XmlDiagnostics&) = delete;
  ~XmlDiagnostics();

  /// Whether memory ran out.
  bool HasMemoryFailure() const { return hasMemoryFailure_; }

 private:
  static void Receive(void* self, const char* format, ...) __attribute__((format(printf, 2, 3)));
  static void ReceiveStructured(void* self, xmlError* error);

  const xmlGenericErrorFunc handler_;
  void* context_;
  const xmlStructuredErrorFunc structuredHandler_;
  void* const structuredContext_;
  bool hasMemoryFailure_ = false;
};

}  // namespace Kestrel::AutoCli
