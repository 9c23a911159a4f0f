// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/XmlValue.h"

#include <utility>

#include "autocli/text/LeadingInteger.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

MetaType ParseListType(std::string_view word) {
  if (word == "string") {
    return MetaType::String;
  }
  if (word == "int") {
    return MetaType::Int;
  }
  if (word == "bool") {
    return MetaType::Bool;
  }
  if (word == "structure") {
    return MetaType::Struct;
  }
  if (word == "list") {
    return MetaType::List;
  }
  throw KestrelException(
      "Invalid list type attribute.  Must be one of [string, int, bool, structure, list]");
}

/// Returns a copy of a structure with the same field values; returns any other value itself. A list
/// locks the structure that declares its shape, but the element itself must stay unlocked.
std::shared_ptr<MetaObject> CopyOfStruct(const std::shared_ptr<MetaObject>& value) {
  const auto structure = std::dynamic_pointer_cast<MetaStruct>(value);
  if (structure == nullptr) {
    return value;
  }
  auto copy = MetaStruct::New(structure->GetTypeName());
  for (const std::string& name : structure->GetFieldNames()) {
    copy->SetField(name, structure->GetField(name));
  }
  return copy;
}

}  // namespace

KestrelException UnbuildableXmlOutput(const KestrelException& cause) {
  return KestrelException(
      std::string("Error parsing command output.  Unable to build a proper metaobject from output "
                  "tag.  output must contain properly formatted tags of type bool, int, string, "
                  "structure and list. Error was : ") +
      cause.what());
}

XmlValueTag ParseXmlValueTag(std::string_view name) {
  if (name == "text") {
    throw KestrelException("Trying to make a meta object from a text field");
  }
  if (name == "comment") {
    throw KestrelException("Trying to make a meta object from a comment");
  }
  if (name == "list") {
    return XmlValueTag::List;
  }
  if (name == "structure") {
    return XmlValueTag::Structure;
  }
  if (name == "int") {
    return XmlValueTag::Int;
  }
  if (name == "bool") {
    return XmlValueTag::Bool;
  }
  if (name == "string") {
    return XmlValueTag::String;
  }
  throw KestrelException("Unable to make a MetaObject from a node with tag '" + std::string(name) +
                         "'");
}

std::shared_ptr<MetaObject> MakeXmlInt(const std::string& content) {
  if (content.empty()) {
    return MetaObj::MetaInt::New();
  }
  std::int64_t value = 0;
  if (!ReadLeadingInteger(content, value)) {
    throw KestrelException("Unable to read an int value from: '" + content + "'");
  }
  return MetaObj::MetaInt::New(value);
}

std::shared_ptr<MetaObject> MakeXmlBool(const std::string& content) {
  return MetaObj::MetaBool::New(content != "false" && content != "f" && content != "0");
}

std::shared_ptr<MetaObject> MakeXmlString(std::string content) {
  return MetaObj::MetaString::NewUtf8WithEscapes(std::move(content));
}

XmlListBuilder::XmlListBuilder(std::string_view typeWord) : kind_(ParseListType(typeWord)) {
  if (kind_ != MetaType::Struct && kind_ != MetaType::List) {
    list_ = MetaList::New(kind_);
  }
}

void XmlListBuilder::Add(const std::shared_ptr<MetaObject>& element) {
  if (list_ == nullptr) {
    list_ = MetaList::New(kind_, CopyOfStruct(element));
  }
  list_->Add(element);
}

std::shared_ptr<MetaList> XmlListBuilder::Finish() {
  if (list_ == nullptr) {
    list_ = MetaList::New(kind_, nullptr);
  }
  return list_;
}

}  // namespace Kestrel::AutoCli
