// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <libxml/tree.h>

#include <memory>

namespace Kestrel::AutoCli {

/// Releases a document with the function of the module that made it, because the library itself
/// does not link libxml2.
struct FreeXmlDocument {
  void (*free)(xmlDoc*) = nullptr;

  void operator()(xmlDoc* document) const { free(document); }
};

/// A document and all its nodes.
using XmlDocument = std::unique_ptr<xmlDoc, FreeXmlDocument>;

inline const char* AsChars(const xmlChar* text) { return reinterpret_cast<const char*>(text); }
inline const xmlChar* AsXmlChars(const char* text) {
  return reinterpret_cast<const xmlChar*>(text);
}

}  // namespace Kestrel::AutoCli
