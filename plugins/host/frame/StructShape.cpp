// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/StructShape.h"

#include <kestrel/metaobj/MetaBool.h>
#include <kestrel/metaobj/MetaInt.h>
#include <kestrel/metaobj/MetaString.h>

namespace Kestrel::Host {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

StructShape::StructShape(const char* typeName) : definition_(MetaStruct::New(typeName)) {}

StructShape& StructShape::String(const char* name, const char* documentation) {
  return Field(name, MetaString::New(), documentation);
}

StructShape& StructShape::Int(const char* name, const char* documentation) {
  return Field(name, MetaInt::New(), documentation);
}

StructShape& StructShape::Bool(const char* name, const char* documentation) {
  return Field(name, MetaBool::New(), documentation);
}

StructShape& StructShape::Strings(const char* name, const char* documentation) {
  return Field(name, MetaList::New(MetaType::String), documentation);
}

StructShape& StructShape::Ints(const char* name, const char* documentation) {
  return Field(name, MetaList::New(MetaType::Int), documentation);
}

StructShape& StructShape::Struct(const char* name, const StructShape& shape,
                                 const char* documentation) {
  return Field(name, shape.definition_, documentation);
}

StructShape& StructShape::Structs(const char* name, const StructShape& shape,
                                  const char* documentation) {
  return Field(name, shape.NewList(), documentation);
}

StructShape& StructShape::With(void (*declareFields)(StructShape& shape)) {
  declareFields(*this);
  return *this;
}

std::shared_ptr<MetaStruct> StructShape::NewStruct() const { return MetaStruct::New(definition_); }

std::shared_ptr<MetaList> StructShape::NewList() const {
  return MetaList::New(MetaType::Struct, definition_);
}

void StructShape::DeclareStruct(CallSpec::OutputSpec& spec, const char* description) const {
  spec.SetRootObject(definition_);
  spec.SetDescription(description);
}

void StructShape::DeclareList(CallSpec::OutputSpec& spec, const char* description) const {
  spec.SetRootObject(NewList());
  spec.SetDescription(description);
}

StructShape& StructShape::Field(const char* name, const std::shared_ptr<MetaObject>& sample,
                                const char* documentation) {
  definition_->SetField(name, sample, documentation);
  return *this;
}

}  // namespace Kestrel::Host
