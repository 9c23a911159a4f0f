// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Host {

/// The HMAC of a file: a checksum that nobody can compute without the key.
struct FileHmac {
  std::string digits;  ///< In lower-case hexadecimal digits.
  long fileSize = 0;   ///< In bytes.
};

/// The HMAC of a regular file with SHA-256, SHA-384 or SHA-512, chosen by `bits`.
/// Throws KestrelException when `path` is no regular file or cannot be read to its end.
FileHmac ComputeFileHmac(const std::string& path, const std::string& key, long bits);

}  // namespace Kestrel::Host
