// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaObject.h"

#include "metaobj/ErrorList.h"

namespace Kestrel::MetaObj {

const std::string& MetaTypeString(const MetaType& type) {
  static const std::string names[] = {"Int", "Bool", "String", "Struct", "List"};
  static const std::string unknown;
  switch (type) {
    case MetaType::Int:
    case MetaType::Bool:
    case MetaType::String:
    case MetaType::Struct:
    case MetaType::List:
      return names[type];
  }
  return unknown;
}

MetaObject::MetaObject(MetaType type) : type_(type), isValueClass_(false) {}

bool MetaObject::IsSameStructure(const std::shared_ptr<MetaObject>& other,
                                 std::vector<std::string>* errors) const {
  if (other == nullptr) {
    return false;
  }
  const bool isScalar =
      type_ == MetaType::Int || type_ == MetaType::Bool || type_ == MetaType::String;
  if (isScalar && other->GetType() == type_) {
    return true;
  }
  AppendError(errors, "Type mismatch in structure.  Expecting ", MetaTypeString(type_), " got ",
              MetaTypeString(other->GetType()));
  return false;
}

std::ostream& operator<<(std::ostream& out, const MetaObject& object) {
  return out << object.ToString();
}

}  // namespace Kestrel::MetaObj
