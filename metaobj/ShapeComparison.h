// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

/// Whether `other` has the shape of `mine`, a structure or a list; implements `IsSameStructure`.
/// Names and kinds are compared, never values. Messages about the differences are appended to
/// `errors` unless that is null. The depth of the stack does not depend on the depth of the values.
bool IsSameShape(const MetaObject& mine, const std::shared_ptr<MetaObject>& other,
                 std::vector<std::string>* errors);

/// Fast path of `IsSameShape` for values whose structures have layouts with equal type names and
/// field names. True means the same shape, without any message; false means unknown.
bool IsSurelySameShape(const MetaObject& mine, const MetaObject& other);

}  // namespace Kestrel::MetaObj
