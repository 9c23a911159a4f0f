// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "vexil/DispatcherOptions.h"
#include "vexil/HintContext.h"
#include "vexil/WordCost.h"

namespace Kestrel::Vexil {

using CallSpec::ParameterConstraint;
using CallSpec::ParameterSpec;

namespace {

constexpr std::size_t kMaxNames = 2;

std::vector<std::shared_ptr<ParameterSpec>> GetParameters(const HintContext& context) {
  return context.command == nullptr ? std::vector<std::shared_ptr<ParameterSpec>>()
                                    : context.command->GetInputSpec()->GetParameters();
}

std::shared_ptr<ParameterSpec> FindParameter(const HintContext& context, const std::string& name) {
  for (const std::shared_ptr<ParameterSpec>& parameter : GetParameters(context)) {
    if (parameter->GetName() == name || parameter->GetShortName() == name) {
      return parameter;
    }
  }
  return nullptr;
}

std::vector<std::string> GetParameterNames(const HintContext& context) {
  std::vector<std::string> names;
  for (const std::shared_ptr<ParameterSpec>& parameter : GetParameters(context)) {
    names.push_back(parameter->GetName());
  }
  return names;
}

std::vector<std::string> GetDispatcherOptionNames() {
  std::vector<std::string> names;
  names.reserve(kDispatcherOptions.size());
  for (const DispatcherOption& option : kDispatcherOptions) {
    names.emplace_back(option.name);
  }
  return names;
}

// Returns the accepted values if they are enumerated, otherwise none.
std::vector<std::string> GetAcceptedValues(const ParameterSpec& parameter) {
  const std::shared_ptr<ParameterConstraint>& constraint = parameter.GetConstraint();
  if (constraint == nullptr) {
    return {};
  }
  if (constraint->GetType() == CallSpec::StringEnum) {
    return constraint->GetStringEnum();
  }
  std::vector<std::string> values;
  if (constraint->GetType() == CallSpec::IntEnum) {
    for (const std::int64_t value : constraint->GetIntEnum()) {
      values.push_back(std::to_string(value));
    }
  }
  return values;
}

void AddNearNames(const TypedOption& option, const std::string& owner,
                  const std::vector<std::string>& names, Hints& hints) {
  const std::vector<std::string> near = NearestNames(option.name, names, kMaxNames);
  if (!near.empty()) {
    hints.push_back(owner + " has no option " + option.spelling + "." + AskFor(near, "--"));
  }
}

void AddDispatcherOptionHint(const HintContext& context, const TypedOption& option, Hints& hints) {
  if (FindDispatcherOption(option.name) != nullptr) {
    return;
  }
  if (FindParameter(context, option.name) != nullptr) {
    hints.push_back(option.spelling + " is an option of " + context.quotedPath +
                    " and comes after it.");
    return;
  }
  AddNearNames(option, "The dispatcher", GetDispatcherOptionNames(), hints);
}

void AddUnknownParameterHint(const HintContext& context, const TypedOption& option, Hints& hints) {
  if (FindDispatcherOption(option.name) != nullptr) {
    hints.push_back(option.spelling + " is an option of the dispatcher and comes before " +
                    context.quotedPath + ".");
    return;
  }
  AddNearNames(option, context.quotedPath, GetParameterNames(context), hints);
}

void AddValueHint(const ParameterSpec& parameter, const TypedOption& option, Hints& hints) {
  if (parameter.IsSecret()) {
    return;
  }
  if (parameter.GetType() == CallSpec::Flag && option.tookWord) {
    hints.push_back(option.spelling + " needs no value but took the word " + Quote(option.value) +
                    ".");
    return;
  }
  const std::vector<std::string> accepted = GetAcceptedValues(parameter);
  const bool isAccepted =
      std::find(accepted.begin(), accepted.end(), option.value) != accepted.end();
  const std::vector<std::string> near = NearestNames(option.value, accepted, kMaxNames);
  if (!isAccepted && !near.empty()) {
    hints.push_back(option.spelling + " does not accept " + Quote(option.value) + "." +
                    AskFor(near));
  }
}

}  // namespace

void AddOptionHints(const HintContext& context, Hints& hints) {
  for (const TypedOption& option : context.line.dispatcherOptions) {
    AddDispatcherOptionHint(context, option, hints);
  }
  if (context.command == nullptr) {
    return;
  }
  for (const TypedOption& option : context.line.commandOptions) {
    if (const auto parameter = FindParameter(context, option.name)) {
      AddValueHint(*parameter, option, hints);
    } else {
      AddUnknownParameterHint(context, option, hints);
    }
  }
}

}  // namespace Kestrel::Vexil
