// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <exception>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "tools/lint/Checks.h"
#include "tools/lint/Language.h"

namespace Kestrel::Lint {

using CallSpec::ParameterConstraint;
using CallSpec::ParameterSpec;

namespace {

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool IsBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

void CheckNames(const ParameterSpec& parameter, const Element& element, FileReport& report) {
  const std::string& name = parameter.GetName();
  const std::string& shortName = parameter.GetShortName();
  if (!IsLetter(name[0])) {
    report.Add("parameter-untypable", element,
               "the option --" + name + " cannot be typed: a long option begins with a letter",
               "use a name that begins with a letter");
  } else if (name == "help") {
    report.Add("parameter-untypable", element, "every command has a parameter 'help' already",
               "use another name");
  }
  if (!shortName.empty() && !IsLetter(shortName[0])) {
    report.Add("parameter-untypable", element,
               "the option -" + shortName + " cannot be typed: a short option is a letter",
               "use a letter");
  } else if (shortName == "h") {
    report.Add("parameter-untypable", element, "-h is the option of 'help' already",
               "use another letter");
  }
  if (parameter.GetType() == CallSpec::Flag && parameter.IsRequired()) {
    report.Add("flag-required", element, "the flag '" + name + "' is required, so it says nothing",
               "write required=\"false\"");
  }
}

// Whether there is a constraint that was refused, or one that is misspelt.
bool HasLostConstraint(const ParameterSpec& parameter, const Element& element) {
  return parameter.GetConstraint() == nullptr &&
         std::any_of(element.children.begin(), element.children.end(),
                     [](const auto& child) { return child->name != "description"; });
}

void CheckDescription(const ParameterSpec& parameter, const Element& element, FileReport& report) {
  const Element* const description = element.Find("description");
  if (description == nullptr) {
    return;
  }
  if (IsBlank(description->GetContent())) {
    report.Add("description-missing", *description,
               "the description of '" + parameter.GetName() + "' is empty", "write one");
  }
  const std::string shown = parameter.GetDescription(true);
  for (const char* marker : {"%ENUM%", "%REGEX%", "%FULLENUM%"}) {
    if (shown.find(marker) != std::string::npos && !HasLostConstraint(parameter, element)) {
      report.Add("description-marker", *description,
                 std::string("the help page shows ") + marker + " unchanged" +
                     (parameter.GetConstraint() == nullptr ? ": there is no constraint"
                                                           : ": only the first one is replaced"),
                 "add a constraint, or remove the marker");
    }
  }
}

void CheckRegex(const ParameterConstraint& constraint, const Element& element, FileReport& report) {
  const std::string& text = constraint.GetStringRegex();
  try {
    constraint.Validate("", "name", CallSpec::Output::New());
  } catch (const std::exception& error) {
    report.Add("regex-invalid", element, "the expression does not compile: " + Quote(error.what()),
               "correct it; the loader accepts it, and every call with the parameter fails");
    return;
  }
  if (IsBlank(text.substr(0, 1)) || IsBlank(text.substr(text.size() - 1))) {
    report.Add("regex-space", element, "the spaces around the expression are a part of it",
               "write it without line ends and spaces around it");
    return;
  }
  const std::optional<Language> language = Language::Parse(text);
  if (!language) {
    return;
  }
  if (language->IsEmpty()) {
    report.Add("constraint-nothing", element, "no value matches the expression", "correct it");
  } else if (language->IsEverything()) {
    report.Add("constraint-everything", element, "every value matches the expression",
               "remove the constraint, or restrict it");
  } else if (language->IsExponential()) {
    report.Add("regex-exponential", element,
               "some values take exponential time: a loop matches a string in two ways",
               "write the expression so that there is one way, without a repeat in a repeat");
  }
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

void CheckConstraint(const ParameterConstraint& constraint, const Element& element,
                     FileReport& report) {
  const Element* const child = element.children.empty() ? nullptr : element.children[0].get();
  const Element& place = child == nullptr ? element : *child;
  std::int64_t minimum = 0;
  std::int64_t maximum = 0;
  constraint.GetIntRange(minimum, maximum);
  const bool isIntRange = constraint.GetType() == CallSpec::IntRange;
  const bool isEmpty =
      (constraint.GetType() == CallSpec::IntEnum && constraint.GetIntEnum().empty()) ||
      (constraint.GetType() == CallSpec::StringEnum && constraint.GetStringEnum().empty());
  if (isEmpty) {
    report.Add("constraint-nothing", place, "the enumeration is empty, so no value is accepted",
               "add values");
  } else if (isIntRange && minimum == kLeast && maximum == kMost) {
    report.Add("constraint-everything", place, "every integer is in the range", "restrict it");
  } else if (constraint.GetType() == CallSpec::StringRegex) {
    CheckRegex(constraint, place, report);
  }
  CheckNumbers(element, report);
}

}  // namespace

void CheckParameters(const CommandParts& command, FileReport& report) {
  for (const auto& parameter : command.input->GetParameters()) {
    const auto found = command.parameters.find(parameter->GetName());
    if (found == command.parameters.end()) {
      continue;
    }
    CheckNames(*parameter, *found->second, report);
    CheckDescription(*parameter, *found->second, report);
    const Element* const constraint = found->second->Find("constraint");
    if (constraint != nullptr && parameter->GetConstraint() != nullptr) {
      CheckConstraint(*parameter->GetConstraint(), *constraint, report);
    }
  }
  const Element* const description = command.element->Find("description");
  if (description == nullptr || IsBlank(description->GetContent())) {
    report.Add("description-missing", description == nullptr ? *command.element : *description,
               "the command has no description", "say in one sentence what it does");
  }
}

}  // namespace Kestrel::Lint
