// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/InputSpec.h"

#include <algorithm>

#include "callspec/ErrorReport.h"
#include "callspec/ParameterLookup.h"
#include "kestrel/KestrelException.h"
#include "kestrel/callspec/Input.h"

namespace Kestrel::CallSpec {

namespace {

constexpr std::size_t kMinNameSize = 2;
constexpr const char* kHelp = "help";

}  // namespace

std::shared_ptr<InputSpec> InputSpec::New() { return std::make_shared<InputSpec>(FactoryFlag()); }

InputSpec::InputSpec(FactoryFlag) : isListed_(false) {}

InputSpec::~InputSpec() = default;

void InputSpec::AddParameter(const std::shared_ptr<ParameterSpec>& spec) {
  if (!spec) {
    throw KestrelException("Null parameter specification passed to AddParameter");
  }
  CheckNames(*spec);
  if (isListed_) {
    listed_.reserve(listed_.size() + 1);  // may throw, so it comes before any change
  }
  declared_.emplace(spec->GetName(), spec);
  if (isListed_) {
    listed_.insert(LowerBound(listed_, spec->GetName()), spec);
  }
}

const std::vector<std::shared_ptr<ParameterSpec>>& InputSpec::GetParameters() const {
  if (!isListed_) {
    listed_.reserve(declared_.size());
    for (const auto& entry : declared_) {
      listed_.push_back(entry.second);
    }
    isListed_ = true;
  }
  return listed_;
}

void InputSpec::SetContextSupported(const std::string& name) { contexts_.insert(name); }

bool InputSpec::IsContextSupported(const std::string& name) const {
  return contexts_.count(name) != 0;
}

bool InputSpec::Validate(const std::shared_ptr<Input>& input,
                         const std::shared_ptr<Output>& output) const {
  if (!input) {
    throw KestrelException("Null input passed to Validate");
  }
  if (input->HasParameter(kHelp)) {
    return true;
  }
  const bool areGivenValid = ValidateGiven(*input, output);
  const bool areRequiredGiven = ValidateRequired(*input, output);
  return areGivenValid && areRequiredGiven;
}

// Reports the first clash in name order.
void InputSpec::CheckNames(const ParameterSpec& spec) const {
  const std::string& name = spec.GetName();
  if (name.size() < kMinNameSize) {
    throw KestrelException("Parameter name must be at least 2 characters");
  }
  const auto duplicate = declared_.find(name);
  CheckShortName(spec, duplicate);
  if (duplicate != declared_.end()) {
    throw KestrelException("Found a duplicate paramater specification for parameter named '" +
                           name + "'");
  }
}

// Asks each parameter before `end` for its current short name, because a short name may have been
// set after its parameter was added. `end` is the parameter of the same name, if there is one.
void InputSpec::CheckShortName(const ParameterSpec& spec,
                               DeclaredParameters::const_iterator end) const {
  const std::string& shortName = spec.GetShortName();
  if (shortName.empty()) {
    return;
  }
  const auto other = std::find_if(declared_.begin(), end, [&](const auto& declared) {
    return declared.second->GetShortName() == shortName;
  });
  if (other != end) {
    throw KestrelException("Invalid short name specified for --" + spec.GetName() +
                           ". The short name -" + shortName + " is already used for --" +
                           other->second->GetName());
  }
}

// The given and the declared parameters are in the same order, so one loop visits both lists.
bool InputSpec::ValidateGiven(const Input& input, const std::shared_ptr<Output>& output) const {
  bool isValid = true;
  auto spec = GetParameters().begin();
  const auto end = GetParameters().end();
  for (const auto& [name, values] : input.GetParameters()) {
    while (spec != end && (*spec)->GetName() < name) {
      ++spec;
    }
    if (spec == end || (*spec)->GetName() != name) {
      ReportError(output, "Unknown parameter : " + name);
      isValid = false;
    } else if (!(*spec)->Validate(values, output)) {
      isValid = false;
    }
  }
  return isValid;
}

bool InputSpec::ValidateRequired(const Input& input, const std::shared_ptr<Output>& output) const {
  bool isValid = true;
  auto given = input.GetParameters().begin();
  const auto end = input.GetParameters().end();
  for (const auto& spec : GetParameters()) {
    while (given != end && given->first < spec->GetName()) {
      ++given;
    }
    const bool isGiven = given != end && given->first == spec->GetName();
    if (!isGiven && spec->IsRequired()) {
      ReportError(output, "Missing required parameter --" + spec->GetName());
      isValid = false;
    }
  }
  return isValid;
}

}  // namespace Kestrel::CallSpec
