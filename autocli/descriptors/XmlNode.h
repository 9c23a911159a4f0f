// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

#include "autocli/descriptors/XmlDocument.h"

namespace Kestrel::AutoCli {

/// The children of a node in document order, for a range-based loop.
class XmlChildren {
 public:
  explicit XmlChildren(const xmlNode* node) : first_(node->children) {}

  class Iterator {
   public:
    explicit Iterator(xmlNode* node) : node_(node) {}
    xmlNode* operator*() const { return node_; }
    Iterator& operator++() {
      node_ = node_->next;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return node_ != other.node_; }

   private:
    xmlNode* node_;
  };

  Iterator begin() const { return Iterator(first_); }
  Iterator end() const { return Iterator(nullptr); }

 private:
  xmlNode* first_;
};

/// Returns the root element of a document; null if there is none. `document` may be null.
inline const xmlNode* RootOf(const xmlDoc* document) {
  const xmlNode* node = document == nullptr ? nullptr : document->children;
  while (node != nullptr && node->type != XML_ELEMENT_NODE) {
    node = node->next;
  }
  return node;
}

/// Returns the name of a node; empty for a CDATA section, which has none.
inline const char* NameOf(const xmlNode* node) {
  return node->name == nullptr ? "" : AsChars(node->name);
}

inline bool IsNamed(const xmlNode* node, std::string_view name) {
  const char* const own = NameOf(node);
  // Fast path: most names differ in the first byte.
  return own[0] == (name.empty() ? '\0' : name[0]) && own == name;
}

/// Whether a node is text, a CDATA section or a comment. Such nodes are skipped between elements.
inline bool IsTextOrComment(const xmlNode* node) {
  return node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE ||
         node->type == XML_COMMENT_NODE;
}

}  // namespace Kestrel::AutoCli
