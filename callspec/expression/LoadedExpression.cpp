// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Used by the library. Loads the module with Boost.Regex when the first expression is compiled.

#include <dlfcn.h>

#include "callspec/Expression.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::CallSpec {
namespace {

using Compiler = const Expression*(const std::string&);

/// Returns the folder that this library was loaded from, with a slash at the end.
std::string LibraryFolder() {
  Dl_info library = {};
  if (dladdr(reinterpret_cast<const void*>(&CompileExpression), &library) == 0 ||
      library.dli_fname[0] != '/') {
    // A relative name is relative to the folder that was current when the library was loaded, and
    // only the loader still knows that folder.
    return "$ORIGIN/";
  }
  const std::string path(library.dli_fname);
  return path.substr(0, path.rfind('/') + 1);
}

/// The module remains loaded until the process ends, because expressions point into it.
Compiler* LoadCompiler() {
  const std::string path = LibraryFolder() + KESTREL_EXPRESSION_MODULE;
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  void* const entry = module == nullptr ? nullptr : dlsym(module, "Kestrel_CompileExpression");
  if (entry == nullptr) {
    throw KestrelException(std::string("Unable to load the part of the library for expressions: ") +
                           dlerror());
  }
  return reinterpret_cast<Compiler*>(entry);
}

}  // namespace

std::unique_ptr<const Expression> CompileExpression(const std::string& text) {
  static Compiler* const compile = LoadCompiler();
  return std::unique_ptr<const Expression>(compile(text));
}

}  // namespace Kestrel::CallSpec
