// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/Parameter.h"

#include <kestrel/callspec/ParameterConstraint.h>

namespace Kestrel::Host {

using CallSpec::ParameterConstraint;

Parameter::Parameter(const char* name, CallSpec::ParameterType type, const char* description)
    : spec_(CallSpec::ParameterSpec::New(name, type)) {
  spec_->SetDescription(description);
  spec_->SetRequired(false);
}

Parameter& Parameter::Short(const char* shortName) {
  spec_->SetShortName(shortName);
  return *this;
}

Parameter& Parameter::Required() {
  spec_->SetRequired(true);
  return *this;
}

Parameter& Parameter::Secret() {
  spec_->SetSecret(true);
  return *this;
}

Parameter& Parameter::Between(std::int64_t minimum, std::int64_t maximum) {
  auto constraint = ParameterConstraint::New(CallSpec::IntRange);
  constraint->SetIntRange(minimum, maximum);
  spec_->SetConstraint(constraint);
  return *this;
}

Parameter& Parameter::OneOf(std::initializer_list<std::int64_t> values) {
  auto constraint = ParameterConstraint::New(CallSpec::IntEnum);
  for (const std::int64_t value : values) {
    constraint->AddIntEnum(value);
  }
  spec_->SetConstraint(constraint);
  return *this;
}

Parameter& Parameter::OneOf(std::initializer_list<Word> words) {
  auto constraint = ParameterConstraint::New(CallSpec::StringEnum);
  for (const Word& word : words) {
    constraint->AddStringEnum(word.value, word.description);
  }
  spec_->SetConstraint(constraint);
  return *this;
}

Parameter& Parameter::Matching(const char* regex) {
  auto constraint = ParameterConstraint::New(CallSpec::StringRegex);
  constraint->SetStringRegex(regex);
  spec_->SetConstraint(constraint);
  return *this;
}

void Parameter::AddTo(CallSpec::InputSpec& spec) const { spec.AddParameter(spec_); }

}  // namespace Kestrel::Host
