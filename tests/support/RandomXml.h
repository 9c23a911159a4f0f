// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "support/Random.h"

namespace Kestrel::Testing {

/// Pieces of XML that matter to a parser.
inline constexpr std::string_view kXmlPieces[] = {
    "<",
    ">",
    "/>",
    "</",
    "&",
    ";",
    "'",
    "\"",
    "=",
    "]]>",
    "<![CDATA[",
    "<!--",
    "-->",
    "--",
    "<?",
    "?>",
    "<?pi d?>",
    "<?xml version='1.0'?>",
    "<!DOCTYPE o>",
    "&foo;",
    "&#0;",
    "&#x110000;",
    "&lt",
    "<int>",
    "</int>",
    "<string>",
    "</string>",
    "<list type='int'>",
    "</list>",
    "<field name='a'>",
    "</field>",
    "<structure typeName='S'>",
    "</structure>",
    "p:",
    ":",
    "xmlns:p='u' ",
    "xml:id='a' ",
    "\xEF\xBB\xBF",
    "\xFF",
    "\xC3",
    "\xED\xA0\x80",
    "\x01",
    "\r",
    "\t",
    " ",
    "\n",
    "<output>",
    "</output>",
    "<!DOCTYPE o [<!ENTITY foo 'bar'><!ENTITY bar '<int>5</int>'>]>",
    "%",
    "<!ELEMENT o ANY>",
    "1",
    "a",
};

/// Makes random value documents, most of which are well-formed.
class XmlDocumentMaker {
 public:
  explicit XmlDocumentMaker(Random& random) : random_(random) {}

  std::string Make();

 private:
  void AddProlog();
  void AddEpilog();
  void AddAttributes();
  void AddFiller();
  std::string Name(const std::string& name);
  void AddValue(int depth);
  void AddScalar(const std::string& tag);
  void AddStructure(int depth);
  void AddList(int depth);
  void AddElement(std::size_t type, int depth, std::size_t listBegin);

  Random& random_;
  std::string text_;
};

/// Changes `text` in one random place.
void MutateXml(std::string& text, Random& random);

}  // namespace Kestrel::Testing
