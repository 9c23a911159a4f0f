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

/// Returns the structures in the declared root of a result: the outermost one first, each followed
/// by those inside it. Empty if `root` is null or contains none.
std::vector<ResultType> ListResultTypes(const std::shared_ptr<MetaObj::MetaObject>& root);

/// Returns the paths of the fields of the result, or of each element if the result is a list. A
/// field that is a structure is followed by the fields inside it: "Usage", then "Usage.Free".
std::vector<std::string> ListFieldPaths(const std::shared_ptr<MetaObj::MetaObject>& root);

/// Returns those of these paths that lead to scalars, by which elements can be sorted.
std::vector<std::string> ListScalarPaths(const std::shared_ptr<MetaObj::MetaObject>& root);

}  // namespace Kestrel::Vexil
