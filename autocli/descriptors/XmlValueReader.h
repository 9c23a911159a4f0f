// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

/// Reads a result document straight into its value, without a tree in between. True when that was
/// done: `value` is the document's value, or null when it holds none.
///
/// False when the document needs a tree: it is not well-formed or the parser has something to say
/// about it, it has a document type, an encoding of its own, or a text that only the tree's own
/// limits refuse. Nothing has been printed, ever. Throws KestrelException when a well-formed
/// document's value cannot be built.
bool ReadXmlValue(const std::string& text, std::shared_ptr<MetaObj::MetaObject>& value);

}  // namespace Kestrel::AutoCli
