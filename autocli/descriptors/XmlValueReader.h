// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::AutoCli {

/// Reads an ordinary result document (see `ScanXml`) into its value, without a tree in between.
/// Sets `value` to the value of the document, null when it has none, and returns true.
///
/// Returns false when the document must be read through a tree, because it is not ordinary. Prints
/// nothing in either case. Throws KestrelException when the value of an ordinary document cannot be
/// built.
bool ReadXmlValue(const std::string& text, std::shared_ptr<MetaObj::MetaObject>& value);

}  // namespace Kestrel::AutoCli
