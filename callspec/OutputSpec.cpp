// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/OutputSpec.h"

#include <utility>

#include "kestrel/KestrelException.h"
#include "metaobj/ErrorList.h"
#include "metaobj/MissingDocumentation.h"

namespace Kestrel::CallSpec {

using MetaObj::AppendError;
using MetaObj::MissingDocumentation;

const std::string OutputSpec::_docMissingStaticString(MissingDocumentation());

std::shared_ptr<OutputSpec> OutputSpec::New() {
  return std::make_shared<OutputSpec>(FactoryFlag());
}

OutputSpec::OutputSpec(FactoryFlag) {}

OutputSpec::~OutputSpec() = default;

void OutputSpec::SetRootObject(std::shared_ptr<MetaObj::MetaObject>&& root) {
  if (!root) {
    throw KestrelException("Root object cannot be set to null");
  }
  root_ = std::move(root);
}

void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaObject>& root) {
  SetRootObject(std::shared_ptr<MetaObj::MetaObject>(root));
}

void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root) {
  SetRootObject(std::shared_ptr<MetaObj::MetaObject>(root));
}

void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root) {
  SetRootObject(std::shared_ptr<MetaObj::MetaObject>(root));
}

void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root) {
  SetRootObject(std::shared_ptr<MetaObj::MetaObject>(root));
}

void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root) {
  SetRootObject(std::shared_ptr<MetaObj::MetaObject>(root));
}

void OutputSpec::SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root) {
  SetRootObject(std::shared_ptr<MetaObj::MetaObject>(root));
}

void OutputSpec::SetRootObject(std::nullptr_t) {
  SetRootObject(std::shared_ptr<MetaObj::MetaObject>());
}

std::shared_ptr<MetaObj::MetaObject> OutputSpec::GetRootObject() const { return root_; }

void OutputSpec::SetDescription(const std::string& description) { description_ = description; }

const std::string& OutputSpec::GetDescription() const {
  return description_.empty() ? MissingDocumentation() : description_;
}

bool OutputSpec::Validate(const std::shared_ptr<Output>& output,
                          std::vector<std::string>* errors) const {
  if (!root_) {
    AppendError(errors,
                "No root object set for output spec. Root object for output spec must be set for "
                "proper validation of output.");
    return false;
  }
  if (!output) {
    throw KestrelException("Null output passed to Validate");
  }
  const std::shared_ptr<MetaObj::MetaObject> result = output->GetRootObject();
  if (!result) {
    AppendError(errors,
                "No root object set for output. The command did not provide proper output.");
    return false;
  }
  return root_->IsSameStructure(result, errors);
}

}  // namespace Kestrel::CallSpec
