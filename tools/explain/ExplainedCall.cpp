// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/explain/ExplainedCall.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "kestrel/autocli/OptionParser.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "tools/catalog/CatalogWords.h"
#include "tools/explain/ShellTexts.h"

namespace Kestrel::Explain {

using AutoCli::CommandInput;
using CallSpec::Output;
using CallSpec::ParameterConstraint;
using CallSpec::ParameterSpec;

namespace {

constexpr const char* kHidden = "***";

std::string TypedValue(const ParameterSpec& parameter, const std::string& value) {
  std::int64_t number = 0;
  bool isTrue = false;
  switch (parameter.GetType()) {
    case CallSpec::Int:
    case CallSpec::IntList:
      return ParameterSpec::GetInt(value, number) ? std::to_string(number) : Quote(value);
    case CallSpec::Bool:
    case CallSpec::BoolList:
      return ParameterSpec::GetBool(value, isTrue) ? (isTrue ? "true" : "false") : Quote(value);
    case CallSpec::Flag:
      return value.empty() ? "true" : Quote(value);
    default:
      return Quote(value);
  }
}

bool IsMet(const ParameterConstraint& constraint, const std::vector<std::string>& values) {
  return std::all_of(values.begin(), values.end(), [&](const std::string& value) {
    return constraint.Validate(value, "", Output::New());
  });
}

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); !from.empty() && at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace

ExplainedCall::ExplainedCall(AutoCli::CommandSpec& command, const Vexil::CommandLine& line)
    : spec_(command.GetInputSpec()), input_(CommandInput::New()) {
  ReadLine(line);
}

const ParameterSpec* ExplainedCall::FindParameter(const std::string& anyName) const {
  for (const auto& parameter : spec_->GetParameters()) {
    if (parameter->GetName() == anyName || parameter->GetShortName() == anyName) {
      return parameter.get();
    }
  }
  return nullptr;
}

// The parser of the library would ask for a secret that has no value, so such a secret gets a value
// here.
void ExplainedCall::ReadLine(const Vexil::CommandLine& line) {
  std::vector<std::string> tokens = line.path;
  for (const Vexil::TypedOption& option : line.commandOptions) {
    ReadOption(option, tokens);
  }
  tokens.insert(tokens.end(), line.extraWords.begin(), line.extraWords.end());
  AutoCli::OptionParser parser;
  parser.ParseVector(std::move(tokens));
  parser.SetInputSpec(spec_);
  input_->SetDispatcher(parser.GetDispatcher());
  input_->SetCommandPath(parser.GetCommandPath());
  for (const auto& [name, value] : parser.GetCommandParameters()) {
    input_->AddParameter(name, value);
  }
  parseErrors_ = parser.GetParseErrors();
  input_->SetInputSpec(spec_);
}

void ExplainedCall::ReadOption(const Vexil::TypedOption& option, std::vector<std::string>& tokens) {
  const ParameterSpec* const parameter = FindParameter(option.name);
  const std::string name = parameter == nullptr ? option.name : parameter->GetName();
  spellings_.emplace_back(name, option.spelling);
  tokens.push_back(option.spelling);
  const bool isSecret = parameter != nullptr && parameter->IsSecret();
  const bool hasValue = option.tookWord || !option.value.empty();
  if (isSecret && hasValue) {
    secrets_.push_back(option.value);
  } else if (isSecret) {
    prompted_.push_back(name);
    tokens.emplace_back();
  }
  if (option.tookWord) {
    tokens.push_back(option.value);
  } else if (hasValue) {
    tokens.back() += "=" + option.value;
  }
}

bool ExplainedCall::IsPrompted(const std::string& name) const {
  return std::find(prompted_.begin(), prompted_.end(), name) != prompted_.end();
}

std::shared_ptr<CommandInput> ExplainedCall::CopyInput(bool withPrompted,
                                                       const std::string* placeholder) const {
  const std::shared_ptr<CommandInput> copy = CommandInput::New();
  copy->SetDispatcher(input_->GetDispatcher());
  copy->SetCommandPath(input_->GetCommandPath());
  for (const auto& [name, values] : input_->GetParameters()) {
    const ParameterSpec* const parameter = FindParameter(name);
    const bool isHidden = placeholder != nullptr && parameter != nullptr && parameter->IsSecret();
    if (withPrompted || !IsPrompted(name)) {
      copy->AddParameter(name,
                         isHidden ? std::vector<std::string>(values.size(), *placeholder) : values);
    }
  }
  copy->SetInputSpec(spec_);
  return copy;
}

std::shared_ptr<CommandInput> ExplainedCall::HideSecrets(const std::string& placeholder) const {
  return CopyInput(true, &placeholder);
}

std::vector<std::string> ExplainedCall::Validate() const {
  if (!parseErrors_.empty()) {
    return parseErrors_;
  }
  const std::shared_ptr<Output> output = Output::New();
  spec_->Validate(CopyInput(false, nullptr), output);
  std::vector<std::string> errors;
  for (const std::string& error : output->GetErrors()) {
    const bool isAboutPrompted = std::any_of(
        prompted_.begin(), prompted_.end(),
        [&](const std::string& name) { return error == "Missing required parameter --" + name; });
    if (!isAboutPrompted) {
      errors.push_back(HideSecretsIn(error));
    }
  }
  return errors;
}

// A message about a secret is taken from a call with another value. Masking the secret in the
// message would not be enough: a short secret may also occur in the fixed part, and the mask would
// reveal it. Two other values are tried: a value that the constraint accepts causes no message, but
// few constraints accept both.
std::string ExplainedCall::HideSecretsIn(const std::string& error) const {
  for (const std::string& placeholder : {std::string(kHidden), std::string("\x01")}) {
    const std::shared_ptr<Output> output = Output::New();
    spec_->Validate(HideSecrets(placeholder), output);
    for (const std::string& other : output->GetErrors()) {
      const auto isSame = [&](const std::string& secret) {
        return Replace(other, placeholder, secret) == error;
      };
      if (other == error || std::any_of(secrets_.begin(), secrets_.end(), isSame)) {
        return Replace(other, placeholder, kHidden);
      }
    }
  }
  return Mask(error);
}

// Masks the longest secret first, because a shorter one may be a part of it.
std::string ExplainedCall::Mask(std::string text) const {
  std::vector<std::string> secrets(secrets_.begin(), secrets_.end());
  std::sort(secrets.begin(), secrets.end(),
            [](const auto& left, const auto& right) { return left.size() > right.size(); });
  for (const std::string& secret : secrets) {
    text = Replace(text, secret, kHidden);
  }
  return text;
}

ExplainedParameter ExplainedCall::Describe(const ParameterSpec& parameter) const {
  ExplainedParameter described;
  described.name = parameter.GetName();
  described.kind = Catalog::WordOf(parameter.GetType());
  std::vector<std::string> values;
  input_->GetParameterList(described.name, values);
  for (const std::string& value : values) {
    described.values.push_back(parameter.IsSecret() ? kHidden : TypedValue(parameter, value));
  }
  for (const auto& [name, spelling] : spellings_) {
    if (name == described.name && described.origin.find(spelling) == std::string::npos) {
      described.origin += (described.origin.empty() ? "" : ", ") + spelling;
    }
  }
  if (IsPrompted(described.name)) {
    described.origin += ", asked for when the command runs";
  }
  const auto& constraint = parameter.GetConstraint();
  if (constraint != nullptr) {
    described.constraint = constraint->ToString();
    described.isConstraintMet = IsPrompted(described.name) || IsMet(*constraint, values);
  }
  return described;
}

std::vector<ExplainedParameter> ExplainedCall::DescribeParameters() const {
  std::vector<ExplainedParameter> described;
  for (const auto& parameter : spec_->GetParameters()) {
    if (parameter->GetName() != "help") {
      described.push_back(Describe(*parameter));
    }
  }
  return described;
}

}  // namespace Kestrel::Explain
