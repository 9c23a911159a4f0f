// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/RecordShape.h"

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

RecordShape::RecordShape(const char* typeName) : definition_(MetaStruct::New(typeName)) {}

RecordShape& RecordShape::Text(const char* name, const char* documentation) {
  return Field(name, MetaString::New(), documentation);
}

RecordShape& RecordShape::Number(const char* name, const char* documentation) {
  return Field(name, MetaInt::New(), documentation);
}

RecordShape& RecordShape::Truth(const char* name, const char* documentation) {
  return Field(name, MetaBool::New(), documentation);
}

RecordShape& RecordShape::Texts(const char* name, const char* documentation) {
  return Field(name, MetaList::New(MetaType::String), documentation);
}

RecordShape& RecordShape::Numbers(const char* name, const char* documentation) {
  return Field(name, MetaList::New(MetaType::Int), documentation);
}

RecordShape& RecordShape::Truths(const char* name, const char* documentation) {
  return Field(name, MetaList::New(MetaType::Bool), documentation);
}

RecordShape& RecordShape::Record(const char* name, const RecordShape& shape,
                                 const char* documentation) {
  return Field(name, shape.definition_, documentation);
}

RecordShape& RecordShape::Records(const char* name, const RecordShape& shape,
                                  const char* documentation) {
  return Field(name, shape.NewList(), documentation);
}

std::shared_ptr<MetaStruct> RecordShape::NewRecord() const { return MetaStruct::New(definition_); }

std::shared_ptr<MetaList> RecordShape::NewList() const {
  return MetaList::New(MetaType::Struct, definition_);
}

void RecordShape::DeclareRecord(CallSpec::OutputSpec& spec, const char* description) const {
  spec.SetRootObject(definition_);
  spec.SetDescription(description);
}

void RecordShape::DeclareList(CallSpec::OutputSpec& spec, const char* description) const {
  spec.SetRootObject(NewList());
  spec.SetDescription(description);
}

RecordShape& RecordShape::Field(const char* name, const std::shared_ptr<MetaObject>& sample,
                                const char* documentation) {
  definition_->SetField(name, sample, documentation);
  return *this;
}

}  // namespace Kestrel::Host
