// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Kestrel::Host {

/// Less than, equal to or greater than 0 as `left` is an older, the same or a newer version than
/// `right`. Versions are "[epoch:]upstream[-revision]", as the packages of dpkg have them.
int CompareVersions(std::string_view left, std::string_view right);

}  // namespace Kestrel::Host
