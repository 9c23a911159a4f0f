// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace Kestrel::Host {

/// Parses a device number given as major and minor number, as in "8:1". Returns nothing for
/// anything that FormatDeviceNumber does not return.
std::optional<dev_t> ParseDeviceNumber(std::string_view text);

/// Formats a device number as major and minor number, as in "8:1".
std::string FormatDeviceNumber(dev_t device);

}  // namespace Kestrel::Host
