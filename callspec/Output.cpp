// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/Output.h"

#include <utility>

#include "callspec/TextValue.h"

namespace Kestrel::CallSpec {

std::shared_ptr<Output> Output::New() { return std::make_shared<Output>(FactoryFlag()); }

Output::Output(FactoryFlag) : Output() {}

Output::Output() : type_(Ordinary) {}

Output::~Output() = default;

void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaObject>& root) { root_ = root; }

void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root) { root_ = root; }

void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root) { root_ = root; }

void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root) { root_ = root; }

void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root) { root_ = root; }

void Output::SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root) { root_ = root; }

void Output::SetRootObject(std::nullptr_t) { root_.reset(); }

std::shared_ptr<MetaObj::MetaObject> Output::GetRootObject() const { return root_; }

void Output::AddErrorMessage(const std::string& message) { errors_.push_back(message); }

void Output::AddErrorMessage(const char* message) { errors_.push_back(TextOrEmpty(message)); }

void Output::AddErrorMessage(std::string&& message) { errors_.push_back(std::move(message)); }

bool Output::HasError() const { return !errors_.empty(); }

const std::vector<std::string>& Output::GetErrors() const { return errors_; }

void Output::SetOutputType(Output::OutputType type) { type_ = type; }

Output::OutputType Output::GetOutputType() const { return type_; }

}  // namespace Kestrel::CallSpec
