// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace Kestrel::AutoCli {

/// Returns whether the first bytes of `text` are `prefix`. Every string starts with the empty one.
inline bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

}  // namespace Kestrel::AutoCli
