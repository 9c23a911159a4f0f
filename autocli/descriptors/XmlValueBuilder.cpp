// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/XmlValueBuilder.h"

#include <utility>

#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaObject;
using MetaObj::MetaStruct;

void XmlValueBuilder::StartElement(std::string_view name, const XmlAttributes& attributes) {
  if (done_) {
    return;
  }
  if (ignoredDepth_ > 0 || scalar_.has_value()) {
    ++ignoredDepth_;
    return;
  }
  if (depth_ == 0) {
    Open(OpenElement::Kind::Root);
    return;
  }
  StartInside(Innermost(), name, attributes);
}

void XmlValueBuilder::EndElement() {
  if (done_) {
    return;
  }
  if (ignoredDepth_ > 0) {
    --ignoredDepth_;
    return;
  }
  EndOpen();
}

void XmlValueBuilder::Content(std::string_view text) {
  if (scalar_.has_value() && ignoredDepth_ == 0 && !done_) {
    content_ = text;
  }
}

bool XmlValueBuilder::AwaitsValue(const OpenElement& element) {
  switch (element.kind) {
    case OpenElement::Kind::Root:
    case OpenElement::Kind::List:
      return true;
    case OpenElement::Kind::Field:
      return !element.hasValue;
    default:
      return false;
  }
}

XmlValueBuilder::OpenElement& XmlValueBuilder::Open(OpenElement::Kind kind) {
  if (depth_ == open_.size()) {
    open_.emplace_back();
  }
  OpenElement& opened = open_[depth_++];
  opened.kind = kind;
  opened.hasValue = false;
  return opened;
}

void XmlValueBuilder::StartInside(const OpenElement& parent, std::string_view name,
                                  const XmlAttributes& attributes) {
  if (AwaitsValue(parent)) {
    StartValue(name, attributes);
  } else if (parent.kind == OpenElement::Kind::Structure && name == "field") {
    StartField(attributes);
  } else {
    ignoredDepth_ = 1;
  }
}

void XmlValueBuilder::StartField(const XmlAttributes& attributes) {
  OpenElement& field = Open(OpenElement::Kind::Field);
  field.name = ValueOf(attributes, "name");
  if (field.name.empty()) {
    throw KestrelException(kFieldWithoutName);
  }
}

void XmlValueBuilder::StartValue(std::string_view name, const XmlAttributes& attributes) {
  const XmlValueTag tag = ParseXmlValueTag(name);
  if (tag == XmlValueTag::List) {
    Open(OpenElement::Kind::List).list.emplace(ValueOf(attributes, "type"));
  } else if (tag == XmlValueTag::Structure) {
    Open(OpenElement::Kind::Structure).structure =
        MetaStruct::New(std::string(ValueOf(attributes, "typeName")));
  } else {
    scalar_ = tag;
    content_.clear();
  }
}

void XmlValueBuilder::EndOpen() {
  if (scalar_.has_value()) {
    return EndScalar();
  }
  OpenElement& ended = Innermost();
  --depth_;
  switch (ended.kind) {
    case OpenElement::Kind::Root:
      done_ = true;
      return;
    case OpenElement::Kind::Field:
      return;
    case OpenElement::Kind::Structure:
      return Complete(std::move(ended.structure));
    case OpenElement::Kind::List:
      return Complete(ended.list->Finish());
  }
}

void XmlValueBuilder::EndScalar() {
  const XmlValueTag tag = *scalar_;
  scalar_.reset();
  if (tag == XmlValueTag::Int) {
    Complete(MakeXmlInt(content_));
  } else if (tag == XmlValueTag::Bool) {
    Complete(MakeXmlBool(content_));
  } else {
    Complete(MakeXmlString(std::move(content_)));
  }
}

void XmlValueBuilder::Complete(const std::shared_ptr<MetaObject>& value) {
  OpenElement& parent = Innermost();
  if (parent.kind == OpenElement::Kind::List) {
    parent.list->Add(value);
  } else if (parent.kind == OpenElement::Kind::Field) {
    parent.hasValue = true;
    open_[depth_ - 2].structure->SetField(parent.name, value);
  } else {
    value_ = value;
    done_ = true;
  }
}

}  // namespace Kestrel::AutoCli
