// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <list>
#include <map>
#include <string>
#include <typeinfo>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/NamespaceNode.h"

/// The loader's entry for a shared object.
struct link_map;

namespace Kestrel::Catalog {

enum class PluginKind { BuiltIn, SharedLibrary, Descriptor };

struct Plugin {
  /// The path that it was loaded from; for a built-in plug-in, that of the library or the program.
  std::string path;
  /// The last component of the path; `kBuiltIn` for a built-in plug-in.
  std::string file;
  PluginKind kind = PluginKind::BuiltIn;
};

/// Determines the plug-in that a command comes from.
///
/// A dispatcher does not remember this, so it is derived from the command itself:
/// - The class of a native command is in a shared object, which is the plug-in. If two plug-ins
/// have classes of the same name with default visibility, the loader treats them as one class;
/// their commands are then attributed to the plug-in that was loaded first.
/// - A command from a descriptor has a class of the library. Its plug-in is the descriptor that
/// declares its path. All descriptors are read again for this, but only once: when the plug-in of
/// such a command, or the descriptors of a namespace, are first requested. A descriptor that can no
/// longer be read declares nothing.
///
/// Returned references and pointers are valid during the lifetime of the object.
class PluginOrigins {
 public:
  explicit PluginOrigins(const AutoCli::Dispatcher& dispatcher);
  PluginOrigins(const PluginOrigins&) = delete;
  PluginOrigins& operator=(const PluginOrigins&) = delete;

  /// The registered plug-ins, in the order in which they were loaded.
  const std::vector<const Plugin*>& GetPlugins() const { return registered_; }

  /// Returns the plug-in of the command at `path`; null if it cannot be determined, or if the node
  /// is an object of the class Namespace. The result is not one of `GetPlugins` if the plug-in
  /// failed after it had registered the command, or if the command's class is in a library that the
  /// plug-in uses.
  const Plugin* FindPlugin(const AutoCli::NamespaceNode& command, const std::string& path);

  /// Returns the descriptors that declare the namespace at `path`.
  std::vector<const Plugin*> FindDescriptors(const std::string& path);

 private:
  const Plugin* FindOwner(const std::type_info& type);
  const Plugin* FindOwner(const link_map* object);
  void AddPlugin(const std::string& name);
  /// Returns the first built-in plug-in, which is that of the library, if `isOfLibrary`; otherwise
  /// the last one, to which all commands of the program are attributed. Null if there is none.
  const Plugin* FindBuiltIn(bool isOfLibrary) const;
  void ReadDescriptors();

  std::list<Plugin> plugins_;
  std::vector<const Plugin*> registered_;
  std::vector<const Plugin*> builtIn_;
  const link_map* library_;
  std::map<const link_map*, const Plugin*> objects_;
  std::map<const std::type_info*, const Plugin*> types_;

  bool areDescriptorsRead_ = false;
  std::map<std::string, const Plugin*> commands_;
  std::multimap<std::string, const Plugin*> namespaces_;
};

}  // namespace Kestrel::Catalog
