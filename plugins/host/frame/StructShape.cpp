// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/StructShape.h"

#include <kestrel/metaobj/MetaBool.h>
#include <kestrel/metaobj/MetaInt.h>
#include <kestrel/metaobj/MetaString.h>

#include <algorithm>
#include <utility>

#include "plugins/host/frame/ByteSize.h"
#include "plugins/host/frame/Hundredths.h"

namespace Kestrel::Host {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

constexpr char kBytesSuffix[] = " Bytes";
constexpr char kHundredthsSuffix[] = " Hundredths";

}  // namespace

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

StructShape& StructShape::Bools(const char* name, const char* documentation) {
  return Field(name, MetaList::New(MetaType::Bool), documentation);
}

StructShape& StructShape::Struct(const char* name, const StructShape& shape,
                                 const char* documentation) {
  return Field(name, shape.definition_, documentation);
}

StructShape& StructShape::Structs(const char* name, const StructShape& shape,
                                  const char* documentation) {
  return Field(name, shape.NewList(), documentation);
}

StructShape& StructShape::Size(const char* name, const char* documentation) {
  const std::string bytes = std::string(name) + kBytesSuffix;
  sizes_.emplace(name, bytes);
  sortKeys_.emplace(name, bytes);
  Int(bytes.c_str(), (std::string(documentation) + " In bytes.").c_str());
  return String(name, (std::string(documentation) + " In IEC units, for people.").c_str());
}

StructShape& StructShape::Share(const char* name, const char* documentation) {
  const std::string hundredths = std::string(name) + kHundredthsSuffix;
  sortKeys_.emplace(name, hundredths);
  Int(hundredths.c_str(),
      (std::string(documentation) + " In hundredths of a percent; -1 if unknown.").c_str());
  return String(name,
                (std::string(documentation) + " In percent, for people, or `unknown`.").c_str());
}

StructShape& StructShape::SortedBy(const char* field, const char* key) {
  sortKeys_.emplace(field, key);
  return *this;
}

StructShape& StructShape::With(void (*declareFields)(StructShape& shape)) {
  declareFields(*this);
  return *this;
}

std::vector<std::string> StructShape::GetSortFields() const {
  std::vector<std::string> fields;
  for (std::string& name : definition_->GetFieldNames()) {
    if (GetKind(name) < MetaType::Struct) {
      fields.push_back(std::move(name));
    }
  }
  return fields;
}

const std::string& StructShape::GetSortKey(const std::string& field) const {
  const auto key = sortKeys_.find(field);
  return key == sortKeys_.end() ? field : key->second;
}

MetaType StructShape::GetKind(const std::string& field) const {
  return definition_->GetFieldType(field);
}

std::string StructShape::ForPeople(const std::string& columns) const {
  std::string replaced = "," + columns + ",";
  for (const auto& [text, bytes] : sizes_) {
    const std::string column = "," + bytes + ",";
    const std::size_t found = replaced.find(column);
    if (found != std::string::npos) {
      replaced.replace(found, column.size(), "," + text + ",");
    }
  }
  return replaced.substr(1, replaced.size() - 2);
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

void SetSize(MetaStruct& row, const std::string& name, long bytes) {
  row.SetField(name, FormatByteSize(bytes));
  row.SetField(name + kBytesSuffix, bytes);
}

void SetShare(MetaStruct& row, const std::string& name, long hundredths) {
  row.SetField(name, hundredths < 0 ? "unknown" : FormatHundredths(hundredths) + " %");
  row.SetField(name + kHundredthsSuffix, std::max(hundredths, -1L));
}

}  // namespace Kestrel::Host
