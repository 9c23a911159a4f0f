// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "kestrel/metaobj/MetaObject.h"

// Structures and lists let go of what they held by these. However deep values nest in one another,
// the stack stays shallow: beyond some depth a value waits until the outermost one is done.
namespace Kestrel::MetaObj {

/// Lets go of the elements of a list.
void ReleaseNested(std::vector<std::shared_ptr<MetaObject>>&& values) noexcept;

/// ReleaseNested for one structure or list.
void ReleaseContainer(std::shared_ptr<MetaObject>&& value) noexcept;

/// Lets go of one value if it is a structure or list; what is neither nests nothing and may go
/// with its owner.
inline void ReleaseNested(std::shared_ptr<MetaObject>& value) noexcept {
  if (value->GetType() >= MetaType::Struct) {
    ReleaseContainer(std::move(value));
  }
}

}  // namespace Kestrel::MetaObj
