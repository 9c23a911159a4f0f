// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

namespace Kestrel::AutoCli {

// Guard objects for what libxml2 allocates. Each releases it on every path.

struct FreeXmlDocument {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

struct FreeXmlParser {
  void operator()(xmlParserCtxt* parser) const {
    xmlFreeDoc(parser->myDoc);
    parser->myDoc = nullptr;
    xmlFreeParserCtxt(parser);
  }
};

/// A document and all its nodes.
using XmlDocument = std::unique_ptr<xmlDoc, FreeXmlDocument>;
/// A parser and the document that it has begun to make, if any.
using XmlParser = std::unique_ptr<xmlParserCtxt, FreeXmlParser>;

inline const char* AsChars(const xmlChar* text) { return reinterpret_cast<const char*>(text); }
inline const xmlChar* AsXmlChars(const char* text) {
  return reinterpret_cast<const xmlChar*>(text);
}

}  // namespace Kestrel::AutoCli
