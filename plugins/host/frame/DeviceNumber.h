// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace Kestrel::Host {

/// The number of a device in a text such as "8:1", its major and minor number; nothing for any
/// other text.
std::optional<dev_t> ParseDeviceNumber(std::string_view text);

/// The number of a device as a text such as "8:1".
std::string FormatDeviceNumber(dev_t device);

}  // namespace Kestrel::Host
