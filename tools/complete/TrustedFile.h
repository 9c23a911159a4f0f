// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Complete {

/// Whether the file at an absolute path may be loaded while a user is only typing, because only
/// root and the user can have written it. This is so if the file, with all links followed, belongs
/// to one of them and only its owner may write it, and each folder above it belongs to one of them
/// and others may not write to it, or may not remove files of others from it. False for a relative
/// path.
bool IsTrustedFile(const std::string& path);

}  // namespace Kestrel::Complete
