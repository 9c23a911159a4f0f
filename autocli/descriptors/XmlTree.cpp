// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// libxml2 is loaded when a function needs its parser. The functions on attributes and expansions do
// not need it for an ordinary document (see XmlScanner.h).

#include "autocli/descriptors/XmlTree.h"

#include <cstring>
#include <stdexcept>

#include "autocli/descriptors/XmlParser.h"
#include "autocli/plugins/CheckedFile.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

namespace {

/// Calls `function` with the parser, and reports its faults by KestrelException.
template <typename Function>
auto CallParser(Function function) {
  const XmlParser& parser = GetXmlParser();
  try {
    return function(parser);
  } catch (const std::runtime_error& fault) {
    throw KestrelException(fault.what());
  }
}

/// Whether `document`, which may be null, has a document type. Without one, there are no defaults
/// of attributes and no entities except the predefined ones.
bool HasDocumentType(const xmlDoc* document) {
  return document != nullptr && (document->intSubset != nullptr || document->extSubset != nullptr);
}

}  // namespace

XmlDocument ParseXmlText(std::string_view text, const char* name) {
  if (text.empty()) {
    return nullptr;
  }
  return CallParser([&](const XmlParser& parser) { return parser.ParseText(text, name); });
}

XmlDocument ParseXmlFile(const FileDescriptor& file, const std::string& path) {
  // The file is opened by a path, because otherwise libxml2 does not expand a compressed file.
  const std::string opened = PathOfDescriptor(file.Get());
  return CallParser([&](const XmlParser& parser) { return parser.ParseFile(opened, path); });
}

XmlDocument ParseXmlFile(const std::string& path) {
  return CallParser([&](const XmlParser& parser) { return parser.FindAndParseFile(path); });
}

void ReportMissingXmlFile(const std::string& path) {
  CallParser([&](const XmlParser& parser) { parser.ReportMissingFile(path); });
}

const xmlAttr* FindXmlAttribute(const xmlNode* node, const std::string& name) {
  if (node->type != XML_ELEMENT_NODE) {
    return nullptr;
  }
  for (const xmlAttr* i = node->properties; i != nullptr; i = i->next) {
    if (std::strcmp(AsChars(i->name), name.c_str()) == 0) {
      return i;
    }
  }
  return HasDocumentType(node->doc) ? GetXmlParser().FindAttribute(node, name.c_str()) : nullptr;
}

std::string ExpandXmlAttribute(const xmlAttr& attribute) {
  if (attribute.children == nullptr) {
    return std::string();
  }
  return CallParser([&](const XmlParser& parser) { return parser.ExpandAttribute(attribute); });
}

void RefuseLargeExpansion(const xmlNode* node) {
  if (node != nullptr && HasDocumentType(node->doc)) {
    CallParser([&](const XmlParser& parser) { parser.RefuseLargeExpansion(*node); });
  }
}

}  // namespace Kestrel::AutoCli
