// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Kestrel::CallSpec {

/// A part of the library in a file of its own. It is loaded when it is first needed, because
/// loading the libraries that it links takes a large share of the tool's start time.
struct LibraryModule {
  const char* path;     ///< Relative to the folder of the library.
  const char* entry;    ///< The name of the only function that it exports.
  const char* purpose;  ///< What the module is for, in messages.
};

/// Returns the exported function of the module. The module remains loaded until the process ends.
///
/// Finds the module by the path of the library's own file, so an installed tree can be moved.
/// Throws KestrelException if the module cannot be loaded or has no such function.
void* LoadLibraryModule(const LibraryModule& module);

}  // namespace Kestrel::CallSpec
