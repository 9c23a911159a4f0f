// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Host {

/// The HMAC of a file: a checksum that only someone with the key can compute.
struct FileHmac {
  std::string digits;  ///< Lower-case hexadecimal digits.
  long fileSize = 0;   ///< In bytes.
};

/// Computes the HMAC of a regular file with SHA-256, SHA-384 or SHA-512; `bits` is 256, 384 or 512.
/// Throws KestrelException if `bits` is another number, if the file is not a regular file, or if it
/// cannot be read completely.
FileHmac ComputeFileHmac(const std::string& path, const std::string& key, long bits);

}  // namespace Kestrel::Host
