// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// A message in the kernel's buffer.
struct KernelMessage {
  int level = 0;
  int facility = 0;
  std::int64_t microseconds = 0;  ///< since the machine started
  std::string text;
};

/// The file in which the kernel publishes its messages.
extern const char* const kKernelLog;

/// Returns the word for a facility, as in syslog(3): kern, user, daemon and so on; "unknown" for a
/// number without a word.
const char* FacilityName(int facility);

/// Parses a message in the kernel's form: "6,12,345678,-;text". The first number is 8 times the
/// facility plus the level; the third one is the time. Returns nothing for other strings.
std::optional<KernelMessage> ParseKernelMessage(std::string_view entry);

/// Returns all messages, the oldest first. Throws KestrelException if they cannot be read, for
/// example because this user may not, or if one has an unknown form.
std::vector<KernelMessage> ReadKernelLog(const std::string& path = kKernelLog);

}  // namespace Kestrel::Host
