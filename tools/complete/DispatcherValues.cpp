// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/callspec/OutputSpec.h"
#include "tools/complete/ValueCompletion.h"
#include "vexil/FormatKeys.h"
#include "vexil/PrettyRequest.h"
#include "vexil/ResultTypes.h"
#include "vexil/Words.h"

namespace Kestrel::Complete {

using Vexil::ResultType;
using Vexil::Words;

namespace {

constexpr std::array<std::string_view, 7> kBooleanKeys = {
    "align-fields", "header", "header-line", "human", "show-header", "table-header", "wrap-last"};

void AddFormatters(const ValueContext& context, Completion& completion) {
  for (const auto& formatter : context.dispatcher.GetFormatters()) {
    completion.Add(context.line.word, context.line.beforeValue + formatter->GetName(),
                   formatter->GetDescription());
  }
}

// Returns the declared result of the command; null if there is no command.
std::shared_ptr<MetaObj::MetaObject> GetResult(const ValueContext& context) {
  return context.command == nullptr ? nullptr : context.command->GetOutputSpec()->GetRootObject();
}

// Returns the formatter on the line, otherwise the one that prints the command's result on a
// terminal; "table" if there is no command.
std::string GetFormatter(const ValueContext& context) {
  for (const Vexil::TypedOption& option : context.line.settledOptions) {
    if (option.name == "formatter") {
      return option.value;
    }
  }
  if (context.command == nullptr) {
    return "table";
  }
  const std::string name = context.command->GetDefaultOutputFormatParameters().GetFormatter();
  return Vexil::IsPrettyRequested() && Vexil::YieldsToPretty(name) ? "pretty" : name;
}

void AddKeys(const ValueContext& context, Completion& completion) {
  const std::string name = GetFormatter(context);
  const auto formatter = context.dispatcher.GetFormatter(name);
  if (const auto keys = Vexil::ListFormatKeys(name, Vexil::ListResultTypes(GetResult(context)))) {
    for (const std::string& key : *keys) {
      completion.Add(context.line.word, context.line.beforeValue + key + "=");
    }
  } else if (formatter != nullptr) {
    for (const auto& parameter : formatter->GetParams()) {
      if (parameter.name.find('<') == std::string::npos) {
        completion.Add(context.line.word, context.line.beforeValue + parameter.name + "=",
                       parameter.description);
      }
    }
  }
}

// Adds the names for the list being typed, whose last name starts at `begin`.
void AddNames(const CursorLine& line, std::size_t begin, const Words& names,
              Completion& completion) {
  const std::size_t listBegin = line.word.find('=', line.beforeValue.size()) + 1;
  const Words chosen = Vexil::SplitFieldNames(line.word.substr(listBegin, begin - listBegin));
  for (const std::string& name : names) {
    if (std::find(chosen.begin(), chosen.end(), name) == chosen.end()) {
      completion.Add(line.word, line.word.substr(0, begin) + name);
    }
  }
}

// Returns the fields that the value of the key may contain. The tool's own formatters identify
// fields by their paths, those of the library by their names.
Words ListFields(const ValueContext& context, const std::string& key) {
  const std::shared_ptr<MetaObj::MetaObject> result = GetResult(context);
  const std::vector<ResultType> types = Vexil::ListResultTypes(result);
  if (Vexil::ListFormatKeys(GetFormatter(context), types)) {
    return Vexil::ListChoosableFields(key, types);
  }
  return key == "fields" ? Vexil::ListFieldPaths(result) : Words();
}

// Adds the fields to sort by. A "-" before the field reverses the order.
void AddSortFields(const ValueContext& context, std::size_t begin, Completion& completion) {
  const CursorLine& line = context.line;
  const bool isDescending = line.word.compare(begin, 1, "-") == 0;
  AddNames(line, begin + (isDescending ? 1 : 0), Vexil::ListScalarPaths(GetResult(context)),
           completion);
}

void AddKeyValues(const ValueContext& context, Completion& completion) {
  const CursorLine& line = context.line;
  const std::size_t end = line.word.find('=', line.beforeValue.size());
  const std::string key = line.word.substr(line.beforeValue.size(), end - line.beforeValue.size());
  if (std::find(kBooleanKeys.begin(), kBooleanKeys.end(), key) != kBooleanKeys.end()) {
    AddNames(line, end + 1, {"true", "false"}, completion);
  } else if (key == "color") {
    AddNames(line, end + 1, {"always", "never"}, completion);
  } else if (key == "sort") {
    AddSortFields(context, end + 1, completion);
  } else {
    completion.directive = Directive::NoSpace;  // a comma and more names may follow
    AddNames(line, std::max(line.word.rfind(',') + 1, end + 1), ListFields(context, key),
             completion);
  }
}

void AddFormatParameters(const ValueContext& context, Completion& completion) {
  if (context.line.GetValue().find('=') != std::string::npos) {
    AddKeyValues(context, completion);
    return;
  }
  completion.directive = Directive::NoSpace;  // the value follows
  AddKeys(context, completion);
}

}  // namespace

void AddDispatcherValues(const ValueContext& context, const std::string& option,
                         Completion& completion) {
  if (option == "formatter") {
    AddFormatters(context, completion);
  } else if (option == "format-param") {
    AddFormatParameters(context, completion);
  } else if (option == "plugin-dir") {
    completion.directive = Directive::Folders;
  } else if (option == "plugin") {
    completion.directive = Directive::Files;
  } else if (option == "input") {
    completion.directive = Directive::Files;
    completion.Add(context.line.word, context.line.beforeValue + "STDIN",
                   "Read command lines from standard input.");
  }
}

}  // namespace Kestrel::Complete
