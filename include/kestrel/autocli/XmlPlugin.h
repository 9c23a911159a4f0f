// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/autocli/Plugin.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterConstraint.h"

struct _xmlNode;
using xmlNode = struct _xmlNode;

namespace Kestrel::AutoCli {

/// A plug-in that an XML descriptor declares. It adds namespaces, and commands that run shell
/// command lines. It has no formatters.
class KESTREL_API XmlPlugin : public Plugin {
  struct ConstructionKey {
    explicit ConstructionKey() = default;
  };

 public:
  /// Makes a plug-in for the descriptor at `path`, which is not opened yet. The path is also the
  /// name of the plug-in.
  static std::shared_ptr<XmlPlugin> New(const std::string& path);

  /// For `New` only; no other caller can make the key.
  XmlPlugin(const std::string& path, ConstructionKey);
  ~XmlPlugin() override;

  /// Reads the descriptor. Throws KestrelException, with the path and the fault in the message,
  /// when the descriptor cannot be parsed or is invalid, or when the file must be trusted but is
  /// not (see Dispatcher::AddDefaultDirectories). What was read before the fault stays in the
  /// object. Nothing is fetched from a network.
  void Initialize() override;

  /// Returns the path of the descriptor.
  const std::string& GetName() const override;

  /// Inserts the declared namespaces and commands below `root`. A top-level namespace that exists
  /// with the same description is shared.
  ///
  /// Throws KestrelException when a path is taken; then nothing is inserted. Also throws it when
  /// the descriptor declares a path twice (except that of a shared namespace), a parent does not
  /// exist or a name is invalid; then what was inserted before stays.
  void RegisterNamespaces(std::shared_ptr<Namespace> root) override;

  /// Returns false.
  bool HasFormatter(const std::string& name) override;
  /// Throws KestrelException.
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) override;
  /// Returns an empty list.
  const std::vector<std::shared_ptr<Formatter>>& GetFormatters() override;

  /// Returns the components of a path, which are separated by full stops. An empty last component
  /// is dropped.
  static std::list<std::string> SplitPath(const std::string& path);

  /// @{
  /// Read an element of a descriptor and store what it declares for `RegisterNamespaces`. Throw
  /// KestrelException when the element is invalid.
  void AddNamespaces(const xmlNode* node);
  void AddNamespace(const xmlNode* node);
  void AddCommands(const xmlNode* node);
  void AddCommand(const xmlNode* node);
  /// @}

 private:
  friend struct DefaultFolder;

  void ReadRoot(const xmlNode* root);
  static std::shared_ptr<ExtensionCommand> ReadCommand(const xmlNode* node);

  std::string path_;
  bool isInDefaultFolder_ = false;
  std::vector<std::pair<std::string, std::shared_ptr<NamespaceNode>>> registrations_;
};

// One function for each kind of element. Each throws KestrelException when its element is invalid.

/// Adds the entries of a `meta-data` element to `command`.
KESTREL_API void ExtractMetaData(const xmlNode* node,
                                 const std::shared_ptr<ExtensionCommand>& command);
/// Sets the default formatter and the default format parameters of `command` from a
/// `format-parameters` element.
KESTREL_API void ExtractFormatParams(const xmlNode* node,
                                     const std::shared_ptr<ExtensionCommand>& command);
/// Returns the parameters and contexts that an `input-spec` element declares.
KESTREL_API std::shared_ptr<CallSpec::InputSpec> ExtractInputSpec(const xmlNode* node);
/// Adds the parameter that a `parameter` element declares to `inputSpec`.
KESTREL_API void ExtractInputParam(const xmlNode* node,
                                   const std::shared_ptr<CallSpec::InputSpec>& inputSpec);
/// Returns the constraint that a `constraint` element declares.
KESTREL_API std::shared_ptr<CallSpec::ParameterConstraint> ExtractParamConstraint(
    const xmlNode* node);
/// Returns the values of an `enum` element, in document order.
KESTREL_API std::vector<std::string> ExtractEnum(const xmlNode* node);
/// Returns the shape of the result that an `output-spec` element declares.
KESTREL_API std::shared_ptr<CallSpec::OutputSpec> ExtractOutputSpec(const xmlNode* node);

}  // namespace Kestrel::AutoCli
