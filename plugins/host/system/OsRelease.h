// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Kestrel::Host {

/// The value of `key` in a file of lines KEY=VALUE in the quoting of the shell, as os-release is;
/// the last one of several, empty when there is none.
std::string ParseOsRelease(std::string_view text, std::string_view key);

/// The name of the distribution with its version, from etc/os-release or usr/lib/os-release below
/// `root` (empty for the machine's own); empty when neither tells.
std::string ReadDistributionName(const std::string& root);

}  // namespace Kestrel::Host
