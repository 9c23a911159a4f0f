// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

namespace Kestrel::AutoCli {

struct FreeXmlDocument {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

struct FreeXmlText {
  void operator()(xmlChar* text) const { xmlFree(text); }
};

struct FreeXmlParser {
  void operator()(xmlParserCtxt* parser) const {
    xmlFreeDoc(parser->myDoc);
    parser->myDoc = nullptr;
    xmlFreeParserCtxt(parser);
  }
};

/// A parsed document, released with its last node.
using XmlDocument = std::unique_ptr<xmlDoc, FreeXmlDocument>;
/// A text that libxml2 has made for us.
using XmlText = std::unique_ptr<xmlChar, FreeXmlText>;
/// A parser and the document that it may have begun.
using XmlParser = std::unique_ptr<xmlParserCtxt, FreeXmlParser>;

inline const char* AsChars(const xmlChar* text) { return reinterpret_cast<const char*>(text); }
inline const xmlChar* AsXmlChars(const char* text) {
  return reinterpret_cast<const xmlChar*>(text);
}

}  // namespace Kestrel::AutoCli
