// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/ParameterConstraint.h"

#include <algorithm>
#include <utility>

#include "callspec/ErrorReport.h"
#include "callspec/Expression.h"
#include "callspec/TextValue.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::CallSpec {

namespace {

// Up to this size a linear search is as fast as a lookup in a set.
constexpr std::size_t kMaxUnindexedSize = 32;

template <typename T>
bool Contains(const std::vector<T>& list, const std::set<T>& index, const T& value) {
  if (index.empty()) {
    return std::find(list.begin(), list.end(), value) != list.end();
  }
  return index.count(value) != 0;
}

template <typename T>
void Append(std::vector<T>& list, std::set<T>& index, T&& value) {
  list.push_back(std::forward<T>(value));
  if (!index.empty()) {
    index.insert(list.back());
  } else if (list.size() > kMaxUnindexedSize) {
    index.insert(list.begin(), list.end());
  }
}

const std::string& AsText(const std::string& value) { return value; }

std::string AsText(std::int64_t value) { return std::to_string(value); }

template <typename T>
std::string ListText(const std::vector<T>& values) {
  std::string text("[");
  const char* separator = "";
  for (const T& value : values) {
    text += separator;
    text += AsText(value);
    separator = ", ";
  }
  text += ']';
  return text;
}

std::string MismatchText(const std::string& name) {
  return "Invalid data constraint for parameter '" + name + "'. ";
}

}  // namespace

struct ParameterConstraint::CompiledRegex {
  std::unique_ptr<const Expression> expression;
};

std::shared_ptr<ParameterConstraint> ParameterConstraint::New(ParameterConstraintType type) {
  return std::make_shared<ParameterConstraint>(type, FactoryFlag());
}

ParameterConstraint::ParameterConstraint(ParameterConstraintType type, FactoryFlag)
    : type_(type), minimum_(0), maximum_(0) {}

ParameterConstraint::~ParameterConstraint() = default;

ParameterConstraintType ParameterConstraint::GetType() const { return type_; }

void ParameterConstraint::SetIntRange(std::int64_t min, std::int64_t max) {
  if (min > max) {
    throw KestrelException(
        "Invalid values for SetIntRange, constraints must have a min value <= max value");
  }
  minimum_ = min;
  maximum_ = max;
}

void ParameterConstraint::GetIntRange(std::int64_t& min, std::int64_t& max) const {
  min = minimum_;
  max = maximum_;
}

void ParameterConstraint::AddIntEnum(std::int64_t value) {
  if (Contains(integers_, integerIndex_, value)) {
    throw KestrelException("Duplicate Value found in ParameterConstraint::AddIntEnum");
  }
  Append(integers_, integerIndex_, std::move(value));
}

void ParameterConstraint::AddStringEnum(std::string value, std::string description) {
  if (Contains(strings_, stringIndex_, value)) {
    throw KestrelException("Duplicate Value found in ParameterConstraint::AddStringEnum: " + value);
  }
  if (!description.empty()) {
    descriptions_.insert_or_assign(value, std::move(description));
  }
  Append(strings_, stringIndex_, std::move(value));
}

void ParameterConstraint::AddStringEnum(const char* value, const char* description) {
  AddStringEnum(TextOrEmpty(value), TextOrEmpty(description));
}

void ParameterConstraint::AddStringEnum(const char* value) {
  AddStringEnum(TextOrEmpty(value), std::string());
}

void ParameterConstraint::SetStringRegex(const std::string& regex) {
  regex_ = regex;
  compiledRegex_.reset();
}

const std::vector<std::int64_t>& ParameterConstraint::GetIntEnum() const { return integers_; }

const std::vector<std::string>& ParameterConstraint::GetStringEnum() const { return strings_; }

const std::map<std::string, std::string>& ParameterConstraint::GetStringEnumWithDesc() const {
  return descriptions_;
}

const std::string& ParameterConstraint::GetStringRegex() const { return regex_; }

std::string ParameterConstraint::ToString() const {
  switch (type_) {
    case NoConstraint:
      return "no constraint";
    case IntRange:
      return "integer in the range " + std::to_string(minimum_) + "-" + std::to_string(maximum_);
    case IntEnum:
      return ListText(integers_);
    case StringEnum:
      return ListText(strings_);
    case StringRegex:
      return "a string matching the regular expression " + regex_;
  }
  return "unknown";
}

bool ParameterConstraint::Validate(const std::string& value, const std::string& name,
                                   const std::shared_ptr<Output>& output) const {
  switch (type_) {
    case NoConstraint:
      return true;
    case IntRange:
    case IntEnum:
      return ValidateInteger(value, name, output);
    case StringEnum:
      return ValidateString(value, name, output);
    case StringRegex:
      return ValidateRegex(value, name, output);
  }
  return false;
}

// The messages about integers do not contain the rejected value. Scripts rely on that.
bool ParameterConstraint::ValidateInteger(const std::string& value, const std::string& name,
                                          const std::shared_ptr<Output>& output) const {
  std::int64_t number = 0;
  if (!ReadInteger(value, number)) {
    ReportError(output, "Invalid data type for parameter '" + name + "'. Expected an Integer");
    return false;
  }
  if (type_ == IntRange) {
    if (minimum_ <= number && number <= maximum_) {
      return true;
    }
    ReportError(output, MismatchText(name) + "Expected " + ToString());
    return false;
  }
  if (Contains(integers_, integerIndex_, number)) {
    return true;
  }
  ReportError(output, MismatchText(name) + "Expected a single value from the set " + ToString());
  return false;
}

bool ParameterConstraint::ValidateString(const std::string& value, const std::string& name,
                                         const std::shared_ptr<Output>& output) const {
  if (Contains(strings_, stringIndex_, value)) {
    return true;
  }
  ReportError(output, MismatchText(name) + "Expected a single value from the set " + ToString() +
                          " got '" + value + "'");
  return false;
}

bool ParameterConstraint::ValidateRegex(const std::string& value, const std::string& name,
                                        const std::shared_ptr<Output>& output) const {
  if (Compile().expression->MatchesWhole(value)) {
    return true;
  }
  ReportError(output, MismatchText(name) +
                          "Value does not match the expected regular expression (" + regex_ + ")");
  return false;
}

// An expression that does not compile throws at every validation, because nothing is cached then.
const ParameterConstraint::CompiledRegex& ParameterConstraint::Compile() const {
  if (!compiledRegex_) {
    compiledRegex_ =
        std::make_shared<const CompiledRegex>(CompiledRegex{CompileExpression(regex_)});
  }
  return *compiledRegex_;
}

}  // namespace Kestrel::CallSpec
