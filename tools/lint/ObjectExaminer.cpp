// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/ObjectExaminer.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/autocli/OptionParser.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/testing/ShellWords.h"
#include "tools/catalog/ReadTree.h"
#include "tools/isolation/PluginFaults.h"
#include "tools/lint/FileReport.h"
#include "tools/lint/FormatRules.h"
#include "tools/lint/InputProbe.h"
#include "tools/lint/MetaDataRules.h"
#include "tools/lint/ParameterRules.h"
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
    dispatcher.AddPlugin(Isolation::PathForLoader(file));
  } catch (...) {  // NOLINT(bugprone-empty-catch): has been examined already
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
  if (Contains(text, "already registered") || Contains(text, "Duplicate top-level") ||
      Contains(text, "Duplicate registration")) {
    return {"path-duplicate", what, "use another path, or the same description"};
  }
  return {"object-refused", what, "correct what it names"};
}

/// Examines one command of a shared object.
class CommandExaminer {
 public:
  CommandExaminer(CommandSpec& command, std::string path, const Dispatcher& dispatcher,
                  const ObjectExaminer::Report& report)
      : command_(command), path_(std::move(path)), dispatcher_(dispatcher), report_(report) {}

  void Run() {
    if (command_.GetDescription().empty()) {
      Add("description-missing", "it has no description", "say in one sentence what it does");
    }
    const auto input = command_.GetInputSpec();
    for (const auto& parameter : input->GetParameters()) {
      if (parameter->GetName() != "help") {  // the library adds it
        CheckParameter(*parameter);
      }
    }
    CheckMetaData();
    CheckFormat();
    for (const auto& [arguments, description] : command_.GetExamples()) {
      CheckExample(arguments);
    }
  }

 private:
  void Add(const char* rule, const std::string& what, const std::string& advice) {
    report_({rule, "vexil " + path_ + ": " + what, advice});
  }

  void CheckParameter(const ParameterSpec& parameter) {
    for (const ParameterFault& fault : FindParameterFaults(parameter)) {
      Add(fault.rule, "--" + parameter.GetName() + ": " + fault.what, fault.advice);
    }
  }

  void CheckMetaData() {
    const auto& entries = command_.GetMetaData();
    std::vector<std::string> names;
    for (const auto& parameter : command_.GetInputSpec()->GetParameters()) {
      names.push_back(parameter->GetName());
    }
    for (const MetaDataFault& fault : FindMetaDataFaults({entries.begin(), entries.end()}, names)) {
      Add(fault.rule, "meta-data: " + fault.what, fault.advice);
    }
  }

  void CheckFormat() {
    const AutoCli::FormatParameters& format = command_.GetDefaultOutputFormatParameters();
    const auto& parameters = format.GetParameters();
    const FormatDeclaration declaration{format.GetFormatter(),
                                        {parameters.begin(), parameters.end()},
                                        command_.GetOutputSpec()->GetRootObject()};
    if (declaration.root == nullptr) {
      Add("shape-missing", "no result is declared, so every result is rejected",
          "declare the shape of the result by a sample of it");
    }
    for (const FormatFault& fault : FindFormatFaults(declaration, dispatcher_, {})) {
      Add(fault.rule, fault.what, fault.advice);
    }
  }

  void CheckExample(const std::string& arguments) {
    AutoCli::OptionParser parser;
    std::vector<std::string> words = SplitWords(path_);
    const std::vector<std::string> typed = Testing::SplitShellWords(arguments);
    words.insert(words.end(), typed.begin(), typed.end());
    parser.ParseVector(std::move(words));
    parser.SetInputSpec(command_.GetInputSpec());
    const auto input = AutoCli::CommandInput::New();
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
    } else if (OnlyReports()) {
      RunApart(arguments, input);
    }
  }

  // Whether the command declares that it changes nothing. No other command is run.
  bool OnlyReports() const {
    const auto found = command_.GetMetaData().find("changes");
    return found != command_.GetMetaData().end() && found->second == "false";
  }

  // Runs the example in a process of its own, for at most a second, because it may wait for
  // something that this machine does not have.
  void RunApart(const std::string& arguments, const std::shared_ptr<CallSpec::Input>& input) {
    const pid_t id = fork();
    if (id == 0) {
      alarm(1);
      Run(input);
      _exit(EXIT_SUCCESS);
    }
    int status = 0;
    while (id > 0 && waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    if (id > 0 && WIFSIGNALED(status) && WTERMSIG(status) != SIGALRM) {
      Add("object-crash",
          "the example " + Quote(arguments) + " ends by signal " + std::to_string(WTERMSIG(status)),
          "run the tool with the plug-in in a debugger");
    }
  }

  void Run(const std::shared_ptr<CallSpec::Input>& input) {
    const auto command = dynamic_cast<AutoCli::Command*>(&command_);
    if (command == nullptr) {
      return;
    }
    try {
      command->Execute(input, AutoCli::CommandOutput::New());
    } catch (...) {
      Add("object-exception",
          "it throws " + Isolation::DescribeForeignException().value_or("") + " in a call",
          "throw KestrelException");
    }
    std::set<std::string> reported;
    for (const Misreading& each : TakeMisreadings()) {
      if (reported.insert(each.parameter).second) {
        Add("parameter-misread",
            "--" + each.parameter + " is read by " + each.function + ", which is for another type",
            "use the function for its type, or declare that type");
      }
    }
  }

  CommandSpec& command_;
  const std::string path_;
  const Dispatcher& dispatcher_;
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
    dispatcher.AddPlugin(Isolation::PathForLoader(file));
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
      Examine(*command, declared.path, dispatcher);
    }
  }
}

void ObjectExaminer::Examine(CommandSpec& command, const std::string& path,
                             const Dispatcher& dispatcher) {
  enter_("vexil " + path);
  try {
    CommandExaminer(command, path, dispatcher, report_).Run();
  } catch (const std::exception& error) {
    report_({"object-declaration", "vexil " + path + ": it throws: " + error.what(),
             "correct the declaration"});
  }
}

std::vector<std::string> FindMisspeltEntryPoints(const std::string& file) {
  std::ifstream in(file, std::ios_base::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const std::vector<std::string> entryPoint = {kEntryPoint};
  std::vector<std::string> names;
  std::string name;
  for (const char c : bytes) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_') {
      name += c;
      continue;
    }
    // A mangled name contains the name between its length and the parameters.
    if (name != kEntryPoint &&
        (Contains(name, kEntryPoint) || !FindNearest(name, entryPoint).empty())) {
      names.push_back(name);
    }
    name.clear();
  }
  return names;
}

}  // namespace Kestrel::Lint
