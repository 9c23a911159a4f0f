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

KESTREL_API std::string XmlUtil_ExtractAttribute(const xmlNode* node, const std::string& name);
KESTREL_API std::string XmlUtil_GetContent(const xmlNode* node);
KESTREL_API std::string XmlUtil_GetContentForChildByTag(const xmlNode* node,
                                                        const std::string& tag);
KESTREL_API xmlNode* XmlUtil_FindChildNode(const xmlNode* node, const std::string& name);
KESTREL_API std::shared_ptr<MetaObj::MetaObject> XmlUtil_BuildMetaObject(const xmlNode* node);
KESTREL_API std::shared_ptr<MetaObj::MetaStruct> BuildMetaStruct(const xmlNode* node);
KESTREL_API std::shared_ptr<MetaObj::MetaList> BuildMetaList(const xmlNode* node);
KESTREL_API std::shared_ptr<MetaObj::MetaObject> XmlUtil_ParseXmlOutput(const std::string& text);

}  // namespace Kestrel::AutoCli
