// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "kestrel/metaobj/MetaObject.h"

// Structures and lists release their values with these functions, so that the stack does not
// overflow however deeply values are nested: beyond some depth, a value waits until the outermost
// destructor releases it.
namespace Kestrel::MetaObj {

/// Releases the elements of a list.
void ReleaseNested(std::vector<std::shared_ptr<MetaObject>>&& values) noexcept;

/// Releases a structure or list.
void ReleaseContainer(std::shared_ptr<MetaObject>&& value) noexcept;

/// Releases a value if it is a structure or list. A scalar contains nothing, so its owner may
/// release it in the usual way.
inline void ReleaseNested(std::shared_ptr<MetaObject>& value) noexcept {
  if (value->GetType() >= MetaType::Struct) {
    ReleaseContainer(std::move(value));
  }
}

}  // namespace Kestrel::MetaObj
