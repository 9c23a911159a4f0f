// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/ObjectExaminer.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/autocli/OptionParser.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/ParameterConstraint.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "tools/catalog/ReadTree.h"
#include "tools/isolation/PluginFaults.h"
#include "tools/lint/FileReport.h"
#include "tools/lint/Language.h"
#include "vexil/FindNode.h"
#include "vexil/formats/FormatsPlugin.h"

namespace Kestrel::Lint {

using AutoCli::CommandSpec;
using AutoCli::Dispatcher;
using CallSpec::ParameterSpec;

namespace {

constexpr const char* kEntryPoint = "AutoCli_RegisterNamespaces";

std::vector<std::string> SplitWords(const std::string& path) {
  std::vector<std::string> words;
  std::size_t begin = 0;
  while (begin <= path.size()) {
    const std::size_t end = std::min(path.find(' ', begin), path.size());
    words.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
  return words;
}

// The words of an example as a shell splits them; expansions are left as they are.
std::vector<std::string> SplitShellWords(const std::string& text) {
  std::vector<std::string> words;
  bool isOpen = false;
  char quote = '\0';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quote == '\0' && (c == ' ' || c == '\n')) {
      isOpen = false;
      continue;
    }
    if (!isOpen) {
      words.emplace_back();
      isOpen = true;
    }
    if (c == quote) {
      quote = '\0';
    } else if (quote == '\0' && (c == '\'' || c == '"')) {
      quote = c;
    } else if (c == '\\' && quote != '\'' && i + 1 < text.size()) {
      words.back() += text[++i];
    } else {
      words.back() += c;
    }
  }
  return words;
}

bool Contains(const std::string& text, const std::string& what) {
  return text.find(what) != std::string::npos;
}

template <typename Node>
std::vector<Node> WithoutKnown(std::vector<Node> nodes, const std::vector<Node>& known) {
  std::set<std::string> paths;
  for (const Node& node : known) {
    paths.insert(node.path);
  }
  const auto isKnown = [&paths](const Node& node) { return paths.count(node.path) != 0; };
  nodes.erase(std::remove_if(nodes.begin(), nodes.end(), isKnown), nodes.end());
  return nodes;
}

std::vector<std::string> ListFormatters(const Dispatcher& dispatcher) {
  const auto formatters = dispatcher.GetFormatters();
  std::vector<std::string> names;
  names.reserve(formatters.size());
  for (const auto& formatter : formatters) {
    names.push_back(formatter->GetName());
  }
  return names;
}

void LoadQuietly(Dispatcher& dispatcher, const std::string& file) {
  try {
    dispatcher.AddPlugin(file);
  } catch (...) {  // NOLINT(bugprone-empty-catch): it was examined before
  }
}

void CheckSymbols(const std::string& file, const ObjectExaminer::Report& report) {
  if (const std::optional<std::string> missing = Isolation::FindMissingSymbol(file)) {
    report({"object-symbol", "a function that it calls is not there: " + *missing,
            "link the library that defines it"});
  }
}

ObjectFault DescribeRefusal(const std::string& file, const std::string& text) {
  const std::string what = "the loader refuses this: " + text;
  if (Contains(text, std::string("undefined symbol: ") + kEntryPoint)) {
    const std::vector<std::string> similar = FindMisspeltEntryPoints(file);
    return {"object-entry-point", what,
            similar.empty() ? "define " + std::string(kEntryPoint) +
                                  ", after including kestrel/autocli/PluginEntryPoint.h"
                            : "rename " + similar.front() + " to " + kEntryPoint};
  }
  if (Contains(text, "already registered") || Contains(text, "Duplicate top-level")) {
    return {"path-duplicate", what, "use another path, or the same description"};
  }
  return {"object-refused", what, "correct what it names"};
}

/// Examines one command of a shared object.
class CommandExaminer {
 public:
  CommandExaminer(CommandSpec& command, std::string path, const ObjectExaminer::Report& report)
      : command_(command), path_(std::move(path)), report_(report) {}

  void Run() {
    if (command_.GetDescription().empty()) {
      Add("description-missing", "it has no description", "say in one sentence what it does");
    }
    const auto input = command_.GetInputSpec();
    for (const auto& parameter : input->GetParameters()) {
      CheckParameter(*parameter);
    }
    CheckFormatter();
    for (const auto& [arguments, description] : command_.GetExamples()) {
      CheckExample(arguments);
    }
  }

 private:
  void Add(const char* rule, const std::string& what, const std::string& advice) {
    report_({rule, "vexil " + path_ + ": " + what, advice});
  }

  void CheckParameter(const ParameterSpec& parameter) {
    const std::string name = "--" + parameter.GetName();
    const std::string shown = parameter.GetDescription(true);
    if (shown.empty()) {
      Add("description-missing", name + " has no description", "say what it is");
    }
    for (const char* marker : {"%ENUM%", "%REGEX%", "%FULLENUM%"}) {
      if (Contains(shown, marker)) {
        Add("description-marker", "the description of " + name + " shows " + marker + " unchanged",
            "set a constraint, or remove the marker");
      }
    }
    const auto& constraint = parameter.GetConstraint();
    if (constraint != nullptr && constraint->GetType() == CallSpec::StringRegex) {
      CheckExpression(name, constraint->GetStringRegex(), *constraint);
    } else if (constraint != nullptr && IsEmptyEnumeration(*constraint)) {
      Add("constraint-nothing", "the enumeration of " + name + " is empty", "add values");
    }
  }

