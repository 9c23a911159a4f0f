// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "callspec/LibraryModule.h"

#include <dlfcn.h>

#include <string>

#include "kestrel/KestrelException.h"

namespace Kestrel::CallSpec {
namespace {

/// Returns the folder that this library was loaded from, with a slash at the end.
std::string LibraryFolder() {
  Dl_info library = {};
  if (dladdr(reinterpret_cast<const void*>(&LoadLibraryModule), &library) == 0 ||
      library.dli_fname[0] != '/') {
    // A relative name is relative to the folder that was current when the library was loaded, and
    // only the dynamic loader still knows that folder.
    return "$ORIGIN/";
  }
  const std::string path(library.dli_fname);
  return path.substr(0, path.rfind('/') + 1);
}

}  // namespace

void* LoadLibraryModule(const LibraryModule& module) {
  const std::string path = LibraryFolder() + module.path;
  void* const loaded = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  void* const entry = loaded == nullptr ? nullptr : dlsym(loaded, module.entry);
  if (entry == nullptr) {
    throw KestrelException(std::string("Unable to load the part of the library for ") +
                           module.purpose + ": " + dlerror());
  }
  return entry;
}

}  // namespace Kestrel::CallSpec
