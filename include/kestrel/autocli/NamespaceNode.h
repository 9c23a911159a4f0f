#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"

namespace Kestrel::AutoCli {

class Dispatcher;
struct NodeTypes {
  enum Value : std::int32_t { Root = 0, Namespace = 1, Command = 2 };
};
using NodeType = NodeTypes::Value;  // NodeType::Root, NodeType::Namespace, NodeType::Command;
                                    // compares with 0, 1, 2
class KESTREL_API NamespaceNode : public std::enable_shared_from_this<NamespaceNode> {
 public:
  virtual ~NamespaceNode();
  virtual std::shared_ptr<NamespaceNode> GetThis() = 0;
  virtual NodeType GetType() = 0;
  virtual std::list<std::string> GetPath();
  virtual std::string GetPathString(char separator);
  virtual bool HasNamespaceNode(const std::string& name);
  virtual std::vector<std::string> GetNamespaceNodeNames();
  virtual std::vector<std::shared_ptr<NamespaceNode>> GetNamespaceNodes();
  virtual std::shared_ptr<NamespaceNode> GetNamespaceNode(const std::string& name);
  virtual void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name);
  virtual void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name);
  virtual std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path);
  virtual std::shared_ptr<NamespaceNode> SubNamespace(const std::string& name);
  virtual Dispatcher* GetDispatcher() = 0;
  virtual void SetParent(std::shared_ptr<NamespaceNode> parent) = 0;
  virtual std::shared_ptr<NamespaceNode> GetParent() = 0;
  const std::string& GetName() const;
  void SetName(const std::string& name);
  void SetDescription(std::string description);
  void SetDescription(const char* description);
  const std::string& GetDescription() const;

 protected:
  NamespaceNode();
};

}  // namespace Kestrel::AutoCli
