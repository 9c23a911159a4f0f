// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace Kestrel::Host {

/// Parses the number of a device as major and minor number, as in "8:1". Returns nothing for
/// anything else.
std::optional<dev_t> ParseDeviceNumber(std::string_view text);

/// Formats the number of a device in the same way.
std::string FormatDeviceNumber(dev_t device);

}  // namespace Kestrel::Host
