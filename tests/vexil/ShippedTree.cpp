// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/ShippedTree.h"

#include <filesystem>

namespace Kestrel::Testing {

// The names of the descriptors come from the source tree, because other files in the build tree may
// be left from an earlier build.
std::vector<std::string> ListShippedPlugins() {
  std::vector<std::string> plugins = {KESTREL_HOST_PLUGIN, KESTREL_VEXIL_PLUGIN};
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(KESTREL_DESCRIPTOR_SOURCE_DIR)) {
    const std::filesystem::path name = entry.path().filename();
    if (name.extension() == ".in" && name.stem().extension() == ".xml") {
      plugins.push_back(KESTREL_DESCRIPTOR_DIR "/" + name.stem().string());
    }
  }
  return plugins;
}

void LoadShippedTree(AutoCli::Dispatcher& dispatcher) {
  for (const std::string& plugin : ListShippedPlugins()) {
    dispatcher.AddPlugin(plugin);
  }
}

}  // namespace Kestrel::Testing
