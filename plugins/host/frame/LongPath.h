// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "plugins/host/frame/FileDescriptor.h"

namespace Kestrel::Host {

/// Opens a file for reading with these flags and O_CLOEXEC, like open(2) but without the system's
/// limit on the length of a path. If the file cannot be opened, the result owns no file descriptor
/// and `errno` is set.
FileDescriptor OpenPath(const std::string& path, int flags);

}  // namespace Kestrel::Host
