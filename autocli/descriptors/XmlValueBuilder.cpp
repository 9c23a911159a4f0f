// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/descriptors/XmlValueBuilder.h"

#include <utility>

#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaObject;
using MetaObj::MetaStruct;

namespace {

/// The limit of a tree, in bytes, for text or a CDATA section that the parser passes in pieces.
constexpr std::size_t kMaxJoinedText = 10000000;

}  // namespace

void XmlValueBuilder::StartElement(const xmlChar* name, const XmlAttributes& attributes) {
  last_ = LastNode::None;
  if (attributes.HasXmlId()) {
    needsTree_ = true;
  }
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
  last_ = LastNode::Other;
  if (done_) {
    return;
  }
  if (ignoredDepth_ > 0) {
    --ignoredDepth_;
    return;
  }
  EndOpen();
}

void XmlValueBuilder::Comment(const char* text) {
  last_ = LastNode::Other;
  if (TakesContent()) {
    content_ = text;
  }
}

void XmlValueBuilder::ProcessingInstruction(const xmlChar* target, const char* data) {
  last_ = LastNode::Other;
  if (TakesContent()) {
    if (data != nullptr) {
      content_ = data;
    }
    return;
  }
  if (done_ || ignoredDepth_ > 0 || depth_ == 0 || !AwaitsValue(Innermost())) {
    return;
  }
  StartValue(target, XmlAttributes());
  EndOpen();
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

void XmlValueBuilder::StartInside(const OpenElement& parent, const xmlChar* name,
                                  const XmlAttributes& attributes) {
  if (AwaitsValue(parent)) {
    StartValue(name, attributes);
  } else if (parent.kind == OpenElement::Kind::Structure && name == names_.field) {
    StartField(attributes);
  } else {
    ignoredDepth_ = 1;
  }
}

void XmlValueBuilder::StartField(const XmlAttributes& attributes) {
  OpenElement& field = Open(OpenElement::Kind::Field);
  attributes.Get(names_.name, field.name);
  if (field.name.empty()) {
    throw KestrelException(kFieldWithoutName);
  }
}

void XmlValueBuilder::StartValue(const xmlChar* name, const XmlAttributes& attributes) {
  const XmlValueTag tag = FindTag(name);
  if (tag == XmlValueTag::List) {
    Open(OpenElement::Kind::List).list.emplace(attributes.Get(names_.type));
  } else if (tag == XmlValueTag::Structure) {
    Open(OpenElement::Kind::Structure).structure = MetaStruct::New(attributes.Get(names_.typeName));
  } else {
    scalar_ = tag;
    content_.clear();
  }
}

XmlValueTag XmlValueBuilder::FindTag(const xmlChar* name) const {
  // Fast path: the address of a name is enough to recognise it. All other names are compared.
  if (name == names_.string) {
    return XmlValueTag::String;
  }
  if (name == names_.integer) {
    return XmlValueTag::Int;
  }
  if (name == names_.boolean) {
    return XmlValueTag::Bool;
  }
  if (name == names_.structure) {
    return XmlValueTag::Structure;
  }
  return ParseXmlValueTag(AsChars(name));
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

bool XmlValueBuilder::TakesContent() const {
  return scalar_.has_value() && ignoredDepth_ == 0 && !done_;
}

void XmlValueBuilder::Join(LastNode kind, const char* text, std::size_t length) {
  const bool continues = last_ == kind;
  joinedLength_ = continues ? joinedLength_ + length : length;
  last_ = kind;
  if (continues && joinedLength_ > kMaxJoinedText) {
    needsTree_ = true;
  }
  if (!TakesContent()) {
    return;
  }
  if (!continues) {
    content_.clear();
  }
  content_.append(text, length);
}

}  // namespace Kestrel::AutoCli
