// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "plugins/host/log/LocalZone.h"

namespace Kestrel::Host {

/// Lists examples of what `ParseSince` accepts, for messages.
extern const char* const kSinceForms;

/// Parses the time of the first line that the user wants to see, and returns it in seconds since
/// the epoch. `text` is "today" or "yesterday" (meaning midnight), "now", a span before `now` such
/// as "-2h" or "-3 days", or a date with or without a time of day and an offset. Words may be in
/// upper or lower case. Returns nothing for other strings, and for dates and times that do not
/// exist.
std::optional<std::int64_t> ParseSince(std::string_view text, const LocalZone& zone,
                                       std::int64_t now);

}  // namespace Kestrel::Host
