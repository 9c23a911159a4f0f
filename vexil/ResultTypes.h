// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Vexil {

/// A structure that a result contains.
struct ResultType {
  std::string name;
  /// In byte order.
  std::vector<std::string> fields;
};

/// The structures in the declared root of a result: the outermost first, each followed by those
/// within it. Empty when `root` is null or contains none.
std::vector<ResultType> ListResultTypes(const std::shared_ptr<MetaObj::MetaObject>& root);

/// The fields of the same structures as paths from the root: "Usage", then "Usage.Free".
std::vector<std::string> ListFieldPaths(const std::shared_ptr<MetaObj::MetaObject>& root);

}  // namespace Kestrel::Vexil
