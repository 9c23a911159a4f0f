// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

/// Reads a result document into its value without a tree in between. Returns true when that was
/// possible; `value` is then the value of the document, null when it has none.
///
/// Returns false when the document must be read through a tree: it is not well-formed, the parser
/// reports something about it, it has a document type, an encoding other than UTF-8 or an `xml:id`,
/// or it contains more text in one place than a tree can hold. Prints nothing in either case.
/// Throws KestrelException when the value of a well-formed document cannot be built.
bool ReadXmlValue(const std::string& text, std::shared_ptr<MetaObj::MetaObject>& value);

}  // namespace Kestrel::AutoCli
