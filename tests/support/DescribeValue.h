// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Testing {

/// Describes a value: kinds, type names, documentation and nested values. Does not describe the
/// declared structures of lists.
///
/// Examples: `null`, `int 7`, `bool true`, `string 'a'`, `structure Disk {Name: string 'a', Size:
/// int 7}`, `list of Int [int 1, int 2]`.
std::string DescribeValue(const std::shared_ptr<MetaObj::MetaObject>& value);

}  // namespace Kestrel::Testing
