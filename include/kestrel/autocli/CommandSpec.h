// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/NamespaceNode.h"
#include "kestrel/callspec/CallTargetSpec.h"
#include "kestrel/callspec/Input.h"

namespace Kestrel::AutoCli {

/// A leaf of the command tree: what a command is called, takes, gives and looks like in help.
///
/// A command never has children: every operation that would reach below it throws
/// KestrelException with its path, or with the message that it has none while it is unregistered.
class KESTREL_API CommandSpec : public CallSpec::CallTargetSpec, public NamespaceNode {
 public:
  ~CommandSpec() override;

  /// The command's parameters, and "help" ("h") besides, sorted by name. Asked of the command and
  /// completed once, the same object afterwards.
  /// Throws KestrelException when the command gives null, or declares a "help" of its own; in the
  /// latter case the specification is kept as the command made it.
  std::shared_ptr<CallSpec::InputSpec> GetInputSpec() override;

  /// The command's declared result. Asked of the command once, the same object afterwards.
  /// Throws KestrelException when the command gives null.
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpec() override;

  std::shared_ptr<NamespaceNode> GetThis() override;

  /// Always false; never throws.
  bool HasNamespaceNode(const std::string& name) override;

  /// Always throws KestrelException.
  std::shared_ptr<NamespaceNode> GetNamespaceNode(const std::string& name) override;

  /// Always throws KestrelException.
  void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name) override;

  /// Always throws KestrelException.
  void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name) override;

  /// Always throws KestrelException that names the words of `path`, which stays as it is.
  std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path) override;

  Dispatcher* GetDispatcher() override;
  void SetParent(std::shared_ptr<NamespaceNode> parent) override;
  std::shared_ptr<NamespaceNode> GetParent() override;
  NodeType GetType() override;

  /// A new specification of the command's own parameters, without "help"; must not be null, and
  /// not be shared with another command.
  virtual std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() = 0;

  /// The specification of the command's result; must not be null.
  virtual std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() = 0;

  /// Adds an example to the help: `arguments` is what follows the command on the command line,
  /// `description` what the example does.
  void AddExample(std::string arguments, std::string description);

  /// The same for C strings; null counts as the empty text.
  void AddExample(const char* arguments, const char* description);

  /// The examples, each as arguments and description, in the order added.
  const std::vector<std::pair<std::string, std::string>>& GetExamples() const;

  /// Names the formatter for this command's result when the user names none. The name is looked
  /// up when a result is formatted, not here.
  void SetDefaultOutputFormatter(std::string name);

  /// The same for a C string; null counts as the empty text.
  void SetDefaultOutputFormatter(const char* name);

  /// Sets one parameter for that formatter; a second value replaces the first.
  void SetDefaultOutputParameter(std::string name, std::string value);

  /// The same for C strings; null counts as the empty text.
  void SetDefaultOutputParameter(const char* name, const char* value);

  /// A copy of the default formatter's name and parameters.
  FormatParameters GetDefaultOutputFormatParameters() const;

  /// Fills `output`, which must not be null, with this command's help: a "VexilCommandHelp"
  /// structure as the root, and the type `Help`. `input` supplies the words that call the command
  /// when it is a CommandInput; any other one, null included, leaves them out.
  void GenerateHelpOutput(const std::shared_ptr<CallSpec::Input>& input,
                          const std::shared_ptr<CallSpec::Output>& output);

  /// Notes a meta-data entry of the command's descriptor; the last value of a name wins.
  void AddMetaData(const std::string& name, const std::string& value);

  /// The meta-data entries by name.
  const std::map<std::string, std::string>& GetMetaData() const;

 protected:
  CommandSpec();

 private:
  std::vector<std::pair<std::string, std::string>> examples_;
  std::shared_ptr<CallSpec::InputSpec> inputSpec_;
  std::shared_ptr<CallSpec::OutputSpec> outputSpec_;
  FormatParameters defaultFormatParameters_;
  std::weak_ptr<NamespaceNode> parent_;
  std::map<std::string, std::string> metaData_;
};

}  // namespace Kestrel::AutoCli
