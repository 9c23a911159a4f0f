#pragma once

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

class KESTREL_API CommandSpec : public CallSpec::CallTargetSpec, public NamespaceNode {
 public:
  ~CommandSpec() override;
  std::shared_ptr<CallSpec::InputSpec> GetInputSpec() override;
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpec() override;
  std::shared_ptr<NamespaceNode> GetThis() override;
  bool HasNamespaceNode(const std::string& name) override;
  std::shared_ptr<NamespaceNode> GetNamespaceNode(const std::string& name) override;
  void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name) override;
  void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name) override;
  std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path) override;
  Dispatcher* GetDispatcher() override;
  void SetParent(std::shared_ptr<NamespaceNode> parent) override;
  std::shared_ptr<NamespaceNode> GetParent() override;
  NodeType GetType() override;
  virtual std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() = 0;
  virtual std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() = 0;
  void AddExample(std::string arguments, std::string description);
  void AddExample(const char* arguments, const char* description);
  const std::vector<std::pair<std::string, std::string>>& GetExamples() const;
  void SetDefaultOutputFormatter(std::string name);
  void SetDefaultOutputFormatter(const char* name);
  void SetDefaultOutputParameter(std::string name, std::string value);
  void SetDefaultOutputParameter(const char* name, const char* value);
  FormatParameters GetDefaultOutputFormatParameters() const;
  void GenerateHelpOutput(const std::shared_ptr<CallSpec::Input>& input,
                          const std::shared_ptr<CallSpec::Output>& output);
  void AddMetaData(
      const std::string& name,
      const std::string& value);  // a descriptor's meta-data entries; the last value of a name wins
  const std::map<std::string, std::string>& GetMetaData() const;
 protected:
  CommandSpec();
};

}  // namespace Kestrel::AutoCli
