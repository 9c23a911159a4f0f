// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/ResultTypes.h"

#include <cstddef>

#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Vexil {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

// Deeper than any result that a person prints. A limit is needed because a declaration can contain
// itself.
constexpr std::size_t kMaxDepth = 8;

// Returns the structure itself, or the structure of a list's elements.
std::shared_ptr<MetaStruct> FindStructure(const std::shared_ptr<MetaObject>& value) {
  if (value != nullptr && value->GetType() == MetaType::List) {
    return std::static_pointer_cast<MetaList>(value)->GetListStructure();
  }
  const bool isStructure = value != nullptr && value->GetType() == MetaType::Struct;
  return isStructure ? std::static_pointer_cast<MetaStruct>(value) : nullptr;
}

void AddTypes(const std::shared_ptr<MetaObject>& value, std::size_t depth,
              std::vector<ResultType>& types) {
  const std::shared_ptr<MetaStruct> structure = FindStructure(value);
  if (structure == nullptr || depth == kMaxDepth) {
    return;
  }
  const std::vector<std::string> fields = structure->GetFieldNames();
  types.push_back({structure->GetTypeName(), fields});
  for (const std::string& field : fields) {
    AddTypes(structure->GetField(field), depth + 1, types);
  }
}

void AddPaths(const MetaStruct& structure, const std::string& outer, bool onlyScalars,
              std::size_t depth, std::vector<std::string>& paths) {
  for (const std::string& field : structure.GetFieldNames()) {
    const std::shared_ptr<MetaObject> value = structure.GetField(field);
    const MetaType kind = value->GetType();
    if (!onlyScalars || (kind != MetaType::Struct && kind != MetaType::List)) {
      paths.push_back(outer + field);
    }
    if (kind == MetaType::Struct && depth < kMaxDepth) {
      AddPaths(static_cast<const MetaStruct&>(*value), outer + field + ".", onlyScalars, depth + 1,
               paths);
    }
  }
}

std::vector<std::string> ListPaths(const std::shared_ptr<MetaObject>& root, bool onlyScalars) {
  std::vector<std::string> paths;
  if (const std::shared_ptr<MetaStruct> structure = FindStructure(root)) {
    AddPaths(*structure, {}, onlyScalars, 1, paths);
  }
  return paths;
}

}  // namespace

std::vector<ResultType> ListResultTypes(const std::shared_ptr<MetaObject>& root) {
  std::vector<ResultType> types;
  AddTypes(root, 0, types);
  return types;
}

std::vector<std::string> ListFieldPaths(const std::shared_ptr<MetaObject>& root) {
  return ListPaths(root, false);
}

std::vector<std::string> ListScalarPaths(const std::shared_ptr<MetaObject>& root) {
  return ListPaths(root, true);
}

}  // namespace Kestrel::Vexil
