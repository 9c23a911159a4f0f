// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "tools/lint/Checks.h"
#include "tools/lint/ParameterRules.h"

namespace Kestrel::Lint {

using CallSpec::ParameterSpec;

namespace {

bool IsBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

// Whether the expression begins or ends with white space, which is then probably the cause of any
// other fault of the expression.
bool HasSpaceAround(const ParameterSpec& parameter) {
  const auto& constraint = parameter.GetConstraint();
  if (constraint == nullptr || constraint->GetType() != CallSpec::StringRegex) {
    return false;
  }
  const std::string& text = constraint->GetStringRegex();
  return IsBlank(text.substr(0, 1)) || IsBlank(text.substr(text.size() - 1));
}

// Returns the element inside the constraint, or the constraint itself if it has none.
const Element& DataOf(const Element& constraint) {
  return constraint.children.empty() ? constraint : *constraint.children[0];
}

const Element* PlaceOf(ParameterFault::Part part, const Element& parameter) {
  if (part == ParameterFault::Part::Description) {
    return parameter.Find("description");
  }
  if (part == ParameterFault::Part::Constraint) {
    const Element* const constraint = parameter.Find("constraint");
    return constraint == nullptr ? nullptr : &DataOf(*constraint);
  }
  return &parameter;
}

void CheckInteger(const std::string& text, const Element& element, FileReport& report) {
  const std::size_t digits = text.find_first_not_of(" \t\r\n+-");
  const std::size_t end = text.find_first_not_of("0123456789", digits);
  if (end != std::string::npos) {
    report.Add("number-cut", element,
               "only the beginning of " + Quote(text) + " is read as a number, " +
                   Quote(text.substr(end)) + " is ignored",
               "write digits only");
  }
}

void CheckNumbers(const Element& constraint, FileReport& report) {
  if (const Element* const range = constraint.Find("range");
      range != nullptr && constraint.Get("type") == "range") {
    CheckInteger(range->Get("min"), *range, report);
    CheckInteger(range->Get("max"), *range, report);
  }
  const Element* const list = constraint.Find("enum");
  if (list == nullptr || constraint.Get("type") != "intenum") {
    return;
  }
  for (const Element* value : list->FindAll("enum-value")) {
    CheckInteger(value->Get("value"), *value, report);
  }
}

void CheckParameter(const ParameterSpec& parameter, const Element& element, FileReport& report) {
  const Element* const constraint = element.Find("constraint");
  const bool hasSpace = constraint != nullptr && HasSpaceAround(parameter);
  for (const ParameterFault& fault : FindParameterFaults(parameter)) {
    const Element* const place = PlaceOf(fault.part, element);
    const bool isMarker = std::string_view(fault.rule) == "description-marker";
    const bool isCovered = (isMarker && HasLostConstraint(parameter, element)) ||
                           (hasSpace && fault.part == ParameterFault::Part::Constraint &&
                            std::string_view(fault.rule) != "regex-invalid");
    if (place != nullptr && !isCovered) {
      report.Add(fault.rule, *place, fault.what, fault.advice);
    }
  }
  if (hasSpace && !report.HasFinding(DataOf(*constraint))) {
    report.Add("regex-space", DataOf(*constraint),
               "the spaces around the expression are a part of it",
               "write it without line ends and spaces around it");
  }
  if (constraint != nullptr && parameter.GetConstraint() != nullptr) {
    CheckNumbers(*constraint, report);
  }
}

}  // namespace

bool HasLostConstraint(const ParameterSpec& parameter, const Element& element) {
  return parameter.GetConstraint() == nullptr &&
         std::any_of(element.children.begin(), element.children.end(),
                     [](const auto& child) { return child->name != "description"; });
}

void CheckParameters(const CommandParts& command, FileReport& report) {
  for (const auto& parameter : command.input->GetParameters()) {
    const auto found = command.parameters.find(parameter->GetName());
    if (found != command.parameters.end()) {
      CheckParameter(*parameter, *found->second, report);
    }
  }
  const Element* const description = command.element->Find("description");
  if (description == nullptr || IsBlank(description->GetContent())) {
    report.Add("description-missing", description == nullptr ? *command.element : *description,
               "the command has no description", "say in one sentence what it does");
  }
}

}  // namespace Kestrel::Lint
