// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/VexilRun.h"

namespace Kestrel::Testing {

/// The path of a shared object of the tests.
std::string GetModulePath(const std::string& name);

/// A run of the tool with vexil.so and then `plugins` loaded; `words` may begin with dispatcher
/// options.
VexilRun RunWith(const std::vector<std::string>& plugins, std::vector<std::string> words);

/// What such a run prints as JSON; the test fails if the run does.
nlohmann::json RunForJson(const std::vector<std::string>& plugins, std::vector<std::string> words);

}  // namespace Kestrel::Testing
