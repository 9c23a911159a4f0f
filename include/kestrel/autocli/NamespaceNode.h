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

/// Holds the kinds of a tree node; a scope of its own, so that no enumerator hides a class.
struct NodeTypes {
  /// The kind of a node. The numbers are fixed.
  enum Value : std::int32_t {
    Root = 0,       ///< the root of a dispatcher's tree
    Namespace = 1,  ///< an inner node
    Command = 2     ///< a leaf that can be run
  };
};

/// What a node is: `NodeType::Root`, `NodeType::Namespace` or `NodeType::Command`.
using NodeType = NodeTypes::Value;

/// A node of the tree of names under which a dispatcher's commands are found.
///
/// Every node lives in a `std::shared_ptr` made by its class's `New`. A parent owns its children;
/// a child knows its parent only weakly. A node starts without name and parent and gets both by
/// being registered; it is never removed, and goes when the last owner of the tree goes. A
/// registered node can be registered again elsewhere: it then names the new parent, while the
/// earlier one keeps its entry. Nobody checks for circles: a namespace registered below itself
/// makes every path endless.
///
/// A class of a command or namespace must not derive from `std::enable_shared_from_this` again.
class KESTREL_API NamespaceNode : public std::enable_shared_from_this<NamespaceNode> {
 public:
  NamespaceNode(const NamespaceNode&) = delete;
  NamespaceNode& operator=(const NamespaceNode&) = delete;

  virtual ~NamespaceNode();

  /// This node with a share in its ownership.
  /// Throws `std::bad_weak_ptr` when no `std::shared_ptr` owns the node.
  virtual std::shared_ptr<NamespaceNode> GetThis() = 0;

  /// What kind of node this is.
  virtual NodeType GetType() = 0;

  /// The names from below the root down to this node; empty for the root.
  /// Throws KestrelException when this node or one above it has no parent (any more).
  virtual std::list<std::string> GetPath();

  /// The names of `GetPath`, joined with `separator`; empty for the root.
  /// Throws KestrelException when this node or one above it has no parent (any more).
  virtual std::string GetPathString(char separator);

  /// Whether a child stands under exactly `name`. Never throws.
  virtual bool HasNamespaceNode(const std::string& name);

  /// The names of the children in ascending byte order.
  virtual std::vector<std::string> GetNamespaceNodeNames();

  /// The children in ascending byte order of their names.
  virtual std::vector<std::shared_ptr<NamespaceNode>> GetNamespaceNodes();

  /// The child under exactly `name`, null when there is none. Throws on a command only, which
  /// cannot have children.
  virtual std::shared_ptr<NamespaceNode> GetNamespaceNode(const std::string& name);

  /// Makes `node` a child of this node under `name`, and gives it that name and this parent.
  /// Throws KestrelException, in this order of checks, when `name` is taken here, `node` is null,
  /// `name` breaks the name rule (see `SetName`), or `node` cannot have a parent. The children
  /// are unchanged then; in the last case `node` keeps the new name.
  virtual void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, std::string name);

  /// The same for a C string, by way of the operation above; null counts as the empty text.
  virtual void RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name);

  /// The node that the names in `path`, from below this node, lead to; null for an empty `path`.
  /// Throws KestrelException when a name leads nowhere. `path` is unchanged after a success; after
  /// a failure it lacks the names up to and with the one that led nowhere.
  virtual std::shared_ptr<NamespaceNode> ResolveNode(std::list<std::string>& path);

  /// The child under `name`, whatever its kind; when there is none, a new namespace without
  /// description, registered under `name`. Throws as `RegisterNamespaceNode` does.
  virtual std::shared_ptr<NamespaceNode> SubNamespace(const std::string& name);

  /// The dispatcher that owns the tree; not owned by the caller.
  /// Throws KestrelException when this node or one above it has no parent (any more).
  virtual Dispatcher* GetDispatcher() = 0;

  /// Makes `parent` this node's parent, in place of an earlier one; it is not kept alive.
  /// Throws KestrelException on a root.
  virtual void SetParent(std::shared_ptr<NamespaceNode> parent) = 0;

  /// The parent; null when none was set, when it is gone, and always for a root.
  virtual std::shared_ptr<NamespaceNode> GetParent() = 0;

  /// The node's own name; empty until it is registered. Lives as long as the node.
  const std::string& GetName() const;

  /// Sets the node's name. Throws KestrelException, and changes nothing, unless `name` is one or
  /// more runs of lower-case ASCII letters and digits, each followed by at most one upper-case
  /// letter (`list`, `ipv4`, `fooBar`). The key in a parent's table does not follow.
  void SetName(const std::string& name);

  /// Sets the text that listings and help show for this node; any text will do.
  void SetDescription(std::string description);

  /// The same for a C string; null counts as the empty text.
  void SetDescription(const char* description);

  /// The text that listings and help show; empty until set. Lives as long as the node.
  const std::string& GetDescription() const;

 protected:
  NamespaceNode();

 private:
  std::string name_;
  std::string description_;
  std::map<std::string, std::shared_ptr<NamespaceNode>> children_;
};

}  // namespace Kestrel::AutoCli
