// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Replaces statvfs with another function. For the paths in KESTREL_SILENT_PATHS it never returns,
// and for the paths in KESTREL_DEADLY_PATHS it ends the process. For other paths it calls statvfs
// of libc. Both variables contain lists of paths, separated by ":".

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
