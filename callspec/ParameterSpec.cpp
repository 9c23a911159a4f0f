// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/ParameterSpec.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "callspec/ErrorReport.h"
#include "callspec/TextValue.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::CallSpec {

namespace {

// The number of a list type is that of its scalar type with this bit set.
constexpr std::uint32_t kListBit = 4;

bool IsListType(ParameterType type) { return static_cast<std::uint32_t>(type) - kListBit < 3; }

// Returns the type of a single value.
ParameterType ValueType(ParameterType type) {
  return static_cast<ParameterType>(static_cast<std::uint32_t>(type) & ~kListBit);
}

// These functions do not use `islower` and the like, because those depend on the locale.
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsLower(char c) { return c >= 'a' && c <= 'z'; }

bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }

// Whether `name` matches the pattern [a-z0-9-]+ as a whole.
bool IsValidName(const std::string& name) {
  return !name.empty() && std::all_of(name.begin(), name.end(),
                                      [](char c) { return IsLower(c) || IsDigit(c) || c == '-'; });
}

bool IsValidShortName(const std::string& name) {
  return name.size() == 1 && (IsLower(name[0]) || IsUpper(name[0]) || IsDigit(name[0]));
}

bool IsAllowedFor(ParameterType type, ParameterConstraintType constraint) {
  switch (constraint) {
    case IntRange:
    case IntEnum:
      return ValueType(type) == Int;
    case StringEnum:
    case StringRegex:
      return ValueType(type) == String;
    case NoConstraint:
      return false;
  }
  return false;
}

// Returns one line for each string that has a description, with a line end before the first line
// and after the last. Empty if no string has a description or the constraint is not a `StringEnum`.
std::string DescribedStrings(const ParameterConstraint& constraint) {
  std::string text;
  if (constraint.GetType() != StringEnum || constraint.GetStringEnumWithDesc().empty()) {
    return text;
  }
  for (const auto& [value, description] : constraint.GetStringEnumWithDesc()) {
    text += "\n    " + value + ": " + description;
  }
  text += '\n';
  return text;
}

template <typename MakeText>
void ReplaceFirst(std::string& text, std::string_view marker, MakeText makeText) {
  const std::size_t position = text.find(marker);
  if (position != std::string::npos) {
    text.replace(position, marker.size(), makeText());
  }
}

}  // namespace

std::shared_ptr<ParameterSpec> ParameterSpec::New(const std::string& name, ParameterType type) {
  return New(std::string(name), type);
}

std::shared_ptr<ParameterSpec> ParameterSpec::New(std::string&& name, ParameterType type) {
  return std::make_shared<ParameterSpec>(std::move(name), type, FactoryFlag());
}

std::shared_ptr<ParameterSpec> ParameterSpec::New(const char* name, ParameterType type) {
  return New(TextOrEmpty(name), type);
}

ParameterSpec::ParameterSpec(std::string&& name, ParameterType type, FactoryFlag)
    : type_(type), name_(std::move(name)), isRequired_(true), isSecret_(false) {
  if (!IsValidName(name_)) {
    throw KestrelException("Invalid Parameter name '" + name_ +
                           "' parameter names can only contain lower-case alphanumeric "
                           "characters, numbers and '-'");
  }
}

ParameterSpec::~ParameterSpec() = default;

const std::string& ParameterSpec::GetName() const { return name_; }

ParameterType ParameterSpec::GetParameterType() const { return type_; }

ParameterType ParameterSpec::GetType() const { return type_; }

const std::string& ParameterSpec::GetShortName() const { return shortName_; }

bool ParameterSpec::IsRequired() const { return isRequired_; }

bool ParameterSpec::IsSecret() const { return isSecret_; }

const std::shared_ptr<ParameterConstraint>& ParameterSpec::GetConstraint() const {
  return constraint_;
}

void ParameterSpec::SetShortName(std::string shortName) {
  if (!IsValidShortName(shortName)) {
    throw KestrelException(
        "Invalid value for shortName, must be a single character a-z, A-Z or 0-9");
  }
  shortName_ = std::move(shortName);
}

void ParameterSpec::SetShortName(const char* shortName) { SetShortName(TextOrEmpty(shortName)); }

void ParameterSpec::SetDescription(std::string description) {
  description_ = std::move(description);
}

void ParameterSpec::SetDescription(const char* description) {
  SetDescription(TextOrEmpty(description));
}

void ParameterSpec::SetRequired(bool required) { isRequired_ = required; }

void ParameterSpec::SetSecret(bool secret) {
  if (type_ != String) {
    throw KestrelException("Cannot be set for parameter " + name_);
  }
  isSecret_ = secret;
}

void ParameterSpec::SetConstraint(const std::shared_ptr<ParameterConstraint>& constraint) {
  if (!constraint) {
    return;
  }
  if (!IsAllowedFor(type_, constraint->GetType())) {
    throw KestrelException("Invalid constraint specified for parameter " + name_ +
                           ".  The parameter constraint specified is not allowed for a parameter "
                           "of this type.");
  }
  constraint_ = constraint;
}

bool ParameterSpec::AllowMultiple() const { return IsListType(type_); }

std::string ParameterSpec::GetDescription(bool substitute) const {
  std::string text(description_);
  if (!substitute || !constraint_) {
    return text;
  }
  ReplaceFirst(text, "%REGEX%", [this] { return constraint_->ToString(); });
  ReplaceFirst(text, "%ENUM%", [this] { return constraint_->ToString(); });
  ReplaceFirst(text, "%FULLENUM%", [this] { return DescribedStrings(*constraint_); });
  return text;
}

bool ParameterSpec::GetInt(const std::string& text, std::int64_t& out) {
  return ReadInteger(text, out);
}

bool ParameterSpec::GetBool(const std::string& text, bool& out) { return ReadBoolean(text, out); }

bool ParameterSpec::Validate(const std::vector<std::string>& values,
                             const std::shared_ptr<Output>& output) const {
  // The next two problems leave the result true; the caller checks the messages.
  if (values.empty()) {
    ReportError(output, "Missing value for parameter " + name_);
  } else if (values.size() > 1 && !AllowMultiple()) {
    ReportError(output, "Found multiple values for " + name_ +
                            " this parameter can only accept a single value.");
  }
  bool isValid = true;
  for (const std::string& value : values) {
    if (!ValidateType(value, output)) {
      isValid = false;
    } else if (constraint_ && !constraint_->Validate(value, name_, output)) {
      isValid = false;
    }
  }
  return isValid;
}

bool ParameterSpec::ValidateType(const std::string& value,
                                 const std::shared_ptr<Output>& output) const {
  std::int64_t number = 0;
  bool boolean = false;
  const char* problem = nullptr;
  if (ValueType(type_) == Int && !ReadInteger(value, number)) {
    problem = " expected type Integer";
  } else if (ValueType(type_) == Bool && !ReadBoolean(value, boolean)) {
    problem = " expected one of [1, 0, y, n, true, false, True, False, yes, no, t, f, T, F]";
  } else if (type_ == Flag && !value.empty()) {
    problem = ".  This parameter is a flag and cannot accept any values. ";
  }
  if (problem == nullptr) {
    return true;
  }
  ReportError(output, "Invalid data '" + value + "' for parameter " + name_ + problem);
  return false;
}

}  // namespace Kestrel::CallSpec
