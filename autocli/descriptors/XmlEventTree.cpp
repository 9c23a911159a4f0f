// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/XmlEventTree.h"

#include <libxml/globals.h>

#include <new>
#include <utility>

// The address of this function is null in a process that has not loaded libxml2 at its start.
#pragma weak __xmlKeepBlanksDefaultValue

namespace Kestrel::AutoCli {

namespace {

constexpr xmlChar kTextName[] = "text";
constexpr xmlChar kCommentName[] = "comment";

/// Whether the program has made libxml2 remove the space between elements.
bool RemovesSpace() {
  return &__xmlKeepBlanksDefaultValue != nullptr && xmlKeepBlanksDefaultValue == 0;
}

}  // namespace

std::unique_ptr<XmlEventTree> XmlEventTree::Read(std::string_view text) {
  // If libxml2 removes space, only its own parser makes the right tree.
  if (text.size() > kMaxSize || RemovesSpace()) {
    return nullptr;
  }
  std::unique_ptr<XmlEventTree> tree(new XmlEventTree(text.size()));
  return ScanXml(text, *tree) ? std::move(tree) : nullptr;
}

void XmlEventTree::StartElement(std::string_view name, const XmlAttributes& attributes) {
  xmlNode& element = Append(Make<xmlNode>(XML_ELEMENT_NODE, Copy(name)));
  AddAttributes(attributes, element);
  open_ = &element;
}

void XmlEventTree::AddAttributes(const XmlAttributes& attributes, xmlNode& element) {
  xmlAttr** end = &element.properties;
  for (const XmlAttribute& declared : attributes) {
    auto& attribute = Make<xmlAttr>(XML_ATTRIBUTE_NODE, Copy(declared.name));
    if (!declared.value.empty()) {
      attribute.children = &MakeText(XML_TEXT_NODE, kTextName, declared.value);
    }
    *end = &attribute;
    end = &attribute.next;
  }
}

void XmlEventTree::EndElement() { open_ = open_->parent; }

void XmlEventTree::Text(std::string_view text) { Append(MakeText(XML_TEXT_NODE, kTextName, text)); }

void XmlEventTree::CData(std::string_view text) {
  Append(MakeText(XML_CDATA_SECTION_NODE, nullptr, text));
}

/// Ignores comments before and after the root element.
void XmlEventTree::Comment(std::string_view text) {
  if (open_ != nullptr) {
    Append(MakeText(XML_COMMENT_NODE, kCommentName, text));
  }
}

xmlNode& XmlEventTree::MakeText(xmlElementType type, const xmlChar* name, std::string_view text) {
  auto& node = Make<xmlNode>(type, name);
  node.content = Copy(text);
  return node;
}

xmlNode& XmlEventTree::Append(xmlNode& node) {
  if (open_ == nullptr) {
    root_ = &node;
    return node;
  }
  (open_->last == nullptr ? open_->children : open_->last->next) = &node;
  node.prev = std::exchange(open_->last, &node);
  node.parent = open_;
  return node;
}

template <typename Node>
Node& XmlEventTree::Make(xmlElementType type, const xmlChar* name) {
  auto* const node = new (memory_.allocate(sizeof(Node), alignof(Node))) Node{};
  node->type = type;
  node->name = name;
  return *node;
}

xmlChar* XmlEventTree::Copy(std::string_view text) {
  auto* const copy = static_cast<char*>(memory_.allocate(text.size() + 1, 1));
  copy[text.copy(copy, text.size())] = '\0';
  return reinterpret_cast<xmlChar*>(copy);
}

}  // namespace Kestrel::AutoCli
