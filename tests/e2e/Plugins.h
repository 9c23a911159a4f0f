// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/TestPlugins.h"
#include "support/VexilRun.h"

namespace Kestrel::Testing {

/// Makes a run of the tool that loads TryPlugin, whose commands are in the namespace "try".
/// `options` are further dispatcher options.
inline VexilRun Try(std::vector<std::string> words, std::vector<std::string> options = {}) {
  std::vector<std::string> arguments = {"--plugin", TestPluginPath("TryPlugin")};
  arguments.insert(arguments.end(), options.begin(), options.end());
  arguments.insert(arguments.end(), words.begin(), words.end());
  return VexilRun(std::move(arguments));
}

}  // namespace Kestrel::Testing
