// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/complete/TrustedFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

#include "autocli/plugins/TrustPolicy.h"

namespace Kestrel::Complete {

namespace {

bool IsTrusted(const struct stat& status) {
  return !AutoCli::FindDistrust(status, geteuid()).has_value();
}

bool IsTrustedFolder(const std::string& folder) {
  struct stat status = {};
  return stat(folder.c_str(), &status) == 0 && IsTrusted(status);
}

bool AreFoldersTrusted(std::string path) {
  while (true) {
    path.erase(path.rfind('/'));
    if (!IsTrustedFolder(path.empty() ? "/" : path)) {
      return false;
    }
    if (path.empty()) {
      return true;
    }
  }
}

struct Free {
  void operator()(char* text) const { std::free(text); }
};

}  // namespace

bool IsTrustedFile(const std::string& path) {
  if (path.empty() || path[0] != '/') {
    return false;
  }
  const std::unique_ptr<char, Free> real(realpath(path.c_str(), nullptr));
  struct stat status = {};
  return real != nullptr && stat(real.get(), &status) == 0 && S_ISREG(status.st_mode) &&
         IsTrusted(status) && AreFoldersTrusted(real.get());
}

}  // namespace Kestrel::Complete
