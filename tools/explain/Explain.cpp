// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/explain/Explain.h"

#include <unistd.h>

#include <list>
#include <memory>
#include <utility>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/autocli/OptionParser.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/Output.h"
#include "tools/catalog/PluginOrigins.h"
#include "tools/explain/ExplainedCall.h"
#include "tools/explain/ShellTexts.h"
#include "vexil/CommandLine.h"
#include "vexil/PrettyRequest.h"
#include "vexil/Words.h"

namespace Kestrel::Explain {

using AutoCli::CliDispatcher;
using AutoCli::Command;
using AutoCli::ExtensionCommand;
using AutoCli::FormatParameters;
using CallSpec::Output;

namespace {

constexpr const char* kOfCommand = "default of the command";
constexpr const char* kOfLine = "command line";
constexpr const char* kOfEnvironment = "VEXIL_TERMINAL_FORMATTER";

// Whether the tool would use `pretty` in place of `formatter`, the default of a command: if the
// user has chosen `pretty` for terminals, standard output is one, and `formatter` is for people.
// The tool uses `pretty` for ordinary results only, not for help pages.
bool IsPrettyWanted(const std::string& formatter) {
  return Vexil::IsPrettyRequested() && Vexil::YieldsToPretty(formatter) &&
         isatty(STDOUT_FILENO) == 1;
}

/// Explains one line.
class Explainer {
 public:
  Explainer(CliDispatcher& dispatcher, const std::vector<std::string>& arguments)
      : dispatcher_(dispatcher), line_(Vexil::SplitCommandLine(arguments)) {
    parser_.ParseVector(arguments);
    if (parser_.HasDispatcherParameter("input")) {
      throw KestrelException("--input names many command lines; explain one of them");
    }
  }

  Explanation Run() {
    const std::shared_ptr<Output> output = Output::New();
    dispatcher_.HandleDispatcherOptions(parser_, choices_, output);
    result_.errors = output->GetErrors();
    result_.path = Vexil::JoinWords(line_.path, " ");
    const std::shared_ptr<AutoCli::NamespaceNode> node = FindNode();
    const auto command = std::dynamic_pointer_cast<Command>(node);
    if (command != nullptr) {
      ExplainCommand(*command);
    } else if (node != nullptr) {
      Refuse("'" + result_.path + "' is a namespace, not a command");
    }
    return std::move(result_);
  }

 private:
  void Refuse(const std::string& reason) { result_.errors.push_back(reason); }

  std::shared_ptr<AutoCli::NamespaceNode> FindNode() {
    std::list<std::string> path(line_.path.begin(), line_.path.end());
    if (path.empty()) {
      Refuse("No command is named");
      return nullptr;
    }
    try {
      return dispatcher_.GetRootNamespace()->ResolveNode(path);
    } catch (const KestrelException& error) {
      Refuse(error.what());
      return nullptr;
    }
  }

  void ExplainCommand(Command& command) {
    Catalog::PluginOrigins origins(dispatcher_);
    const Catalog::Plugin* const plugin = origins.FindPlugin(command, result_.path);
    result_.plugin = plugin == nullptr ? "unknown" : plugin->path;
    const ExplainedCall call(command, line_);
    if (result_.errors.empty()) {
      result_.errors = call.Validate();
    }
    result_.isHelp = call.IsHelpWanted();
    result_.parameters = call.DescribeParameters();
    if (auto* const extension = dynamic_cast<ExtensionCommand*>(&command);
        extension != nullptr && !result_.isHelp && result_.errors.empty()) {
      ExplainShell(*extension, call);
    }
    ExplainFormat(command);
  }

  void ExplainShell(ExtensionCommand& command, const ExplainedCall& call) {
    try {
      result_.shell = MakeShellTexts(command, call);
    } catch (const KestrelException& error) {
      Refuse(call.Mask(error.what()));
    }
  }

  void ExplainFormat(const Command& command) {
    const FormatParameters defaults = result_.isHelp ? dispatcher_.GetHelpFormatParams()
                                                     : command.GetDefaultOutputFormatParameters();
    const char* const origin = result_.isHelp ? "help page" : kOfCommand;
    result_.formatter = {defaults.GetFormatter(), "", origin};
    if (!choices_.GetFormatter().empty()) {
      result_.formatter = {choices_.GetFormatter(), "", kOfLine};
    } else if (!result_.isHelp && IsPrettyWanted(defaults.GetFormatter())) {
      result_.formatter = {"pretty", "", kOfEnvironment};
    }
    if (!result_.formatter.name.empty() && !dispatcher_.HasFormatter(result_.formatter.name)) {
      Refuse("Unable to find requested formatter: " + result_.formatter.name +
             " (reported after the command has run)");
    }
    FormatParameters all = defaults;
    all.OverrideValues(choices_);
    for (const auto& [name, value] : all.GetParameters()) {
      result_.formatParameters.push_back(
          {name, value, choices_.HasParameter(name) ? kOfLine : origin});
    }
  }

  CliDispatcher& dispatcher_;
  const Vexil::CommandLine line_;
  AutoCli::OptionParser parser_;
  FormatParameters choices_;
  Explanation result_;
};

}  // namespace

Explanation ExplainLine(CliDispatcher& dispatcher, const std::vector<std::string>& arguments) {
  return Explainer(dispatcher, arguments).Run();
}

}  // namespace Kestrel::Explain
