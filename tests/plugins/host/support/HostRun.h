// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "support/VexilRun.h"

namespace Kestrel::Testing {

/// Returns a run of the real tool with the host plug-in, on a screen of 80 columns unless the
/// arguments set another width. The caller starts the run.
inline VexilRun HostRun(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"--screen-width=80", "--plugin", KESTREL_HOST_PLUGIN});
  return VexilRun(std::move(arguments));
}

}  // namespace Kestrel::Testing
