// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "vexil/CommandLine.h"

namespace Kestrel::Complete {

/// Loads the tool's own plug-in, those of the default folders, and of the options --plugin-dir and
/// --plugin those files that are trusted. A file that cannot be loaded is left out.
void LoadPlugins(AutoCli::Dispatcher& dispatcher, const std::vector<Vexil::TypedOption>& options);

}  // namespace Kestrel::Complete
