// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/PluginOrigins.h"

#include <dlfcn.h>
#include <link.h>

#include <memory>
#include <string_view>

#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/autocli/RootNamespace.h"
#include "tools/catalog/Catalog.h"
#include "tools/catalog/DescriptorPaths.h"

namespace Kestrel::Catalog {

namespace {

struct CloseObject {
  void operator()(void* handle) const { dlclose(handle); }
};

using ObjectHandle = std::unique_ptr<void, CloseObject>;

bool EndsWith(std::string_view text, std::string_view ending) {
  return text.size() > ending.size() && text.substr(text.size() - ending.size()) == ending;
}

/// By the same endings as the dispatcher's.
PluginKind KindOf(const std::string& path) {
  if (EndsWith(path, ".so")) {
    return PluginKind::SharedLibrary;
  }
  return EndsWith(path, ".xml") ? PluginKind::Descriptor : PluginKind::BuiltIn;
}

std::string FileOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

Plugin MakePlugin(const std::string& path) {
  const PluginKind kind = KindOf(path);
  return {path, kind == PluginKind::BuiltIn ? kBuiltIn : FileOf(path), kind};
}

/// The object of a plug-in that is in memory; null when there is none by its path.
const link_map* FindLoaded(const Plugin& plugin) {
  link_map* object = nullptr;
  if (plugin.kind != PluginKind::SharedLibrary) {
    return object;
  }
  const ObjectHandle handle(dlopen(plugin.path.c_str(), RTLD_LAZY | RTLD_NOLOAD));
  if (handle != nullptr) {
    dlinfo(handle.get(), RTLD_DI_LINKMAP, &object);
  }
  return object;
}

/// The object that the description of a class is in; null when the loader does not know it.
const link_map* FindObject(const std::type_info& type) {
  Dl_info info;
  void* object = nullptr;
  return dladdr1(&type, &info, &object, RTLD_DL_LINKMAP) != 0 ? static_cast<link_map*>(object)
                                                              : nullptr;
}

/// The loader knows the program by an empty name.
bool IsProgram(const link_map& object) { return *object.l_name == '\0'; }

}  // namespace

PluginOrigins::PluginOrigins(const AutoCli::Dispatcher& dispatcher) {
  const AutoCli::RootNamespace& root = *dispatcher.GetRootNamespace();
  library_ = FindObject(typeid(root));
  for (const std::string& name : dispatcher.GetPluginNames()) {
    const Plugin* const plugin = &plugins_.emplace_back(MakePlugin(name));
    registered_.push_back(plugin);
    if (plugin->kind == PluginKind::BuiltIn) {
      builtIn_.push_back(plugin);
    } else if (const link_map* const object = FindLoaded(*plugin)) {
      objects_.try_emplace(object, plugin);
    }
  }
}

const Plugin* PluginOrigins::FindPlugin(const AutoCli::NamespaceNode& command,
                                        const std::string& path) {
  const std::type_info& type = typeid(command);
  if (type == typeid(AutoCli::Namespace)) {
    return nullptr;
  }
  if (type != typeid(AutoCli::ExtensionCommand)) {
    return FindOwner(type);
  }
  ReadDescriptors();
  const auto found = commands_.find(path);
  return found == commands_.end() ? nullptr : found->second;
}

std::vector<const Plugin*> PluginOrigins::FindDescriptors(const std::string& path) {
  ReadDescriptors();
  std::vector<const Plugin*> found;
  const auto range = namespaces_.equal_range(path);
  for (auto entry = range.first; entry != range.second; ++entry) {
    found.push_back(entry->second);
  }
  return found;
}

const Plugin* PluginOrigins::FindOwner(const std::type_info& type) {
  const auto [entry, isNew] = types_.try_emplace(&type, nullptr);
  if (isNew) {
    entry->second = FindOwner(FindObject(type));
  }
  return entry->second;
}

const Plugin* PluginOrigins::FindOwner(const link_map* object) {
  const auto known = objects_.find(object);
  if (known != objects_.end()) {
    return known->second;
  }
  if (object == nullptr) {
    return nullptr;
  }
  if (IsProgram(*object) || object == library_) {
    return FindBuiltIn(object == library_);
  }
  const std::string path = object->l_name;
  return objects_[object] =
             &plugins_.emplace_back(Plugin{path, FileOf(path), PluginKind::SharedLibrary});
}

const Plugin* PluginOrigins::FindBuiltIn(bool isOfLibrary) const {
  if (builtIn_.empty()) {
    return nullptr;
  }
  return isOfLibrary ? builtIn_.front() : builtIn_.back();
}

void PluginOrigins::ReadDescriptors() {
  if (areDescriptorsRead_) {
    return;
  }
  areDescriptorsRead_ = true;
  for (const Plugin* const plugin : registered_) {
    if (plugin->kind != PluginKind::Descriptor) {
      continue;
    }
    const DescriptorPaths paths = ReadDescriptorPaths(plugin->path);
    for (const std::string& path : paths.commands) {
      commands_.try_emplace(path, plugin);
    }
    for (const std::string& path : paths.namespaces) {
      namespaces_.emplace(path, plugin);
    }
  }
}

}  // namespace Kestrel::Catalog
