// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "vexil/CommandLine.h"

namespace Kestrel::Complete {

/// Loads the tool's own plug-in, those in the default folders, and the trusted files among those
/// that the options --plugin-dir and --plugin specify. Skips files that cannot be loaded.
void LoadPlugins(AutoCli::Dispatcher& dispatcher, const std::vector<Vexil::TypedOption>& options);

}  // namespace Kestrel::Complete
