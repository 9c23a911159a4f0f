// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/stat.h>

#include <cstdlib>
#include <string>

#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Testing {

/// A script that replaces a tool of the host during the lifetime of this object.
class MadeUpTool {
 public:
  MadeUpTool(const std::string& name, const std::string& script)
      : path_("PATH", folder_.GetPath() + ":" + std::getenv("PATH")) {
    ::chmod(folder_.Write(name, "#!/bin/sh\n" + script).c_str(), 0755);
  }

 private:
  ScopedTempDir folder_;
  ScopedEnvironment path_;
};

}  // namespace Kestrel::Testing
