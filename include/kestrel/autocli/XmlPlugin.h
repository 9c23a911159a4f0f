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

class KESTREL_API XmlPlugin : public Plugin {
 public:
  ~XmlPlugin() override;
  static std::shared_ptr<XmlPlugin> New(const std::string& path);
  void Initialize() override;
  const std::string& GetName() const override;
  void RegisterNamespaces(std::shared_ptr<Namespace> root) override;
  bool HasFormatter(const std::string& name) override;
  std::shared_ptr<Formatter> GetFormatter(
      const std::string& name) override;  // throws "Xml Plugin doesn't not support formatters"
  const std::vector<std::shared_ptr<Formatter>>& GetFormatters() override;
  static std::list<std::string> SplitPath(const std::string& path);
  void AddNamespaces(const xmlNode* node);
  void AddNamespace(const xmlNode* node);
  void AddCommands(const xmlNode* node);
  void AddCommand(const xmlNode* node);

 private:
  explicit XmlPlugin(const std::string& path);
};
KESTREL_API void ExtractMetaData(const xmlNode* node,
                                 const std::shared_ptr<ExtensionCommand>& command);
KESTREL_API void ExtractFormatParams(const xmlNode* node,
                                     const std::shared_ptr<ExtensionCommand>& command);
KESTREL_API std::shared_ptr<CallSpec::InputSpec> ExtractInputSpec(const xmlNode* node);
KESTREL_API void ExtractInputParam(const xmlNode* node,
                                   const std::shared_ptr<CallSpec::InputSpec>& inputSpec);
KESTREL_API std::shared_ptr<CallSpec::ParameterConstraint> ExtractParamConstraint(
    const xmlNode* node);
KESTREL_API std::vector<std::string> ExtractEnum(const xmlNode* node);
KESTREL_API std::shared_ptr<CallSpec::OutputSpec> ExtractOutputSpec(const xmlNode* node);

}  // namespace Kestrel::AutoCli
