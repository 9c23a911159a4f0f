// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// One message of the kernel's buffer.
struct KernelMessage {
  int level = 0;
  int facility = 0;
  std::int64_t microseconds = 0;  ///< since the machine started
  std::string text;
};

/// Where the kernel publishes its messages.
extern const char* const kKernelLog;

/// The word for a facility, as in syslog(3): kern, user, daemon and others; "unknown" for a number
/// that has none.
const char* FacilityName(int facility);

/// Parses a message in the kernel's form: "6,12,345678,-;text", where the first number is 8 times
/// the facility plus the level and the third one the time. Nothing for other strings.
std::optional<KernelMessage> ParseKernelMessage(std::string_view entry);

/// All messages, the oldest first. Throws KestrelException when they may not be read.
std::vector<KernelMessage> ReadKernelLog(const std::string& path = kKernelLog);

}  // namespace Kestrel::Host
