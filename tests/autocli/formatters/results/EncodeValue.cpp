// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/formatters/results/EncodeValue.h"

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Testing {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

std::string Number(long value) { return std::to_string(value) + ","; }

std::string EncodeHead(const MetaStruct& structure) {
  return "r" + Netstring(structure.GetTypeName()) +
         Number(static_cast<long>(structure.GetFieldNames().size()));
}

std::string EncodeStruct(const MetaStruct& structure) {
  std::string text = EncodeHead(structure);
  for (const std::string& name : structure.GetFieldNames()) {
    text += Netstring(name) + EncodeValue(structure.GetField(name).get());
  }
  return text;
}

std::string EncodeShape(const MetaStruct* shape) {
  if (shape == nullptr) {
    return "n";
  }
  std::string text = EncodeHead(*shape);
  for (const std::string& name : shape->GetFieldNames()) {
    text += Netstring(name);
  }
  return text;
}

std::string EncodeList(const MetaList& list) {
  std::string text = list.GetListType() == MetaType::Struct
                         ? "t" + EncodeShape(list.GetListStructure().get())
                         : "l" + Number(list.GetListType());
  text += Number(static_cast<long>(list.GetCount()));
  for (const auto& element : list.GetObjects()) {
    text += EncodeValue(element.get());
  }
  return text;
}

}  // namespace

std::string Netstring(const std::string& text) {
  return std::to_string(text.size()) + ":" + text + ",";
}

std::string EncodeValue(const MetaObject* value) {
  if (value == nullptr) {
    return "n";
  }
  if (const auto* boolean = dynamic_cast<const MetaBool*>(value)) {
    return boolean->GetValue() ? "b1" : "b0";
  }
  if (const auto* number = dynamic_cast<const MetaInt*>(value)) {
    return "i" + Number(number->GetValue());
  }
  if (const auto* text = dynamic_cast<const MetaString*>(value)) {
    return "s" + Netstring(text->GetValue());
  }
  if (const auto* structure = dynamic_cast<const MetaStruct*>(value)) {
    return EncodeStruct(*structure);
  }
  if (const auto* list = dynamic_cast<const MetaList*>(value)) {
    return EncodeList(*list);
  }
  return "x" + Number(value->GetType()) + Netstring(value->ToString());
}

}  // namespace Kestrel::Testing
