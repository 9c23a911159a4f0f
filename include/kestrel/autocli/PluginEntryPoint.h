// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/autocli/Namespace.h"

/// The entry point of a shared-library plug-in. Every such plug-in defines it; the library does
/// not.
///
/// It is called once, after the plug-in was opened. It must add the plug-in's namespaces and
/// commands below `root`, and must not keep `root` itself. When it throws KestrelException, the
/// message is reported with the path of the plug-in, and what it registered before stays. A plug-in
/// that includes this header exports its definition even if it is built with hidden visibility.
extern "C" KESTREL_API void AutoCli_RegisterNamespaces(
    std::shared_ptr<Kestrel::AutoCli::Namespace> root);
