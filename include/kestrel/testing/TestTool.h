// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <iostream>
#include <list>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/OptionParser.h"
#include "kestrel/autocli/Plugin.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Testing {

/// The words after the name of the tool, as the shell passes them.
using Words = std::vector<std::string>;

/// The parameters of a formatter.
using FormatPairs = std::vector<std::pair<std::string, std::string>>;

/// What the tool did with a command line.
class CommandRun {
 public:
  /// The bytes on standard output: the formatted result, a help page, a list of namespaces and
  /// commands, or the usage. The width is unlimited, as on a pipe, except for a list, which is
  /// fitted to the terminal of the test, if there is one.
  const std::string& Output() const { return printed_; }

  /// The messages on standard error, without the heading "Errors: ".
  const std::vector<std::string>& Messages() const { return messages_; }

  /// The exit status: 0 or 1.
  int Status() const { return status_; }

  /// The value that the command returned, or the structure of a help page or of a list; null if
  /// there is none.
  std::shared_ptr<MetaObj::MetaObject> Result() const { return output_->GetRootObject(); }

  /// The command that the line names; null if it names none or requests the usage.
  const std::shared_ptr<AutoCli::Command>& GetCommand() const { return command_; }

  /// The whole output of the call.
  const std::shared_ptr<AutoCli::CommandOutput>& GetOutput() const { return output_; }

  /// The dispatcher that ran the command; it exists as long as the run does.
  AutoCli::CliDispatcher& GetDispatcher() const { return *dispatcher_; }

  /// The formatter and the parameters for the result or the help page of a call that succeeded;
  /// empty for every other command line.
  const AutoCli::FormatParameters& GetFormat() const { return format_; }

 private:
  friend class TestTool;

  explicit CommandRun(std::shared_ptr<AutoCli::CliDispatcher> dispatcher)
      : dispatcher_(std::move(dispatcher)), output_(AutoCli::CommandOutput::New()) {}

  // The code of the command is in a plug-in of the dispatcher, so the dispatcher is destroyed last.
  std::shared_ptr<AutoCli::CliDispatcher> dispatcher_;
  std::shared_ptr<AutoCli::Command> command_;
  std::shared_ptr<AutoCli::CommandOutput> output_;
  AutoCli::FormatParameters format_;
  std::string printed_;
  std::vector<std::string> messages_;
  int status_ = 1;
};

/// Collects the output to std::cout during its lifetime.
class CoutCapture {
 public:
  CoutCapture() : before_(std::cout.rdbuf(text_.rdbuf())) {}
  CoutCapture(const CoutCapture&) = delete;
  CoutCapture& operator=(const CoutCapture&) = delete;
  ~CoutCapture() { std::cout.rdbuf(before_); }

  /// The output so far.
  std::string GetText() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::streambuf* before_;
};

/// The tool in this process, with plug-ins, for any number of command lines.
///
/// The last plug-in is the one under test; the others are loaded before it, for example because it
/// adds to their namespaces. The constructors throw KestrelException, with the reason in the
/// message, if a plug-in cannot be loaded or registered. They are implicit, so that every check
/// accepts a plug-in too.
// NOLINTBEGIN(google-explicit-constructor)
class TestTool {
 public:
  /// Loads the plug-in in a file: a shared object or a descriptor. A shared object whose path has
  /// no "/" is searched for in the folders of the system's loader, so write "./greet.so".
  TestTool(const std::string& file) : TestTool({file}) {}
  /// As above.
  TestTool(const char* file) : TestTool({std::string(file)}) {}

  /// Loads several files, in this order.
  TestTool(std::initializer_list<std::string> files) {
    for (const std::string& file : files) {
      known_ = FindCommands();
      dispatcher_->AddPlugin(file);
    }
  }

  /// Adds a plug-in object, which the caller has initialised.
  TestTool(const std::shared_ptr<AutoCli::Plugin>& plugin) : known_(FindCommands()) {
    dispatcher_->RegisterPlugin(plugin);
  }
  // NOLINTEND(google-explicit-constructor)

  /// The dispatcher, which exists as long as the tool or one of its runs does.
  AutoCli::CliDispatcher& GetDispatcher() const { return *dispatcher_; }

  /// The commands of the plug-in under test, by path; the words of a path are separated by a space.
  std::map<std::string, std::shared_ptr<AutoCli::Command>> GetCommands() const {
    std::map<std::string, std::shared_ptr<AutoCli::Command>> commands = FindCommands();
    for (const auto& [path, command] : known_) {
      commands.erase(path);
    }
    return commands;
  }

  /// Handles a command line as the tool does. A secret without a value is read from standard input.
  /// An exception that is not a std::exception would end the tool; here, it reaches the caller.
  CommandRun Run(const Words& words) const {
    CommandRun run(dispatcher_);
    try {
      Handle(words, run);
    } catch (const std::exception& error) {
      run.messages_.emplace_back(error.what());
    }
    return run;
  }

 private:
  using Commands = std::map<std::string, std::shared_ptr<AutoCli::Command>>;
  using NodePtr = std::shared_ptr<AutoCli::NamespaceNode>;

