// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/vexil/ToolRun.h"

#include <gtest/gtest.h>

#include <utility>

namespace Kestrel::Testing {

std::string GetModulePath(const std::string& name) {
  return KESTREL_TEST_PLUGIN_DIR "/" + name + ".so";
}

VexilRun RunWith(const std::vector<std::string>& plugins, std::vector<std::string> words) {
  std::vector<std::string> arguments = {"--plugin", KESTREL_VEXIL_PLUGIN};
  for (const std::string& plugin : plugins) {
    arguments.insert(arguments.end(), {"--plugin", plugin});
  }
  arguments.insert(arguments.end(), words.begin(), words.end());
  return VexilRun(std::move(arguments));
}

nlohmann::json RunForJson(const std::vector<std::string>& plugins, std::vector<std::string> words) {
  words.insert(words.begin(), {"--formatter", "json"});
  const VexilResult result = RunWith(plugins, std::move(words)).Run();
  EXPECT_EQ("", result.err);
  EXPECT_EQ(0, result.status);
  return nlohmann::json::parse(result.out, nullptr, false);
}

}  // namespace Kestrel::Testing
