// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>
#include <kestrel/autocli/NamespaceNode.h>
#include <kestrel/callspec/Input.h>
#include <kestrel/callspec/InputSpec.h>
#include <kestrel/callspec/Output.h>
#include <kestrel/callspec/OutputSpec.h>

#include <initializer_list>
#include <memory>
#include <string>

#include "plugins/host/frame/Parameter.h"
#include "plugins/host/frame/StructShape.h"

namespace Kestrel::Host {

/// What the commands of this plug-in have in common: a short way to declare what a command takes,
/// gives and looks like.
///
/// The constructor of a concrete command says what help and output need; parameters and shape are
/// asked for only when the command is called. A result with an error message is not looked at, so
/// `Run` returns after adding one. What it throws becomes such a message.
class HostCommand : public AutoCli::Command {
 public:
  ~HostCommand() override;

  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() final;
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() final;
  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) final;

 protected:
  explicit HostCommand(const char* description);

  /// A default formatter's parameter: name and value.
  struct FormatParameter {
    const char* name;
    const char* value;
  };

  /// Shows the result as a table with those columns, a list separated by commas.
  void ShowAsTable(const std::string& columns,
                   std::initializer_list<FormatParameter> parameters = {});
  /// Shows the result as indented lines, one for each of those fields of `typeName`.
  void ShowAsLines(const char* typeName, const char* fields,
                   std::initializer_list<FormatParameter> parameters = {});
  /// Shows the result, a single value or a list of such, as it is.
  void ShowAsValue();

 private:
  /// Adds the parameters that a whole kind of commands has; none unless overridden.
  virtual void DeclareCommonParameters(CallSpec::InputSpec& spec) const;
  /// Adapts the default format to what `input` asks for; nothing unless overridden. Called before
  /// each run, because a command serves many calls.
  virtual void ChooseFormat(const CallSpec::Input& input);
  /// Adds the command's parameters; none unless overridden.
  virtual void DeclareParameters(CallSpec::InputSpec& spec) const;
  /// Sets the sample result and its description.
  virtual void DeclareResult(CallSpec::OutputSpec& spec) const = 0;
  /// The command's work: sets the root object of `output` or adds an error message.
  virtual void Run(const CallSpec::Input& input, CallSpec::Output& output) const = 0;

  void SetFormat(const char* formatter, std::initializer_list<FormatParameter> parameters);
};

/// The namespace `name` below `parent`, made if there is none, and described unless it is already.
std::shared_ptr<AutoCli::NamespaceNode> AddNamespace(
    const std::shared_ptr<AutoCli::NamespaceNode>& parent, const char* name,
    const char* description);

}  // namespace Kestrel::Host
