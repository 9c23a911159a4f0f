// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Kestrel::AutoCli {

/// Returns what is between the last '%' of `header` and the nearest '%' before it that is not
/// adjacent: what the group of ".*%(.+)%.*" matches. Empty if there is none.
std::string_view FindHeaderMarker(std::string_view header);

}  // namespace Kestrel::AutoCli
