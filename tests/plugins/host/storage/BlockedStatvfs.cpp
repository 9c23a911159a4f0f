// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Replaces statvfs by a function that never returns for the paths in KESTREL_SILENT_PATHS and ends
// the process for those in KESTREL_DEADLY_PATHS, two lists separated by ":". For other paths it
// calls the function of libc.

#include <dlfcn.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace {

bool Lists(const char* variable, const char* path) {
  const char* const paths = std::getenv(variable);
  return paths != nullptr &&
         (std::string(":") + paths + ":").find(std::string(":") + path + ":") != std::string::npos;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int statvfs(const char* path,
                                                              struct statvfs* usage) noexcept {
  if (Lists("KESTREL_DEADLY_PATHS", path)) {
    std::raise(SIGKILL);
  }
  while (Lists("KESTREL_SILENT_PATHS", path)) {
    ::pause();
  }
  using Function = int (*)(const char*, struct statvfs*);
  static const auto next = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "statvfs"));
  return next(path, usage);
}
