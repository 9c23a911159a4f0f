// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/Input.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "callspec/ParameterLookup.h"
#include "callspec/TextValue.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::CallSpec {

namespace {

const std::string& EmptyText() {
  static const std::string text;
  return text;
}

// A word that is not a boolean counts as false. Reporting it is the task of the validation.
bool IsTrue(const std::string& text) {
  bool value = false;
  ReadBoolean(text, value);
  return value;
}

}  // namespace

std::shared_ptr<Input> Input::New() { return std::make_shared<Input>(FactoryFlag()); }

Input::Input(FactoryFlag) : Input() {}

Input::Input() = default;

Input::~Input() = default;

void Input::AddParameter(const std::string& name, const std::string& value) {
  parameters_[name].push_back(value);
}

void Input::AddParameter(const std::string& name, const std::vector<std::string>& values) {
  const std::size_t count = values.size();
  if (count == 0) {
    return;
  }
  std::vector<std::string>& entry = parameters_[name];
  // Copies by index, because `values` may be the entry itself.
  for (std::size_t i = 0; i < count; ++i) {
    entry.push_back(values[i]);
  }
}

void Input::SetInputSpec(std::shared_ptr<InputSpec> spec) {
  if (!spec) {
    throw KestrelException("Null input specification passed to SetInputSpec");
  }
  spec_ = std::move(spec);
  for (const auto& parameter : spec_->GetParameters()) {
    if (parameter->GetShortName().empty()) {
      continue;  // values given under the empty name belong to no parameter
    }
    const auto given = parameters_.find(parameter->GetShortName());
    if (given != parameters_.end()) {
      const auto entry = parameters_.extract(given);
      std::vector<std::string>& values = parameters_[parameter->GetName()];
      std::move(entry.mapped().begin(), entry.mapped().end(), std::back_inserter(values));
    }
  }
}

const std::map<std::string, std::vector<std::string>>& Input::GetParameters() const {
  return parameters_;
}

bool Input::HasParameter(const std::string& name) const { return parameters_.count(name) != 0; }

bool Input::HasParameter(const char* name) const { return HasParameter(TextOrEmpty(name)); }

bool Input::IsFlagSet(const std::string& name) const { return HasParameter(name); }

bool Input::IsFlagSet(const char* name) const { return HasParameter(name); }

ParameterType Input::GetParameterType(const std::string& name) const {
  const ParameterSpec* spec = spec_ ? FindParameter(spec_->GetParameters(), name) : nullptr;
  if (spec == nullptr) {
    throw KestrelException("Request for unknown parameter: " + name);
  }
  return spec->GetParameterType();
}

const std::string& Input::GetParameter(const std::string& name) const {
  switch (GetParameterType(name)) {
    case Flag:
      throw KestrelException("Request for GetParameter on a flag type parameter: " + name);
    case StringList:
    case IntList:
    case BoolList:
      throw KestrelException(
          "Request for GetParameter on a parameter that can have multiple values: " + name);
    default:
      break;
  }
  const std::vector<std::string>& values = GetValues(name);
  return values.size() == 1 ? values.front() : EmptyText();
}

const std::string& Input::GetParameter(const char* name) const {
  return GetParameter(TextOrEmpty(name));
}

std::int64_t Input::GetParameterInt(const std::string& name) const {
  std::int64_t value = -1;
  ReadInteger(GetParameter(name), value);
  return value;
}

bool Input::GetParameterBool(const std::string& name) const { return IsTrue(GetParameter(name)); }

void Input::GetParameterList(const std::string& name, std::vector<std::string>& out) const {
  const std::vector<std::string>& values = GetValues(name);
  out.insert(out.end(), values.begin(), values.end());
}

void Input::GetParameterIntList(const std::string& name, std::vector<std::int64_t>& out) const {
  std::int64_t number = 0;
  for (const std::string& value : GetValues(name)) {
    if (ReadInteger(value, number)) {
      out.push_back(number);
    }
  }
}

void Input::GetParameterBoolList(const std::string& name, std::vector<bool>& out) const {
  for (const std::string& value : GetValues(name)) {
    out.push_back(IsTrue(value));
  }
}

std::string Input::GetParameterListAsString(const std::string& name, char separator,
                                            bool quote) const {
  std::string text;
  if (quote) {
    text += '"';
  }
  bool isFirst = true;
  for (const std::string& value : GetValues(name)) {
    if (!isFirst) {
      text += separator;
    }
    text += value;
    isFirst = false;
  }
  if (quote) {
    text += '"';
  }
  return text;
}

void Input::SetContext(const std::string& name, const std::string& value) {
  contexts_[name] = value;
}

const std::string& Input::GetContext(const std::string& name) const {
  const auto context = contexts_.find(name);
  return context == contexts_.end() ? EmptyText() : context->second;
}

const std::vector<std::string>& Input::GetValues(const std::string& name) const {
  static const std::vector<std::string> noValues;
  const auto given = parameters_.find(name);
  return given == parameters_.end() ? noValues : given->second;
}

}  // namespace Kestrel::CallSpec
