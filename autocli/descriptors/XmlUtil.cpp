// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/XmlUtil.h"

#include <climits>

#include "autocli/descriptors/XmlDocument.h"
#include "autocli/descriptors/XmlNode.h"
#include "autocli/descriptors/XmlTree.h"
#include "autocli/descriptors/XmlValue.h"
#include "autocli/descriptors/XmlValueReader.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;

namespace {

/// Returns the child after `child`, or null. Unlike `child->next`, it stays within `node`: the only
/// child of an entity reference is the declaration of the entity, whose `next` is another
/// declaration.
const xmlNode* NextChild(const xmlNode* node, const xmlNode* child) {
  return child == node->last ? nullptr : child->next;
}

bool IsFieldElement(const xmlNode* node) {
  return node->type == XML_ELEMENT_NODE && IsNamed(node, "field");
}

/// Whether an attribute's value is a single text node, which can be read without expanding it. A
/// value that is empty, contains references to entities, or is only declared in the document type
/// is not.
bool IsOneText(const xmlAttr& attribute) {
  const xmlNode* value = attribute.type == XML_ATTRIBUTE_NODE ? attribute.children : nullptr;
  return value != nullptr && value->next == nullptr && value->type == XML_TEXT_NODE &&
         value->content != nullptr;
}

/// Returns the default that the document type declares for a missing attribute.
std::string DefaultOf(const xmlAttribute& declaration) {
  return declaration.defaultValue == nullptr ? std::string() : AsChars(declaration.defaultValue);
}

/// Returns the first node at or after `node` that is neither text, a CDATA section nor a comment;
/// null if there is none.
const xmlNode* FirstValueAt(const xmlNode* node) {
  while (node != nullptr && IsTextOrComment(node)) {
    node = node->next;
  }
  return node;
}

// The callers of these functions check the limit for entities first, for the whole value.
std::shared_ptr<MetaStruct> BuildStruct(const xmlNode* node);
std::shared_ptr<MetaList> BuildList(const xmlNode* node);

std::shared_ptr<MetaObject> BuildValue(const xmlNode* node) {
  switch (ParseXmlValueTag(NameOf(node))) {
    case XmlValueTag::List:
      return BuildList(node);
    case XmlValueTag::Structure:
      return BuildStruct(node);
    case XmlValueTag::Int:
      return MakeXmlInt(XmlUtil_GetContent(node));
    case XmlValueTag::Bool:
      return MakeXmlBool(XmlUtil_GetContent(node));
    case XmlValueTag::String:
      return MakeXmlString(XmlUtil_GetContent(node));
  }
  return nullptr;
}

std::shared_ptr<MetaStruct> BuildStruct(const xmlNode* node) {
  auto structure = MetaStruct::New(XmlUtil_ExtractAttribute(node, "typeName"));
  for (const xmlNode* child : XmlChildren(node)) {
    if (!IsFieldElement(child)) {
      continue;
    }
    const std::string name = XmlUtil_ExtractAttribute(child, "name");
    if (name.empty()) {
      throw KestrelException(kFieldWithoutName);
    }
    const xmlNode* value = FirstValueAt(child->children);
    if (value != nullptr) {
      structure->SetField(name, BuildValue(value));
    }
  }
  return structure;
}

std::shared_ptr<MetaList> BuildList(const xmlNode* node) {
  XmlListBuilder list(XmlUtil_ExtractAttribute(node, "type"));
  const xmlNode* element = FirstValueAt(node->children);
  for (; element != nullptr; element = FirstValueAt(element->next)) {
    list.Add(BuildValue(element));
  }
  return list.Finish();
}

/// Returns the first value in a document's root element; null when there is none.
std::shared_ptr<MetaObject> BuildFromRoot(const xmlNode* root) {
  const xmlNode* value = FirstValueAt(root->children);
  return value == nullptr ? nullptr : BuildValue(value);
}

XmlDocument ParseOutput(const std::string& text) {
  try {
    XmlDocument document = ParseXmlText(text, "STDOUT");
    if (document != nullptr) {
      RefuseLargeExpansion(RootOf(document.get()));
    }
    return document;
  } catch (const KestrelException& error) {
    throw KestrelException(std::string("Error parsing command output.  ") + error.what());
  }
}

std::shared_ptr<MetaObject> ParseThroughTree(const std::string& text) {
  const XmlDocument document = ParseOutput(text);
  if (document == nullptr) {
    return nullptr;
  }
  const xmlNode* root = RootOf(document.get());
  if (root == nullptr) {
    throw KestrelException(
        "Error parsing command output.  Unable to find a properly formatted output tag as the "
        "document root");
  }
  try {
    return BuildFromRoot(root);
  } catch (const KestrelException& error) {
    throw UnbuildableXmlOutput(error);
  }
}

}  // namespace

std::string XmlUtil_ExtractAttribute(const xmlNode* node, const std::string& name) {
  const xmlAttr* attribute = FindXmlAttribute(node, name);
  if (attribute == nullptr) {
    return std::string();
  }
  if (IsOneText(*attribute)) {
    return AsChars(attribute->children->content);
  }
  if (attribute->type == XML_ATTRIBUTE_DECL) {
    return DefaultOf(*reinterpret_cast<const xmlAttribute*>(attribute));
  }
  return ExpandXmlAttribute(*attribute);
}

std::string XmlUtil_GetContent(const xmlNode* node) {
  const xmlChar* content = nullptr;
  for (const xmlNode* child = node->children; child != nullptr; child = NextChild(node, child)) {
    if (child->content != nullptr) {
      content = child->content;  // the last one is used, even a comment
    }
  }
  return content == nullptr ? std::string() : std::string(AsChars(content));
}

std::string XmlUtil_GetContentForChildByTag(const xmlNode* node, const std::string& tag) {
  std::string content;
  for (const xmlNode* child : XmlChildren(node)) {
    if (!IsNamed(child, tag)) {
      continue;
    }
    // Only a match with content makes the next one a duplicate; a second match is allowed after an
    // empty one.
    if (!content.empty()) {
      throw KestrelException("Illegal Duplicate tags found.  The tag " + tag +
                             " was expected only once, but was found multiple times.");
    }
    content = XmlUtil_GetContent(child);
  }
  return content;
}

xmlNode* XmlUtil_FindChildNode(const xmlNode* node, const std::string& name) {
  xmlNode* found = nullptr;
  for (xmlNode* child : XmlChildren(node)) {
    if (!IsNamed(child, name)) {
      continue;
    }
    if (found != nullptr) {
      throw KestrelException("More than one instance of " + name + " found, expected only one.");
    }
    found = child;
  }
  return found;
}

std::shared_ptr<MetaObject> XmlUtil_BuildMetaObject(const xmlNode* node) {
  RefuseLargeExpansion(node);
  return BuildValue(node);
}

std::shared_ptr<MetaStruct> BuildMetaStruct(const xmlNode* node) {
  RefuseLargeExpansion(node);
  return BuildStruct(node);
}

std::shared_ptr<MetaList> BuildMetaList(const xmlNode* node) {
  RefuseLargeExpansion(node);
  return BuildList(node);
}

std::shared_ptr<MetaObject> XmlUtil_ParseXmlOutput(const std::string& text) {
  if (text.size() > INT_MAX) {
    return nullptr;
  }
  std::shared_ptr<MetaObject> value;
  if (ReadXmlValue(text, value)) {
    return value;
  }
  return ParseThroughTree(text);
}

}  // namespace Kestrel::AutoCli
