// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Kestrel::Testing {

/// The names and contents of files; a name may contain folders.
using Files = std::vector<std::pair<std::string, std::string>>;

/// Runs `body` in a child process whose /etc contains only these files. Returns an empty string. If
/// this machine does not allow that, does not run `body` and returns the reason.
std::string RunWithEtc(const Files& files, const std::function<void()>& body);

}  // namespace Kestrel::Testing
