// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/vexil/LoadedPlugins.h"

#include <kestrel/autocli/NamespaceNode.h>
#include <kestrel/autocli/RootNamespace.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>

namespace Kestrel::Vexil {

using AutoCli::NamespaceNode;
using AutoCli::NodeType;
using Catalog::Plugin;
using Catalog::PluginOrigins;

namespace {

/// Counts the commands of each plug-in.
class CommandCount {
 public:
  explicit CommandCount(PluginOrigins& origins) : origins_(origins) {
    for (const Plugin* const plugin : origins.GetPlugins()) {
      counts_.push_back({plugin, 0});
    }
  }

  void AddBelow(NamespaceNode& node, const std::string& prefix) {
    for (const auto& child : node.GetNamespaceNodes()) {
      const std::string path = prefix + child->GetName();
      if (child->GetType() == NodeType::Command) {
        Add(origins_.FindPlugin(*child, path));
      } else {
        AddBelow(*child, path + " ");
      }
    }
  }

  struct Count {
    const Plugin* plugin;
    long commands;
  };

  const std::vector<Count>& GetCounts() const { return counts_; }

 private:
  void Add(const Plugin* plugin) {
    if (plugin == nullptr) {
      return;
    }
    const auto isOfPlugin = [plugin](const Count& count) { return count.plugin == plugin; };
    auto found = std::find_if(counts_.begin(), counts_.end(), isOfPlugin);
    if (found == counts_.end()) {
      found = counts_.insert(found, {plugin, 0});
    }
    ++found->commands;
  }

  PluginOrigins& origins_;
  std::vector<Count> counts_;
};

std::string AbsolutePath(const std::string& path) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.lexically_normal().string();
}

}  // namespace

std::vector<LoadedPlugin> FindLoadedPlugins(const AutoCli::Dispatcher& dispatcher) {
  PluginOrigins origins(dispatcher);
  CommandCount count(origins);
  count.AddBelow(*dispatcher.GetRootNamespace(), "");
  std::vector<LoadedPlugin> loaded;
  for (const auto& [plugin, commands] : count.GetCounts()) {
    loaded.push_back({*plugin, commands});
    loaded.back().plugin.path = AbsolutePath(plugin->path);
  }
  return loaded;
}

}  // namespace Kestrel::Vexil
