// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/complete/Complete.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "tools/complete/ValueCompletion.h"
#include "vexil/DispatcherOptions.h"
#include "vexil/FindNode.h"

namespace Kestrel::Complete {

using AutoCli::CommandSpec;
using AutoCli::NamespaceNode;
using AutoCli::NodeType;
using CallSpec::ParameterSpec;
using Vexil::DispatcherOption;
using Vexil::TypedOption;

namespace {

std::string Spell(const std::string& name) { return (name.size() == 1 ? "-" : "--") + name; }

bool IsGiven(const std::vector<TypedOption>& options, const std::string& name) {
  return std::any_of(options.begin(), options.end(),
                     [&name](const TypedOption& option) { return option.name == name; });
}

class LineCompleter {
 public:
  LineCompleter(const AutoCli::Dispatcher& dispatcher, const CursorLine& line, Deadline deadline)
      : line_(line),
        node_(Vexil::FindNode(dispatcher.GetRootNamespace(), line.path)),
        context_{dispatcher, line, nullptr, deadline} {
    const bool isBefore = line.place == Place::BeforePath;
    context_.command = std::dynamic_pointer_cast<CommandSpec>(
        isBefore ? Vexil::FindNode(dispatcher.GetRootNamespace(), line.given.path) : node_);
  }

  Completion Complete() {
    if (line_.place == Place::BeforePath) {
      CompleteBeforePath();
    } else if (line_.place != Place::Nowhere) {
      CompleteInCommand();
    }
    return std::move(completion_);
  }

 private:
  void CompleteBeforePath() {
    if (line_.option) {
      if (!IsRefused(*line_.option)) {
        AddDispatcherValues(context_, *line_.option, completion_);
      }
      return;
    }
    if (line_.word.empty() || line_.word[0] != '-') {
      AddChildren();
      return;
    }
    AddDispatcherOptions();
    if (line_.isFirstOfExplainedLine) {
      for (const auto& [option, description] : kExplainOptions) {
        completion_.Add(line_.word, option, description);
      }
    }
    if (line_.isOnlyWord) {
      completion_.Add(line_.word, "--version", "Show the name and the version of the program.");
    }
  }

  void AddDispatcherOptions() {
    for (const DispatcherOption& option : Vexil::kDispatcherOptions) {
      const std::string name(option.name);
      const bool isGiven = IsGiven(line_.given.dispatcherOptions, name);
      if ((option.isRepeatable || !isGiven) && !IsRefused(name)) {
        completion_.Add(line_.word, Spell(name), std::string(option.description));
      }
    }
  }

  bool IsRefused(const std::string& option) const { return line_.isExplained && option == "input"; }

  void CompleteInCommand() {
    if (context_.command == nullptr) {
      AddChildren();
      return;
    }
    const std::shared_ptr<ParameterSpec> parameter = FindParameter();
    if (parameter != nullptr && TakesValue(*parameter)) {
      AddParameterValues(context_, *parameter, completion_);
    } else if (line_.word.empty() || (line_.word[0] == '-' && !line_.option)) {
      AddParameters();
    }
  }

  // Returns the parameter whose value is at the cursor.
  std::shared_ptr<ParameterSpec> FindParameter() {
    for (const auto& parameter : context_.command->GetInputSpec()->GetParameters()) {
      if (line_.option &&
          (parameter->GetName() == *line_.option || parameter->GetShortName() == *line_.option)) {
        return parameter;
      }
    }
    return nullptr;
  }

  static bool TakesValue(const ParameterSpec& parameter) {
    return parameter.GetType() != CallSpec::Flag && parameter.GetName() != "help";
  }

  void AddChildren() {
    if (node_ == nullptr || node_->GetType() == NodeType::Command ||
        line_.place == Place::AfterPath) {
      return;
    }
    for (const std::shared_ptr<NamespaceNode>& child : node_->GetNamespaceNodes()) {
      completion_.Add(line_.word, child->GetName(), child->GetDescription());
    }
  }

  void AddParameters() {
    for (const auto& parameter : context_.command->GetInputSpec()->GetParameters()) {
      const std::vector<TypedOption>& given = line_.given.commandOptions;
      const bool isGiven =
          IsGiven(given, parameter->GetName()) || IsGiven(given, parameter->GetShortName());
      if (!isGiven || parameter->AllowMultiple()) {
        AddParameter(*parameter);
      }
    }
  }

  // Offers the short name only if something has been typed; before that, the long name is enough.
  void AddParameter(const ParameterSpec& parameter) {
    const std::string description = parameter.GetDescription(true);
    completion_.Add(line_.word, "--" + parameter.GetName(), description);
    if (!line_.word.empty() && !parameter.GetShortName().empty()) {
      completion_.Add(line_.word, "-" + parameter.GetShortName(), description);
    }
  }

  const CursorLine& line_;
  std::shared_ptr<NamespaceNode> node_;
  ValueContext context_;
  Completion completion_;
};

}  // namespace

Completion CompleteLine(const AutoCli::Dispatcher& dispatcher, const CursorLine& line,
                        Deadline deadline) {
  return LineCompleter(dispatcher, line, deadline).Complete();
}

}  // namespace Kestrel::Complete
