// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

#include "autocli/descriptors/XmlDocument.h"

namespace Kestrel::AutoCli {

/// The name of a node; a CDATA section has none.
inline const char* NameOf(const xmlNode* node) {
  return node->name == nullptr ? "" : AsChars(node->name);
}

inline bool IsNamed(const xmlNode* node, std::string_view name) {
  const char* const own = NameOf(node);
  // Most nodes asked are told apart by their first byte.
  return own[0] == (name.empty() ? '\0' : name[0]) && own == name;
}

/// Whether a node is what stands between the elements of a document, and is passed over there.
inline bool IsTextOrComment(const xmlNode* node) {
  return node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE ||
         node->type == XML_COMMENT_NODE;
}

}  // namespace Kestrel::AutoCli
