// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Complete {

/// Whether the file at an absolute path may be loaded while a user only types: only root and the
/// user can have written it. The file, with all links followed, belongs to one of them and only
/// its owner may write it; each folder above it belongs to one of them, and others may not write
/// it, or not remove what is not theirs. False for a relative path.
bool IsTrustedFile(const std::string& path);

}  // namespace Kestrel::Complete
