// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/autocli/Namespace.h"

/// The entry point that every shared-library plug-in defines; the library itself does not.
///
/// Called once, after the plug-in was opened. It adds its namespaces and commands below `root` and
/// must not keep `root` itself. A KestrelException that it throws is reported with the plug-in's
/// path, and what it registered before stays. Included by a plug-in, this header makes the
/// definition visible to the loader also where everything else is built hidden.
extern "C" KESTREL_API void AutoCli_RegisterNamespaces(
    std::shared_ptr<Kestrel::AutoCli::Namespace> root);
