// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

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

/// The scope of the node types, so that no enumerator hides a class.
struct NodeTypes {
  /// The type of a node. The numbers never change.
  enum Value : std::int32_t {
    Root = 0,       ///< The root of a dispatcher's tree.
    Namespace = 1,  ///< An inner node.
    Command = 2     ///< A leaf that can be run.
  };
};

/// The type of a node: `NodeType::Root`, `NodeType::Namespace` or `NodeType::Command`.
using NodeType = NodeTypes::Value;

/// A node of the command tree, the tree of names under which a dispatcher finds its commands.
///
/// Every node is owned by a `std::shared_ptr`, made by the `New` of its class. A parent owns its
/// children; a child has a weak link to its parent. A new node has no name and no parent;
/// registering it sets both. Nodes are never removed: they are destroyed with the last owner of the
/// tree. A registered node can be registered again elsewhere: its parent is then the new one, and
/// the earlier parent still lists it. Cycles are not detected: if a namespace is registered below
/// itself, every path through it is endless.
///
/// Derived classes must not derive from `std::enable_shared_from_this` again.
class KESTREL_API NamespaceNode : public std::enable_shared_from_this<NamespaceNode> {
 public:
  NamespaceNode(const NamespaceNode&) = delete;
  NamespaceNode& operator=(const NamespaceNode&) = delete;

  virtual ~NamespaceNode();

  /// Returns an owner of this node.
  /// Throws `std::bad_weak_ptr` when no `std::shared_ptr` owns the node.
  virtual std::shared_ptr<NamespaceNode> GetThis() = 0;

  /// The type of this node.
  virtual NodeType GetType() = 0;

  /// The names of the nodes from the first below the root down to this node; empty for the root.
  /// Throws KestrelException when the chain of parents does not lead up to a root.
  virtual std::list<std::string> GetPath();

  /// The names of `GetPath`, joined with `separator`; empty for the root.
  /// Throws KestrelException when the chain of parents does not lead up to a root.
  virtual std::string GetPathString(char separator);

  /// Whether there is a child with exactly this name. Never throws.
  virtual bool HasNamespaceNode(const std::string& name);

  /// The names of the children in ascending byte order.
  virtual std::vector<std::string> GetNamespaceNodeNames();

  /// The children in ascending byte order of their names.
  virtual std::vector<std::shared_ptr<NamespaceNode>> GetNamespaceNodes();

  /// The child with exactly this name, null when there is none. A command, which cannot have
  /// children, throws KestrelException.
  virtual std::shared_ptr<NamespaceNode> GetNamespaceNode(const std::string& name);

  /// Adds `node` as the child `name`; sets its name and its parent.
  /// Throws KestrelException when (checked in this order) there is a child of this name, `node` is
  /// null, `name` is invalid (see `SetName`), or `node` cannot have a parent. The children are
  /// unchanged then; in the last case `node` has the new name.
  virtual void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name);

  /// Overload for a C string; calls the operation above. Null counts as the empty string.
  virtual void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name);

  /// Follows the names in `path`, starting with a child of this node, and returns the last node;
  /// null for an empty `path`. Throws KestrelException at the first name that does not exist;
  /// `path` then contains only the names after that one, or also that one if the name before it is
  /// that of a command. Otherwise `path` is unchanged.
  virtual std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path);

  /// Returns the child `name`, whatever its type. If there is none, registers a new namespace
  /// without a description under `name` and returns it. Throws as `RegisterNamespaceNode` does.
  virtual std::shared_ptr<NamespaceNode> SubNamespace(const std::string& name);

  /// The dispatcher that owns the tree; the caller does not own it.
  /// Throws KestrelException when the chain of parents does not lead up to a root.
  virtual Dispatcher* GetDispatcher() = 0;

  /// Sets the parent, which this node does not own. A root throws KestrelException.
  virtual void SetParent(std::shared_ptr<NamespaceNode> parent) = 0;

  /// The parent; null when none was set, when it has been destroyed, and always for a root.
  virtual std::shared_ptr<NamespaceNode> GetParent() = 0;

  /// The node's name; empty until it is registered. The reference is valid as long as the node
  /// exists.
  const std::string& GetName() const;

  /// Sets the node's name; a parent still lists the node under its earlier name. Throws
  /// KestrelException and changes nothing if `name` is invalid. A valid name, such as `list`,
  /// `ipv4` or `fooBar`, consists of ASCII letters and digits, does not begin with an upper-case
  /// letter and has no two upper-case letters in a row.
  void SetName(const std::string& name);

  /// Sets the description, which listings and help show. Any string is accepted.
  void SetDescription(std::string description);

  /// Overload for a C string; null counts as the empty string.
  void SetDescription(const char* description);

  /// The description; empty until it is set. The reference is valid as long as the node exists.
  const std::string& GetDescription() const;

 protected:
  NamespaceNode();

 private:
  std::string name_;
  std::string description_;
  std::map<std::string, std::shared_ptr<NamespaceNode>> children_;
};

}  // namespace Kestrel::AutoCli
