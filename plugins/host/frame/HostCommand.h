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

/// The base class of the commands of this plug-in. It shortens the declarations of parameters,
/// result and default format.
///
/// The constructor of a concrete command sets its description, its examples and its default format.
/// The parameters and the shape of the result are declared when they are first requested, for
/// example by a call, for help or for completion. A result is ignored once there is an error
/// message, so `Run` need not set one then. An exception that leaves `Run` becomes an error
/// message.
class HostCommand : public AutoCli::Command {
 public:
  ~HostCommand() override;

  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() final;
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() final;
  void ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                       const std::shared_ptr<CallSpec::Output>& output) final;

 protected:
  explicit HostCommand(const char* description);

  /// A parameter of the default formatter.
  struct FormatParameter {
    const char* name;
    const char* value;
  };

  /// Shows the result as a table. `columns` are names of fields, separated by commas.
  void ShowAsTable(const std::string& columns,
                   std::initializer_list<FormatParameter> parameters = {});
  /// Shows the result as indented lines, one per field. `fields` are fields of `typeName`,
  /// separated by commas.
  void ShowAsLines(const char* typeName, const char* fields,
                   std::initializer_list<FormatParameter> parameters = {});
  /// Shows a result without fields: a single value or a list of values.
  void ShowAsValue();

 private:
  /// Adds the parameters that all commands derived from one class, such as ListCommand, share. Adds
  /// none unless overridden.
  virtual void DeclareCommonParameters(CallSpec::InputSpec& spec) const;
  /// Adapts the default format to the parameters in `input`; does nothing unless overridden. Called
  /// before each run, because one command object serves many calls.
  virtual void ChooseFormat(const CallSpec::Input& input);
  /// Declares the parameters; none unless overridden.
  virtual void DeclareParameters(CallSpec::InputSpec& spec) const;
  /// Declares the result: an example of its structure, and its description.
  virtual void DeclareResult(CallSpec::OutputSpec& spec) const = 0;
  /// Runs the command: sets the root object of `output`, or adds an error message.
  virtual void Run(const CallSpec::Input& input, CallSpec::Output& output) const = 0;

  void SetFormat(const char* formatter, std::initializer_list<FormatParameter> parameters);
};

/// Returns the namespace `name` below `parent`, adding it if it is missing. An existing description
/// is kept.
std::shared_ptr<AutoCli::NamespaceNode> AddNamespace(
    const std::shared_ptr<AutoCli::NamespaceNode>& parent, const char* name,
    const char* description);

}  // namespace Kestrel::Host
