// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "autocli/text/StartsWith.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/callspec/OutputSpec.h"
#include "vexil/FormatKeys.h"
#include "vexil/HintContext.h"
#include "vexil/WordCost.h"

namespace Kestrel::Vexil {

namespace {

using Names = std::vector<std::string>;

constexpr std::size_t kMaxNames = 2;

bool Contains(const Names& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Returns " Did you mean ...?" if a name is similar, otherwise a list of all names. Empty if there
// are none.
std::string AskForOrList(const std::string& typed, const Names& names, const std::string& lead) {
  const Names near = NearestNames(typed, names, kMaxNames);
  if (!near.empty() || names.empty()) {
    return AskFor(near);
  }
  return " " + lead + " " + JoinWords(names, ", ") + ".";
}

// Returns the last option with this name, or null. Of several widths, only the last one is used; a
// second formatter is an error.
const TypedOption* FindOption(const CommandLine& line, const std::string& name) {
  const auto found =
      std::find_if(line.dispatcherOptions.rbegin(), line.dispatcherOptions.rend(),
                   [&name](const TypedOption& option) { return option.name == name; });
  return found == line.dispatcherOptions.rend() ? nullptr : &*found;
}

void AddWidthHint(const HintContext& context, Hints& hints) {
  const TypedOption* option = FindOption(context.line, "screen-width");
  if (option == nullptr) {
    return;
  }
  char* end = nullptr;
  std::strtol(option->value.c_str(), &end, 0);
  if (option->value.empty() || *end != '\0') {
    hints.push_back("The screen width " + Quote(option->value) + " is not a number.");
  }
}

void AddFormatterHint(const HintContext& context, Hints& hints) {
  const TypedOption* option = FindOption(context.line, "formatter");
  if (option == nullptr || option->value.empty() ||
      context.dispatcher.GetFormatter(option->value) != nullptr) {
    return;
  }
  Names names;
  for (const auto& formatter : context.dispatcher.GetFormatters()) {
    names.push_back(formatter->GetName());
  }
  hints.push_back("There is no formatter " + Quote(option->value) + "." +
                  AskForOrList(option->value, names, "The formatters are"));
}

bool IsHelpWanted(const CommandLine& line) {
  return std::any_of(
      line.commandOptions.begin(), line.commandOptions.end(),
      [](const TypedOption& option) { return option.name == "help" || option.name == "h"; });
}

// Checks the format parameters of a line against those of its formatter, and the fields in them
// against the result of its command.
class ParameterCheck {
 public:
  ParameterCheck(const HintContext& context, Hints& hints)
      : context_(context),
        hints_(hints),
        types_(ListResultTypes(context.command->GetOutputSpec()->GetRootObject())) {
    const TypedOption* option = FindOption(context.line, "formatter");
    formatter_ = option == nullptr
                     ? context.command->GetDefaultOutputFormatParameters().GetFormatter()
                     : option->value;
    isToolFormatter_ = IsToolFormatter(formatter_);
    keys_ = isToolFormatter_ ? ListToolKeys() : ListFormatKeys(formatter_, types_);
  }

  void CheckAll() {
    for (const TypedOption& option : context_.line.dispatcherOptions) {
      const std::size_t end = option.value.find('=');
      if (keys_ && option.name == "format-param" && end != std::string::npos) {
        CheckKey(option.value.substr(0, end), option.value.substr(end + 1));
      }
    }
  }

 private:
  std::optional<Names> ListToolKeys() const {
    const auto formatter = context_.dispatcher.GetFormatter(formatter_);
    if (formatter == nullptr) {
      return std::nullopt;
    }
    Names keys;
    for (const auto& parameter : formatter->GetParams()) {
      keys.push_back(parameter.name);
    }
    return keys;
  }

  void CheckKey(const std::string& key, const std::string& value) {
    if (!Contains(*keys_, key)) {
      hints_.push_back("The formatter " + Quote(formatter_) + " does not use the parameter " +
                       Quote(key) + "." + AskForOrList(key, *keys_, "It uses"));
      return;
    }
    const bool isDescending = key == "sort" && AutoCli::StartsWith(value, "-");
    const Names fields = ListFields(key);
    for (const std::string& name : SplitFieldNames(value.substr(isDescending ? 1 : 0))) {
      if (!fields.empty() && !Contains(fields, name)) {
        AddFieldHint(name, fields);
      }
    }
  }

  // The tool's own formatters know fields by their paths, those of the library by their names.
  Names ListFields(const std::string& key) const {
    if (!isToolFormatter_) {
      return ListChoosableFields(key, types_);
    }
    const auto root = context_.command->GetOutputSpec()->GetRootObject();
    return key == "fields" ? ListFieldPaths(root) : key == "sort" ? ListScalarPaths(root) : Names();
  }

  void AddFieldHint(const std::string& name, const Names& fields) {
    hints_.push_back("The result of " + context_.quotedPath + " has no field " + Quote(name) +
                     ", but: " + JoinWords(fields, ", ") + ".");
  }

  const HintContext& context_;
  Hints& hints_;
  std::vector<ResultType> types_;
  std::string formatter_;
  bool isToolFormatter_ = false;
  std::optional<Names> keys_;
};

}  // namespace

void AddFormatHints(const HintContext& context, Hints& hints) {
  AddWidthHint(context, hints);
  AddFormatterHint(context, hints);
  const bool hasParameters = FindOption(context.line, "format-param") != nullptr;
  if (hasParameters && context.command != nullptr && !IsHelpWanted(context.line)) {
    ParameterCheck(context, hints).CheckAll();
  }
}

}  // namespace Kestrel::Vexil
