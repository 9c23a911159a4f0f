// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/TestPlugins.h"

#include <dlfcn.h>

#include <filesystem>

namespace Kestrel::Testing {

std::string TestPluginPath(const std::string& name) {
  return std::string(KESTREL_TEST_PLUGIN_DIR) + "/" + name + ".so";
}

void CopyTestPlugin(const std::string& name, const std::string& path) {
  std::filesystem::copy_file(TestPluginPath(name), path);
}

bool IsLoaded(const std::string& path) {
  void* const handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (handle == nullptr) {
    return false;
  }
  dlclose(handle);
  return true;
}

}  // namespace Kestrel::Testing
