// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/Export.h"
#include "kestrel/autocli/Namespace.h"

/// The number of the interface between the library and its plug-ins: the classes of the public
/// headers, their members and the order of their virtual operations. It is the MAJOR of the
/// library's version and increases with every change after which plug-ins must be compiled again.
#define KESTREL_PLUGIN_ABI 1

#ifndef KESTREL_NOT_A_PLUGIN  // defined by sources that need only the number
extern "C" {
/// The number that a plug-in was compiled with, exported by every plug-in that includes this
/// header. The library refuses a plug-in whose number differs from its own, and accepts a plug-in
/// without a number.
///
/// Weak, because several files of a plug-in may include the header. An inline variable would be
/// unique in the process: all plug-ins would have the number of the first one.
extern KESTREL_API __attribute__((weak)) const unsigned AutoCli_PluginAbi;
// NOLINTNEXTLINE(misc-definitions-in-headers): it is weak
__attribute__((used)) const unsigned AutoCli_PluginAbi = KESTREL_PLUGIN_ABI;
}
#endif

/// The entry point of a shared-library plug-in. Every such plug-in defines it; the library does
/// not.
///
/// It is called once, after the plug-in has been opened. It must add the plug-in's namespaces and
/// commands below `root`, and must not keep `root` itself. When it throws KestrelException, the
/// plug-in fails to load, with that message and the path of the plug-in; what was registered before
/// stays. The entry point is exported even from a plug-in that is built with hidden visibility, if
/// its definition follows this declaration.
extern "C" KESTREL_API void AutoCli_RegisterNamespaces(
    std::shared_ptr<Kestrel::AutoCli::Namespace> root);
