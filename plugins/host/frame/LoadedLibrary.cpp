// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/LoadedLibrary.h"

#include <dlfcn.h>
#include <kestrel/KestrelException.h>

#include <string>

namespace Kestrel::Host {
namespace {

[[noreturn]] void ThrowLoaderError() {
  const char* const reason = ::dlerror();
  throw KestrelException(std::string("Unable to load a library: ") +
                         (reason == nullptr ? "unknown reason" : reason));
}

}  // namespace

LoadedLibrary::LoadedLibrary(const char* name)
    : handle_(::dlopen(name, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)) {
  if (handle_ == nullptr) {
    ThrowLoaderError();
  }
}

void* LoadedLibrary::FindAddress(const char* symbol) const {
  void* const address = ::dlsym(handle_, symbol);
  if (address == nullptr) {
    ThrowLoaderError();
  }
  return address;
}

}  // namespace Kestrel::Host
