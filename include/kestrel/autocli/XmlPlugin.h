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

/// A plug-in read from an XML descriptor: namespaces, and commands whose work is a shell command
/// line. It offers no formatters.
class KESTREL_API XmlPlugin : public Plugin {
  struct ConstructionKey {
    explicit ConstructionKey() = default;
  };

 public:
  /// The plug-in of the descriptor at `path`, which is not opened yet. The path is also its name.
  static std::shared_ptr<XmlPlugin> New(const std::string& path);

  XmlPlugin(const std::string& path, ConstructionKey);
  ~XmlPlugin() override;

  /// Reads the whole descriptor. Throws KestrelException with the path and the fault when it cannot
  /// be parsed or breaks a rule; what was read before the fault stays.
  void Initialize() override;

  const std::string& GetName() const override;

  /// Inserts what the descriptor declares under `root`, sharing top-level namespaces of the same
  /// description. Throws KestrelException before anything is inserted when a path is taken, and in
  /// the middle when a parent is missing or a name is bad; what was inserted before stays.
  void RegisterNamespaces(std::shared_ptr<Namespace> root) override;

  /// False, for every name.
  bool HasFormatter(const std::string& name) override;
  /// Throws KestrelException, for every name.
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) override;
  /// An empty list, shared by all such plug-ins.
  const std::vector<std::shared_ptr<Formatter>>& GetFormatters() override;

  /// The components of a path, separated by full stops; an empty last one is dropped.
  static std::list<std::string> SplitPath(const std::string& path);

  /// Record what an element of the descriptor declares, to be registered later. Throw
  /// KestrelException when the element breaks a rule.
  void AddNamespaces(const xmlNode* node);
  void AddNamespace(const xmlNode* node);
  void AddCommands(const xmlNode* node);
  void AddCommand(const xmlNode* node);

 private:
  void ReadRoot(const xmlNode* root);
  static std::shared_ptr<ExtensionCommand> ReadCommand(const xmlNode* node);

  std::string path_;
  std::vector<std::pair<std::string, std::shared_ptr<NamespaceNode>>> registrations_;
};

// One reader for each kind of element. Each throws KestrelException when its element breaks a rule.

/// Adds the entries of a `meta-data` element to `command`.
KESTREL_API void ExtractMetaData(const xmlNode* node,
                                 const std::shared_ptr<ExtensionCommand>& command);
/// Makes a `format-parameters` element the default formatting of `command`.
KESTREL_API void ExtractFormatParams(const xmlNode* node,
                                     const std::shared_ptr<ExtensionCommand>& command);
/// The parameters and contexts of an `input-spec` element.
KESTREL_API std::shared_ptr<CallSpec::InputSpec> ExtractInputSpec(const xmlNode* node);
/// Adds a `parameter` element to `inputSpec`.
KESTREL_API void ExtractInputParam(const xmlNode* node,
                                   const std::shared_ptr<CallSpec::InputSpec>& inputSpec);
/// The constraint that a `constraint` element describes.
KESTREL_API std::shared_ptr<CallSpec::ParameterConstraint> ExtractParamConstraint(
    const xmlNode* node);
/// The values of an `enum` element, in document order.
KESTREL_API std::vector<std::string> ExtractEnum(const xmlNode* node);
/// The shape that an `output-spec` element declares.
KESTREL_API std::shared_ptr<CallSpec::OutputSpec> ExtractOutputSpec(const xmlNode* node);

}  // namespace Kestrel::AutoCli
