// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Complete {

/// Whether the file at an absolute path may be loaded while a user is only typing, because only
/// root and the user can have written it. After all links are followed, root or the user must own
/// the file and each folder above it. Only the owner may write to the file. A folder may be
/// writable for others only if it is sticky. False for a relative path.
bool IsTrustedFile(const std::string& path);

}  // namespace Kestrel::Complete