  // Handles an empty line, because that sets the name of the tool. It also prints a list of the
  // root, which is discarded.
  static std::shared_ptr<AutoCli::CliDispatcher> NewDispatcher() {
    const auto dispatcher = std::make_shared<AutoCli::CliDispatcher>();
    const CoutCapture capture;
    AutoCli::OptionParser parser;
    dispatcher->HandleOptions(parser, false);
    return dispatcher;
  }

  Commands FindCommands() const {
    Commands commands;
    AddCommands(dispatcher_->GetRootNamespace(), "", commands);
    return commands;
  }

  static void AddCommands(const NodePtr& node, const std::string& prefix, Commands& commands) {
    for (const NodePtr& child : node->GetNamespaceNodes()) {
      const std::string path = prefix + child->GetName();
      if (const auto command = std::dynamic_pointer_cast<AutoCli::Command>(child)) {
        commands[path] = command;
      } else {
        AddCommands(child, path + " ", commands);
      }
    }
  }

  void Handle(const Words& words, CommandRun& run) const {
    AutoCli::OptionParser parser;
    parser.ParseVector(words);
    for (const std::string& error : parser.GetParseErrors()) {
      run.output_->AddErrorMessage(error);
    }
    const CoutCapture capture;
    AutoCli::FormatParameters choices;
    const bool isHandled = !run.output_->HasError() &&
                           dispatcher_->HandleDispatcherOptions(parser, choices, run.output_);
    const NodePtr node = isHandled ? FindNode(parser) : nullptr;
    run.command_ = std::dynamic_pointer_cast<AutoCli::Command>(node);
    if (run.command_ != nullptr) {
      RunCommand(parser, choices, run);
    } else if (node != nullptr) {
      dispatcher_->PrintChildren(node, run.output_);
    }
    run.printed_ += capture.GetText();
    // Errors of the options are printed only for a command.
    if (run.command_ != nullptr || !parser.GetParseErrors().empty()) {
      run.messages_ = run.output_->GetErrors();
    }
  }

  NodePtr FindNode(const AutoCli::OptionParser& parser) const {
    std::list<std::string> path = parser.GetCommandPath();
    const auto root = dispatcher_->GetRootNamespace();
    return path.empty() ? root : root->ResolveNode(path);
  }

  void RunCommand(AutoCli::OptionParser& parser, const AutoCli::FormatParameters& choices,
                  CommandRun& run) const {
    const auto input = AutoCli::CommandInput::New();
    input->SetDispatcher(parser.GetDispatcher());
    input->SetCommandPath(parser.GetCommandPath());
    parser.SetInputSpec(run.command_->GetInputSpec());
    for (const auto& [name, value] : parser.GetCommandParameters()) {
      input->AddParameter(name, value);
    }
    for (const std::string& error : parser.GetParseErrors()) {
      run.output_->AddErrorMessage(error);
    }
    if (run.output_->HasError() || !dispatcher_->ExecuteCommand(input, run.output_)) {
      return;
    }
    run.format_ = FindFormat(run);
    run.format_.OverrideValues(choices);
    std::ostringstream out;
    AutoCli::DisplayContext display;
    dispatcher_->FormatOutput(run.output_, run.format_, display, out);
    run.printed_ = out.str();
    run.status_ = run.output_->HasError() ? 1 : 0;
  }

  AutoCli::FormatParameters FindFormat(const CommandRun& run) const {
    switch (run.output_->GetOutputType()) {
      case CallSpec::Output::Ordinary:
        return run.command_->GetDefaultOutputFormatParameters();
      case CallSpec::Output::Help:
        return dispatcher_->GetHelpFormatParams();
      default:
        return {};
    }
  }

  std::shared_ptr<AutoCli::CliDispatcher> dispatcher_ = NewDispatcher();
  Commands known_;  // the commands before the plug-in under test was added
};

/// Handles one command line with a plug-in: `Run("./greet.so", {"greet", "show"})`. In a test of
/// GoogleTest, write `Kestrel::Testing::Run`, because the class of the test has a `Run` of its own.
inline CommandRun Run(const TestTool& tool, const Words& words) { return tool.Run(words); }

/// Returns the result of a run as another formatter prints it, with `parameters` in addition to
/// those of the run, on a screen of `width` columns (0: unlimited). An empty name means the
/// formatter of the run. Returns an empty string if the status of the run is not 0. Throws
/// KestrelException if there is no such formatter, or if it cannot print the result.
inline std::string Printed(const CommandRun& run, const std::string& formatter = "",
                           const FormatPairs& parameters = {}, std::uint16_t width = 0) {
  if (run.Status() != 0) {
    return {};
  }
  AutoCli::FormatParameters format = run.GetFormat();
  format.SetFormatter(formatter.empty() ? format.GetFormatter() : formatter);
  for (const auto& [name, value] : parameters) {
    format.SetParameter(name, value);
  }
  const auto output = CallSpec::Output::New();
  output->SetOutputType(run.GetOutput()->GetOutputType());
  output->SetRootObject(run.Result());
  AutoCli::DisplayContext display;
  display.width = width;
  std::ostringstream out;
  if (!run.GetDispatcher().FormatOutput(output, format, display, out) || output->HasError()) {
    throw KestrelException(output->GetErrors().front());
  }
  return out.str();
}

}  // namespace Kestrel::Testing
