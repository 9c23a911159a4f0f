// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::Host {

/// The checksum of a file.
struct FileDigest {
  std::string digits;  ///< Lower-case hexadecimal digits.
  long fileSize = 0;   ///< In bytes.
};

/// Computes the checksum of a regular file; `algorithm` is md5, sha1, sha224, sha256, sha384 or
/// sha512. If `key` is not null, the checksum is the HMAC, which only someone with the key can
/// compute. Throws KestrelException for any other algorithm, if the file is not a regular file, or
/// if it cannot be read completely.
FileDigest ComputeFileDigest(const std::string& path, const std::string& algorithm,
                             const std::string* key);

}  // namespace Kestrel::Host
