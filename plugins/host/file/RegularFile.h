// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "plugins/host/frame/FileDescriptor.h"

namespace Kestrel::Host {

/// Opens a regular file for reading; its path may have any length. Everything else may have no end,
/// such as a pipe. Throws KestrelException with the path and the reason.
FileDescriptor OpenRegularFile(const std::string& path);

/// Throws KestrelException: `path` cannot be read, for this reason.
[[noreturn]] void ThrowReadError(const std::string& path, const std::string& reason);

}  // namespace Kestrel::Host
