// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <cstdint>
#include <string>

#include "kestrel/callspec/ParameterConstraint.h"
#include "tools/complete/ValueCompletion.h"

namespace Kestrel::Complete {

using CallSpec::ParameterConstraint;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;

namespace {

struct BooleanWord {
  const char* word;
  const char* description;
  /// Whether the word is offered only after its first letter has been typed.
  bool isSynonym;
};

constexpr std::array<BooleanWord, 4> kBooleanWords = {
    {{"true", "Yes.", false}, {"false", "No.", false}, {"yes", "Yes.", true}, {"no", "No.", true}}};

void AddValue(const CursorLine& line, const std::string& value, const std::string& description,
              Completion& completion) {
  completion.Add(line.word, line.beforeValue + value, description);
}

void AddBooleans(const CursorLine& line, Completion& completion) {
  for (const BooleanWord& word : kBooleanWords) {
    if (!word.isSynonym || !line.GetValue().empty()) {
      AddValue(line, word.word, word.description, completion);
    }
  }
}

void AddEnumerated(const CursorLine& line, const ParameterConstraint& constraint,
                   Completion& completion) {
  if (constraint.GetType() == CallSpec::StringEnum) {
    const auto& descriptions = constraint.GetStringEnumWithDesc();
    for (const std::string& value : constraint.GetStringEnum()) {
      const auto found = descriptions.find(value);
      AddValue(line, value, found == descriptions.end() ? std::string() : found->second,
               completion);
    }
  }
  if (constraint.GetType() == CallSpec::IntEnum) {
    for (const std::int64_t value : constraint.GetIntEnum()) {
      AddValue(line, std::to_string(value), {}, completion);
    }
  }
}

std::string GetMetaData(const AutoCli::CommandSpec& command, const std::string& key) {
  const auto found = command.GetMetaData().find(key);
  return found == command.GetMetaData().end() ? std::string() : found->second;
}

void AddFromMetaData(const ValueContext& context, const ParameterSpec& parameter,
                     Completion& completion) {
  const std::string source = GetMetaData(*context.command, "complete:" + parameter.GetName());
  if (source == "file") {
    completion.directive = Directive::Files;
  } else if (source == "directory") {
    completion.directive = Directive::Folders;
  } else if (!source.empty()) {
    for (const std::string& value : ReadDataValues(context.dispatcher, source, context.deadline)) {
      AddValue(context.line, value, {}, completion);
    }
  }
}

}  // namespace

void AddParameterValues(const ValueContext& context, const ParameterSpec& parameter,
                        Completion& completion) {
  if (parameter.IsSecret() || parameter.GetName() == "help") {
    return;
  }
  const ParameterType type = parameter.GetType();
  if (type == CallSpec::Bool || type == CallSpec::BoolList) {
    AddBooleans(context.line, completion);
  }
  if (parameter.GetConstraint() != nullptr) {
    AddEnumerated(context.line, *parameter.GetConstraint(), completion);
  }
  if (type != CallSpec::Flag) {
    AddFromMetaData(context, parameter, completion);
  }
}

}  // namespace Kestrel::Complete
