// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The minimum cost of loading plug-ins: opens each file, looks up its entry point and calls it.

#include <dlfcn.h>

#include <memory>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"

int main(int argc, char** argv) {
  using EntryPoint = void (*)(std::shared_ptr<Kestrel::AutoCli::Namespace>);
  Kestrel::AutoCli::Dispatcher dispatcher;
  for (int i = 1; i < argc; ++i) {
    void* const handle = dlopen(argv[i], RTLD_LAZY | RTLD_GLOBAL);
    if (handle == nullptr) {
      return 1;
    }
    void* const symbol = dlsym(handle, "AutoCli_RegisterNamespaces");
    if (symbol == nullptr) {
      return 1;
    }
    reinterpret_cast<EntryPoint>(symbol)(dispatcher.GetRootNamespace());
  }
  _Exit(0);
}
