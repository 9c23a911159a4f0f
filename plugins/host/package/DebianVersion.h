// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Kestrel::Host {

/// Returns a number less than, equal to or greater than 0 if `left` is older than, equal to or
/// newer than `right`. Versions have dpkg's form "[epoch:]upstream[-revision]".
int CompareVersions(std::string_view left, std::string_view right);

}  // namespace Kestrel::Host
