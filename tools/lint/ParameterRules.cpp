// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/ParameterRules.h"

#include <cstdint>
#include <exception>
#include <limits>
#include <optional>

#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "tools/lint/FileReport.h"
#include "tools/lint/Language.h"

namespace Kestrel::Lint {

using CallSpec::ParameterConstraint;
using CallSpec::ParameterSpec;

namespace {

constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

class Finder {
 public:
  explicit Finder(const ParameterSpec& parameter) : parameter_(parameter) {}

  std::vector<ParameterFault> Run() {
    CheckName();
    CheckShortName();
    CheckDescription();
    if (parameter_.GetConstraint() != nullptr) {
      CheckConstraint(*parameter_.GetConstraint());
    }
    return std::move(faults_);
  }

 private:
  using Part = ParameterFault::Part;

  void Add(const char* rule, Part part, const std::string& what, const std::string& advice) {
    faults_.push_back({rule, part, what, advice});
  }

  void CheckName() {
    const std::string& name = parameter_.GetName();
    if (!IsLetter(name[0])) {
      Add("parameter-untypable", Part::Whole,
          "the option --" + name + " cannot be typed: a long option begins with a letter",
          "use a name that begins with a letter");
    } else if (name == "help") {
      Add("parameter-untypable", Part::Whole, "every command has a parameter 'help' already",
          "use another name");
    }
    if (parameter_.GetType() == CallSpec::Flag && parameter_.IsRequired()) {
      Add("flag-required", Part::Whole, "the flag '" + name + "' is required, so it says nothing",
          "let it be optional");
    }
  }

  void CheckShortName() {
    const std::string& shortName = parameter_.GetShortName();
    if (!shortName.empty() && !IsLetter(shortName[0])) {
      Add("parameter-untypable", Part::Whole,
          "the option -" + shortName + " cannot be typed: a short option is a letter",
          "use a letter");
    } else if (shortName == "h") {
      Add("parameter-untypable", Part::Whole, "-h is the option of 'help' already",
          "use another letter");
    }
  }

  void CheckDescription() {
    const std::string shown = parameter_.GetDescription(true);
    if (shown.find_first_not_of(" \t\r\n") == std::string::npos) {
      Add("description-missing", Part::Description,
          "the description of '" + parameter_.GetName() + "' is empty", "write one");
    }
    const bool hasConstraint = parameter_.GetConstraint() != nullptr;
    for (const char* marker : {"%ENUM%", "%REGEX%", "%FULLENUM%"}) {
      if (shown.find(marker) != std::string::npos) {
        Add("description-marker", Part::Description,
            std::string("the help page shows ") + marker + " unchanged" +
                (hasConstraint ? ": only the first one is replaced" : ": there is no constraint"),
            "add a constraint, or remove the marker");
      }
    }
  }

  void CheckConstraint(const ParameterConstraint& constraint) {
    const bool isEmpty =
        (constraint.GetType() == CallSpec::IntEnum && constraint.GetIntEnum().empty()) ||
        (constraint.GetType() == CallSpec::StringEnum && constraint.GetStringEnum().empty());
    if (isEmpty) {
      Add("constraint-nothing", Part::Constraint,
          "the enumeration is empty, so no value is accepted", "add values");
    } else if (constraint.GetType() == CallSpec::IntRange) {
      CheckRange(constraint);
    } else if (constraint.GetType() == CallSpec::StringRegex) {
      CheckRegex(constraint);
    }
  }

  void CheckRange(const ParameterConstraint& constraint) {
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
    constraint.GetIntRange(minimum, maximum);
    if (minimum == kLeast && maximum == kMost) {
      Add("constraint-everything", Part::Constraint, "every integer is in the range",
          "restrict it");
    }
  }

  void CheckRegex(const ParameterConstraint& constraint) {
    try {
      constraint.Validate("", "name", CallSpec::Output::New());
    } catch (const std::exception& error) {
      Add("regex-invalid", Part::Constraint,
          "the expression does not compile: " + Quote(error.what()),
          "correct it; the loader accepts it, and every call with the parameter fails");
      return;
    }
    const std::optional<Language> language = Language::Parse(constraint.GetStringRegex());
    if (!language) {
      return;
    }
    if (language->IsEmpty()) {
      Add("constraint-nothing", Part::Constraint, "no value matches the expression", "correct it");
    } else if (language->IsEverything()) {
      Add("constraint-everything", Part::Constraint, "every value matches the expression",
          "remove the constraint, or restrict it");
    } else if (language->IsExponential()) {
      Add("regex-exponential", Part::Constraint,
          "some values take exponential time: a loop matches a string in two ways",
          "write the expression so that there is one way, without a repeat in a repeat");
    }
  }

  const ParameterSpec& parameter_;
  std::vector<ParameterFault> faults_;
};

}  // namespace

std::vector<ParameterFault> FindParameterFaults(const ParameterSpec& parameter) {
  return Finder(parameter).Run();
}

}  // namespace Kestrel::Lint
