// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/VexilRun.h"

namespace Kestrel::Testing {

/// The path of a shared object that the tests brought along.
inline std::string GetPluginPath(const std::string& name) {
  return KESTREL_TEST_PLUGIN_DIR "/" + name + ".so";
}

/// A run of the tool with the namespace "try" loaded; `options` are more dispatcher options.
inline VexilRun Try(std::vector<std::string> words, std::vector<std::string> options = {}) {
  std::vector<std::string> arguments = {"--plugin", GetPluginPath("TryPlugin")};
  arguments.insert(arguments.end(), options.begin(), options.end());
  arguments.insert(arguments.end(), words.begin(), words.end());
  return VexilRun(std::move(arguments));
}

}  // namespace Kestrel::Testing
