// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"

struct _xmlNode;
using xmlNode = struct _xmlNode;

namespace Kestrel::AutoCli {

// Functions on the nodes of a libxml2 document, which the caller owns. `node` must not be null.
//
// Reading an attribute or building a value throws KestrelException when the references to entities
// in that attribute or value stand for more than 10 MB of text.

/// Returns the value of an attribute; empty when the node has no attribute of that name.
KESTREL_API std::string XmlUtil_ExtractAttribute(const xmlNode* node, const std::string& name);

/// Returns the content of the last child of `node` that has one: text, a CDATA section, a comment,
/// a processing instruction or a reference to an entity. White space is kept. Empty when there is
/// no such child.
KESTREL_API std::string XmlUtil_GetContent(const xmlNode* node);

/// Returns the content of the child named `tag`; empty when there is none. Throws KestrelException
/// when another child named `tag` follows one whose content is not empty.
KESTREL_API std::string XmlUtil_GetContentForChildByTag(const xmlNode* node,
                                                        const std::string& tag);

/// Returns the child of that name, null when there is none. Throws KestrelException when there are
/// several.
KESTREL_API xmlNode* XmlUtil_FindChildNode(const xmlNode* node, const std::string& name);

/// Builds the value that a value element (`string`, `int`, `bool`, `structure` or `list`)
/// describes. Throws KestrelException when `node` is not one of these or its content is invalid.
KESTREL_API std::shared_ptr<MetaObj::MetaObject> XmlUtil_BuildMetaObject(const xmlNode* node);
/// Builds the value of a `structure` element. Throws KestrelException when its type name or a field
/// is invalid.
KESTREL_API std::shared_ptr<MetaObj::MetaStruct> BuildMetaStruct(const xmlNode* node);
/// Builds the value of a `list` element. Throws KestrelException when its type or an element is
/// invalid.
KESTREL_API std::shared_ptr<MetaObj::MetaList> BuildMetaList(const xmlNode* node);

/// Reads a value document: the first element in the root element describes its value.
///
/// Returns null when the root contains only text, CDATA sections and comments, and when `text` is
/// not well-formed or longer than INT_MAX bytes. Throws KestrelException when the value cannot be
/// built, when memory runs out, when libxml2 is needed and cannot be loaded, when an element has
/// more than 10,000 attributes, and when the entities stand for more than 10 MB of text.
/// Diagnostics of the parser go to the channel of libxml2, which is standard error by default.
KESTREL_API std::shared_ptr<MetaObj::MetaObject> XmlUtil_ParseXmlOutput(const std::string& text);

}  // namespace Kestrel::AutoCli
