// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Kestrel::Host {

/// Returns the value of `key` from lines of the form KEY=VALUE, quoted as in the shell. If several
/// lines have the key, the last one is used. The result is empty if there is none.
std::string ParseOsRelease(std::string_view text, std::string_view key);

/// Returns the name and version of the distribution from /etc/os-release or, if that file does not
/// exist, from /usr/lib/os-release. `root` precedes these paths. Empty if neither file exists or
/// the file contains no name. Throws KestrelException if the file exists but cannot be read.
std::string ReadDistributionName(const std::string& root);

}  // namespace Kestrel::Host
