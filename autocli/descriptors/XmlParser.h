// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "autocli/descriptors/XmlDocument.h"

namespace Kestrel::AutoCli {

/// The functions that call libxml2. XmlTree.h describes them.
///
/// They are in a separate module, which is not linked with the library and therefore cannot use
/// KestrelException. They report a fault by std::runtime_error.
class XmlParser {
 public:
  /// `text` must not be empty.
  virtual XmlDocument ParseText(std::string_view text, const char* name) const = 0;
  /// Reads the file at `path`; `name` is its name in diagnostics.
  virtual XmlDocument ParseFile(const std::string& path, const std::string& name) const = 0;
  virtual XmlDocument FindAndParseFile(const std::string& path) const = 0;
  virtual void ReportMissingFile(const std::string& path) const = 0;

  /// Returns the attribute of that name, or the declaration of its default; null if there is none.
  virtual const xmlAttr* FindAttribute(const xmlNode* element, const char* name) const = 0;
  virtual std::string ExpandAttribute(const xmlAttr& attribute) const = 0;
  /// `node` must belong to a document.
  virtual void RefuseLargeExpansion(const xmlNode& node) const = 0;

 protected:
  ~XmlParser() = default;
};

/// Returns the parser. In the shared library, the first call loads the module, and KestrelException
/// is thrown if that fails.
const XmlParser& GetXmlParser();

}  // namespace Kestrel::AutoCli