  static bool IsEmptyEnumeration(const CallSpec::ParameterConstraint& constraint) {
    return (constraint.GetType() == CallSpec::IntEnum && constraint.GetIntEnum().empty()) ||
           (constraint.GetType() == CallSpec::StringEnum && constraint.GetStringEnum().empty());
  }

  void CheckExpression(const std::string& name, const std::string& text,
                       const CallSpec::ParameterConstraint& constraint) {
    try {
      constraint.Validate("", name, CallSpec::Output::New());
    } catch (const std::exception& error) {
      Add("regex-invalid", "the expression of " + name + " does not compile: " + error.what(),
          "correct it");
      return;
    }
    const std::optional<Language> language = Language::Parse(text);
    if (language && language->IsEmpty()) {
      Add("constraint-nothing", "no value matches the expression of " + name, "correct it");
    } else if (language && language->IsExponential()) {
      Add("regex-exponential", "the expression of " + name + " takes exponential time",
          "write it without a repeat in a repeat");
    }
  }

  void CheckFormatter() {
    const std::string formatter = command_.GetDefaultOutputFormatParameters().GetFormatter();
    const Dispatcher* const dispatcher = command_.GetDispatcher();
    if (!formatter.empty() && dispatcher != nullptr && !dispatcher->HasFormatter(formatter)) {
      Add("formatter-unknown", "there is no formatter " + Quote(formatter),
          "use one that 'vexil --help' lists");
    }
  }

  void CheckExample(const std::string& arguments) {
    AutoCli::OptionParser parser;
    std::vector<std::string> words = SplitWords(path_);
    const std::vector<std::string> typed = SplitShellWords(arguments);
    words.insert(words.end(), typed.begin(), typed.end());
    parser.ParseVector(std::move(words));
    parser.SetInputSpec(command_.GetInputSpec());
    const auto input = CallSpec::Input::New();
    for (const auto& [name, value] : parser.GetCommandParameters()) {
      input->AddParameter(name, value);
    }
    input->SetInputSpec(command_.GetInputSpec());
    const auto output = CallSpec::Output::New();
    command_.GetInputSpec()->Validate(input, output);
    std::vector<std::string> errors = parser.GetParseErrors();
    const std::vector<std::string>& messages = output->GetErrors();
    errors.insert(errors.end(), messages.begin(), messages.end());
    if (!errors.empty()) {
      Add("example-invalid", "the example " + Quote(arguments) + " is refused: " + errors.front(),
          "correct the example");
    }
  }

  CommandSpec& command_;
  const std::string path_;
  const ObjectExaminer::Report& report_;
};

}  // namespace

ObjectReport ObjectExaminer::Run(const std::string& file, const std::vector<std::string>& before) {
  // Never destroyed: the process ends with all plug-ins loaded.
  auto* const dispatcher = new Dispatcher;
  dispatcher->RegisterPlugin(std::make_shared<Formats::FormatsPlugin>());
  for (const std::string& other : before) {
    enter_("the plug-in before it, " + other);
    LoadQuietly(*dispatcher, other);
  }
  const Catalog::Tree known = Catalog::ReadTree(*dispatcher);
  enter_("loading it");
  Load(*dispatcher, file);
  enter_("reading what it declares");
  ObjectReport result;
  result.tree = Catalog::ReadTree(*dispatcher);
  result.tree.namespaces = WithoutKnown(std::move(result.tree.namespaces), known.namespaces);
  result.tree.commands = WithoutKnown(std::move(result.tree.commands), known.commands);
  result.tree.faults = WithoutKnown(std::move(result.tree.faults), known.faults);
  result.formatters = ListFormatters(*dispatcher);
  Examine(*dispatcher, result.tree);
  return result;
}

void ObjectExaminer::Load(Dispatcher& dispatcher, const std::string& file) {
  CheckSymbols(file, report_);
  try {
    dispatcher.AddPlugin(file);
  } catch (const KestrelException& error) {
    report_(DescribeRefusal(file, error.what()));
  } catch (...) {
    report_(
        {"object-exception",
         "it throws " + Isolation::DescribeForeignException().value_or("") + " while it is loaded",
         "throw KestrelException"});
  }
}

void ObjectExaminer::Examine(const Dispatcher& dispatcher, const Catalog::Tree& tree) {
  for (const Catalog::Fault& fault : tree.faults) {
    report_({"object-declaration",
             "vexil " + fault.path + ": the declaration throws: " + fault.text,
             "correct the declaration"});
  }
  for (const Catalog::Command& declared : tree.commands) {
    const auto node = Vexil::FindNode(dispatcher.GetRootNamespace(), SplitWords(declared.path));
    if (const auto command = std::dynamic_pointer_cast<CommandSpec>(node)) {
      Examine(*command, declared.path);
    }
  }
}

void ObjectExaminer::Examine(CommandSpec& command, const std::string& path) {
  enter_("vexil " + path);
  try {
    CommandExaminer(command, path, report_).Run();
  } catch (const std::exception& error) {
    report_({"object-declaration", "vexil " + path + ": it throws: " + error.what(),
             "correct the declaration"});
  }
}

std::vector<std::string> FindMisspeltEntryPoints(const std::string& file) {
  std::ifstream in(file, std::ios_base::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::vector<std::string> names;
  std::string name;
  for (const char c : bytes) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_') {
      name += c;
      continue;
    }
    // Mangled names have a length and the parameters around the name.
    if (name != kEntryPoint &&
        (Contains(name, kEntryPoint) || !FindNearest(name, {kEntryPoint}).empty())) {
      names.push_back(name);
    }
    name.clear();
  }
  return names;
}

}  // namespace Kestrel::Lint
