// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

/// Whether `other` has the shape of `mine`, a structure or a list, as their IsSameStructure tells
/// it: names and kinds are compared, never values. One text per problem goes to `errors` unless
/// that is null. The stack stays flat, however deep the values nest.
bool IsSameShape(const MetaObject& mine, const std::shared_ptr<MetaObject>& other,
                 std::vector<std::string>* errors);

/// True only when IsSameShape is sure to be true and to have nothing to tell; it may be so too
/// where this gives false. Quick for records of one layout.
bool IsSurelySameShape(const MetaObject& mine, const MetaObject& other);

}  // namespace Kestrel::MetaObj
