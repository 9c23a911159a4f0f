// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "plugins/host/frame/FileDescriptor.h"

namespace Kestrel::Host {

/// Opens a regular file for reading; its path may have any length. Throws KestrelException with the
/// path and the reason if that fails, or if anything else is there, such as a pipe, whose data may
/// have no end.
FileDescriptor OpenRegularFile(const std::string& path);

/// Throws KestrelException, saying that `path` cannot be read for this reason.
[[noreturn]] void ThrowReadError(const std::string& path, const std::string& reason);

}  // namespace Kestrel::Host
