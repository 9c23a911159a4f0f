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

/// The loader's entry of a shared object.
struct link_map;

namespace Kestrel::Catalog {

enum class PluginKind { BuiltIn, SharedLibrary, Descriptor };

struct Plugin {
  /// The path that it was loaded by; for a built-in plug-in that of the library or the program.
  std::string path;
  /// The last component of the path; `kBuiltIn` for a built-in plug-in.
  std::string file;
  PluginKind kind = PluginKind::BuiltIn;
};

/// Determines the plug-in that a command comes from.
///
/// A dispatcher does not remember it, so the command itself has to show it:
/// - The class of a native command is in a shared object, which is the plug-in. A class with the
///   same name and default visibility in two plug-ins is one class to the loader; its commands then
///   count as those of the plug-in that was loaded first.
/// - A command of a descriptor has a class of the library; its plug-in is the descriptor that
///   declares its path. The descriptors are read again for that, once, when the first such command
///   is asked for. One that cannot be read any more declares nothing.
///
/// References and pointers that it returns live as long as the object does.
class PluginOrigins {
 public:
  explicit PluginOrigins(const AutoCli::Dispatcher& dispatcher);
  PluginOrigins(const PluginOrigins&) = delete;
  PluginOrigins& operator=(const PluginOrigins&) = delete;

  /// The registered plug-ins, in the order in which they were loaded.
  const std::vector<const Plugin*>& GetPlugins() const { return registered_; }

  /// The plug-in of the command at `path`, or null when that cannot be found out; null for a
  /// namespace of the library's class. It is none of `GetPlugins` when it failed after it had
  /// registered the command, or when the command's class is in a library that the plug-in uses.
  const Plugin* FindPlugin(const AutoCli::NamespaceNode& command, const std::string& path);

  /// The descriptors that declare the namespace at `path`.
  std::vector<const Plugin*> FindDescriptors(const std::string& path);

 private:
  const Plugin* FindOwner(const std::type_info& type);
  const Plugin* FindOwner(const link_map* object);
  void AddPlugin(const std::string& name);
  /// The library's built-in plug-in is the first. The program's come after it; the last of them
  /// counts as that of all the program's commands.
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
