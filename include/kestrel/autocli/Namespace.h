#pragma once

#include "kestrel/Export.h"
#include "kestrel/autocli/NamespaceNode.h"

namespace Kestrel::AutoCli {

class KESTREL_API Namespace : public NamespaceNode {
 public:
  ~Namespace() override;
  static std::shared_ptr<Namespace> New();
  std::shared_ptr<NamespaceNode> GetThis() override;
  NodeType GetType() override;
  Dispatcher* GetDispatcher() override;
  void SetParent(std::shared_ptr<NamespaceNode> parent) override;
  std::shared_ptr<NamespaceNode> GetParent() override;

 protected:
  Namespace();
};

}  // namespace Kestrel::AutoCli
