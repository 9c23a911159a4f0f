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

// Access to the nodes of a document, which stay its owner's. `node` is never null.

/// The value of an attribute; empty when the node has none of that name.
KESTREL_API std::string XmlUtil_ExtractAttribute(const xmlNode* node, const std::string& name);

/// The content of the node's last child that carries any (a text, a CDATA section or a comment, not
/// an element), untrimmed; empty when there is none.
KESTREL_API std::string XmlUtil_GetContent(const xmlNode* node);

/// The content of the child named `tag`; empty when there is none. Throws KestrelException when
/// another one follows a child whose content is not empty.
KESTREL_API std::string XmlUtil_GetContentForChildByTag(const xmlNode* node,
                                                        const std::string& tag);

/// The only child of that name, or null. Throws KestrelException when there are several.
KESTREL_API xmlNode* XmlUtil_FindChildNode(const xmlNode* node, const std::string& name);

/// The value that a value element (`string`, `int`, `bool`, `structure`, `list`) describes. Throws
/// KestrelException when it describes none.
KESTREL_API std::shared_ptr<MetaObj::MetaObject> XmlUtil_BuildMetaObject(const xmlNode* node);
/// The value of a `structure` element.
KESTREL_API std::shared_ptr<MetaObj::MetaStruct> BuildMetaStruct(const xmlNode* node);
/// The value of a `list` element.
KESTREL_API std::shared_ptr<MetaObj::MetaList> BuildMetaList(const xmlNode* node);

/// Reads a value document: the first value element in its root. Null when the text is no
/// well-formed document of at most INT_MAX bytes, or its root holds no value. Throws
/// KestrelException when the value cannot be built. The parser's diagnostics go to its own channel,
/// by default standard error.
KESTREL_API std::shared_ptr<MetaObj::MetaObject> XmlUtil_ParseXmlOutput(const std::string& text);

}  // namespace Kestrel::AutoCli
