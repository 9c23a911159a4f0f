// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/PluginOrigins.h"

#include <dlfcn.h>
#include <link.h>

#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

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

/// Determines the kind from the same file name endings as the dispatcher.
PluginKind KindOf(const std::string& path) {
  if (EndsWith(path, ".so")) {
    return PluginKind::SharedLibrary;
  }
  return EndsWith(path, ".xml") ? PluginKind::Descriptor : PluginKind::BuiltIn;
}

std::string FileOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

/// Returns the shared object that was loaded from that path, or null.
const link_map* FindLoaded(const std::string& path) {
  const ObjectHandle handle(dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD));
  link_map* object = nullptr;
  if (handle != nullptr) {
    dlinfo(handle.get(), RTLD_DI_LINKMAP, &object);
  }
  return object;
}

/// Returns the object that contains the type information of a class, or null if the loader knows no
/// such object.
const link_map* FindObject(const std::type_info& type) {
  Dl_info info;
  void* object = nullptr;
  return dladdr1(&type, &info, &object, RTLD_DL_LINKMAP) != 0 ? static_cast<link_map*>(object)
                                                              : nullptr;
}

/// Whether the object is the program, which the loader lists with an empty name.
bool IsProgram(const link_map& object) { return *object.l_name == '\0'; }

std::string ProgramPath() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

/// Returns the path of an object. Null means the program.
std::string PathOf(const link_map* object) {
  return object == nullptr || IsProgram(*object) ? ProgramPath() : object->l_name;
}

}  // namespace

PluginOrigins::PluginOrigins(const AutoCli::Dispatcher& dispatcher) {
  const AutoCli::RootNamespace& root = *dispatcher.GetRootNamespace();
  library_ = FindObject(typeid(root));
  for (const std::string& name : dispatcher.GetPluginNames()) {
    AddPlugin(name);
  }
}

void PluginOrigins::AddPlugin(const std::string& name) {
  const PluginKind kind = KindOf(name);
  Plugin& plugin = plugins_.emplace_back(Plugin{name, FileOf(name), kind});
  registered_.push_back(&plugin);
  if (kind == PluginKind::BuiltIn) {
    plugin.path = builtIn_.empty() ? PathOf(library_) : ProgramPath();
    plugin.file = kBuiltIn;
    builtIn_.push_back(&plugin);
  } else if (kind == PluginKind::SharedLibrary) {
    objects_.try_emplace(FindLoaded(name), &plugin);
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
  if (object == nullptr) {
    return nullptr;
  }
  const auto known = objects_.find(object);
  if (known != objects_.end()) {
    return known->second;
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
