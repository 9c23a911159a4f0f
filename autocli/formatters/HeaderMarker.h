// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Kestrel::AutoCli {

/// The field that a header text names between two '%': of the last pair that has at least one byte
/// between. That is what the group of ".*%(.+)%.*" captures. Empty when there is no such pair.
std::string_view FindHeaderMarker(std::string_view header);

}  // namespace Kestrel::AutoCli
