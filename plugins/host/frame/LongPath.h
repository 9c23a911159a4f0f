// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "plugins/host/frame/FileDescriptor.h"

namespace Kestrel::Host {

/// open(2) for reading, with these flags and O_CLOEXEC, but without the system's limit for the
/// length of a path. Owns no descriptor, with `errno` set, if the file cannot be opened.
FileDescriptor OpenPath(const std::string& path, int flags);

}  // namespace Kestrel::Host
