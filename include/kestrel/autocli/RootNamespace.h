#pragma once

#include "kestrel/Export.h"
#include "kestrel/autocli/Namespace.h"

namespace Kestrel::AutoCli {

class KESTREL_API RootNamespace : public Namespace {
 public:
  ~RootNamespace() override;
  static std::shared_ptr<RootNamespace> New(Dispatcher* dispatcher);
  std::shared_ptr<NamespaceNode> GetThis() override;
  NodeType GetType() override;
  std::list<std::string> GetPath() override;
  std::string GetPathString(char separator) override;
  Dispatcher* GetDispatcher() override;
  void SetParent(std::shared_ptr<NamespaceNode> parent) override;
  std::shared_ptr<NamespaceNode> GetParent() override;

 private:
  explicit RootNamespace(Dispatcher* dispatcher);
};

}  // namespace Kestrel::AutoCli
