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

/// A leaf of the command tree: the declaration of a command, with its parameters, its result, its
/// help and how its output is formatted.
///
/// A command has no children: every operation that needs one throws KestrelException. The message
/// contains the path of the command; if the command is not registered, it says so instead.
class KESTREL_API CommandSpec : public CallSpec::CallTargetSpec, public NamespaceNode {
 public:
  ~CommandSpec() override;

  /// The command's parameters and the parameter "help" ("h"). The first call requests the
  /// specification from the command and adds "help"; later calls return the same object. Throws
  /// KestrelException when the command returns null, or declares a parameter "help" or a short name
  /// "h" of its own. In the second case, later calls do not throw; they return the specification as
  /// the command made it.
  std::shared_ptr<CallSpec::InputSpec> GetInputSpec() override;

  /// The command's declared result. The first call requests it from the command; later calls return
  /// the same object. Throws KestrelException when the command returns null.
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

  /// Always throws KestrelException. The message also contains the names in `path`, which is not
  /// changed.
  std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path) override;

  Dispatcher* GetDispatcher() override;
  void SetParent(std::shared_ptr<NamespaceNode> parent) override;
  std::shared_ptr<NamespaceNode> GetParent() override;
  NodeType GetType() override;

  /// Makes a specification of the command's own parameters, without "help". It must not be null or
  /// shared with another command.
  virtual std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() = 0;

  /// Makes the specification of the command's result, which must not be null.
  virtual std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() = 0;

  /// Adds an example to the help: `arguments` is what follows the command on the command line,
  /// `description` is what the example does.
  void AddExample(std::string arguments, std::string description);

  /// Overload for C strings; null counts as the empty string.
  void AddExample(const char* arguments, const char* description);

  /// The examples, each as arguments and description, in the order in which they were added.
  const std::vector<std::pair<std::string, std::string>>& GetExamples() const;

  /// Sets the name of the formatter for this command's result, used unless the user chooses
  /// another. The name is looked up when a result is formatted, not here.
  void SetDefaultOutputFormatter(std::string name);

  /// Overload for a C string; null counts as the empty string.
  void SetDefaultOutputFormatter(const char* name);

  /// Sets one parameter of the default formatter; a second value of a name replaces the first.
  void SetDefaultOutputParameter(std::string name, std::string value);

  /// Overload for C strings; null counts as the empty string.
  void SetDefaultOutputParameter(const char* name, const char* value);

  /// The default formatter's name and parameters, as a copy.
  FormatParameters GetDefaultOutputFormatParameters() const;

  /// Fills `output`, which must not be null, with this command's help: the root object becomes a
  /// structure "VexilCommandHelp", the type becomes `Help`. If `input` is a CommandInput, the help
  /// contains its dispatcher name and path; otherwise, or if `input` is null, it contains neither.
  void GenerateHelpOutput(const std::shared_ptr<CallSpec::Input>& input,
                          const std::shared_ptr<CallSpec::Output>& output);

  /// Adds a meta-data entry, which describes the command for other programs; a second value of a
  /// name replaces the first.
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
