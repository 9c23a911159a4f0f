// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/DescribeValue.h"

#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Testing {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

void Append(std::string& text, const std::shared_ptr<MetaObject>& value);

void AppendStruct(std::string& text, const MetaStruct& structure) {
  text += "structure " + structure.GetTypeName() + " {";
  const char* separator = "";
  for (const std::string& name : structure.GetFieldNames()) {
    text += separator + name;
    const std::string& documentation = structure.GetFieldDocumentation(name);
    if (documentation != "Documentation missing") {
      text += " (" + documentation + ")";
    }
    text += ": ";
    Append(text, structure.GetField(name));
    separator = ", ";
  }
  text += "}";
}

void AppendList(std::string& text, const MetaList& list) {
  text += "list of " + MetaObj::MetaTypeString(list.GetListType()) + " [";
  const char* separator = "";
  for (const std::shared_ptr<MetaObject>& element : list.GetObjects()) {
    text += separator;
    Append(text, element);
    separator = ", ";
  }
  text += "]";
}

void Append(std::string& text, const std::shared_ptr<MetaObject>& value) {
  if (value == nullptr) {
    text += "null";
    return;
  }
  switch (value->GetType()) {
    case MetaType::Int:
      text += "int " + value->ToString();
      return;
    case MetaType::Bool:
      text += "bool " + value->ToString();
      return;
    case MetaType::String:
      text += "string '" + value->ToString() + "'";
      return;
    case MetaType::Struct:
      return AppendStruct(text, dynamic_cast<const MetaStruct&>(*value));
    case MetaType::List:
      return AppendList(text, dynamic_cast<const MetaList&>(*value));
  }
}

}  // namespace

std::string DescribeValue(const std::shared_ptr<MetaObject>& value) {
  std::string text;
  Append(text, value);
  return text;
}

}  // namespace Kestrel::Testing
