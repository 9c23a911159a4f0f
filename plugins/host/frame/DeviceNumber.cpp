// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/DeviceNumber.h"

#include <sys/sysmacros.h>

#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {

std::optional<dev_t> ParseDeviceNumber(std::string_view text) {
  const auto numbers = Split(text, ':');
  const auto major = ParseNumber(numbers.front());
  const auto minor = ParseNumber(numbers.back());
  if (numbers.size() != 2 || !major || !minor) {
    return std::nullopt;
  }
  const dev_t device = makedev(static_cast<unsigned>(*major), static_cast<unsigned>(*minor));
  // A sign, a space, a leading zero or a number of more than 32 bits makes the strings differ.
  return FormatDeviceNumber(device) == text ? std::optional<dev_t>(device) : std::nullopt;
}

std::string FormatDeviceNumber(dev_t device) {
  return std::to_string(major(device)) + ":" + std::to_string(minor(device));
}

}  // namespace Kestrel::Host
