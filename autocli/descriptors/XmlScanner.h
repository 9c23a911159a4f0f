// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>
#include <vector>

namespace Kestrel::AutoCli {

/// An attribute of a start tag. References in the value are replaced.
struct XmlAttribute {
  std::string_view name;
  std::string_view value;
};

using XmlAttributes = std::vector<XmlAttribute>;

/// Returns the value of the attribute `name`; empty if there is none.
inline std::string_view ValueOf(const XmlAttributes& attributes, std::string_view name) {
  for (const XmlAttribute& attribute : attributes) {
    if (attribute.name == name) {
      return attribute.value;
    }
  }
  return {};
}

/// Receives the parts of a document in document order. The arguments are valid during the call
/// only.
class XmlEvents {
 public:
  virtual void StartElement(std::string_view name, const XmlAttributes& attributes) = 0;
  virtual void EndElement() = 0;
  /// All text up to the next tag, comment or CDATA section. References in it are replaced.
  virtual void Text(std::string_view text) = 0;
  /// One CDATA section, or several directly after each other.
  virtual void CData(std::string_view text) = 0;
  virtual void Comment(std::string_view text) = 0;

 protected:
  XmlEvents() = default;
  XmlEvents(const XmlEvents&) = delete;
  XmlEvents& operator=(const XmlEvents&) = delete;
  ~XmlEvents() = default;
};

/// Reads an ordinary document with a fraction of the instructions that a parser needs.
///
/// Returns false if the document is not ordinary; the events sent so far have no meaning then. An
/// ordinary document is well-formed, is encoded in UTF-8 and has Unix line ends. It has no document
/// type, namespaces, processing instructions or names beyond ASCII, and comes near no limit of the
/// parser. So the parser accepts it without a diagnostic and passes the same events.
bool ScanXml(std::string_view document, XmlEvents& events);

}  // namespace Kestrel::AutoCli
