#pragma once

#include <memory>
#include <string>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

/// Reads a result document straight into its value, without a tree in between. True when that was
/// done: `value` is the document's value, or null when it is not well-formed or holds none.
///
/// False when the document needs a tree (it has a document type, an encoding of its own, or a text
/// that only the tree's own limits refuse); nothing has been printed then. Throws KestrelException
/// when a well-formed document's value cannot be built. The parser's diagnostics appear as for
/// `xmlReadMemory`.
bool ReadXmlValue(const std::string& text, std::shared_ptr<MetaObj::MetaObject>& value);

}  // namespace Kestrel::AutoCli
