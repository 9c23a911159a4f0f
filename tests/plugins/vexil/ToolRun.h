// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/VexilRun.h"

namespace Kestrel::Testing {

/// Returns the path of a shared object of the tests.
std::string GetModulePath(const std::string& name);

/// Returns a run of the tool that loads vexil.so and then `plugins`. `words` may begin with
/// dispatcher options.
VexilRun RunWith(const std::vector<std::string>& plugins, std::vector<std::string> words);

/// Runs the tool as in RunWith, and returns its output as JSON. Fails the test if the run fails.
nlohmann::json RunForJson(const std::vector<std::string>& plugins, std::vector<std::string> words);

}  // namespace Kestrel::Testing
