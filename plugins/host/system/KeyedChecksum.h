// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Host {

/// A checksum that only someone with the key can make: HMAC with SHA-2.
struct KeyedChecksum {
  std::string digits;  ///< In lower-case hexadecimal digits.
  long size = 0;       ///< Of the file in bytes.
};

/// The checksum of a regular file, with SHA-256, SHA-384 or SHA-512 as `bits` says.
/// Throws KestrelException when the file is none, or cannot be read to its end.
KeyedChecksum ChecksumFile(const std::string& path, const std::string& key, long bits);

}  // namespace Kestrel::Host
