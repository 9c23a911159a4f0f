// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/file/RegularFile.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "plugins/host/frame/LongPath.h"
#include "plugins/host/frame/SanitizedText.h"

namespace Kestrel::Host {

FileDescriptor OpenRegularFile(const std::string& path) {
  // O_NONBLOCK, because opening a named pipe otherwise waits for its other end.
  FileDescriptor file = OpenPath(path, O_NOCTTY | O_NONBLOCK);
  struct stat status = {};
  if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
    ThrowReadError(path, std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    ThrowReadError(path, "Not a regular file");
  }
  return file;
}

void ThrowReadError(const std::string& path, const std::string& reason) {
  throw KestrelException("Unable to read " + SanitizedText(path)->GetValue() + ": " + reason);
}

}  // namespace Kestrel::Host
