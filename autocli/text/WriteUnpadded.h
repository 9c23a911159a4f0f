// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ios>
#include <ostream>
#include <string_view>

namespace Kestrel::AutoCli {

/// Writes `text` to `out` in one piece. The stream's width, fill and locale do not apply.
inline void WriteUnpadded(std::ostream& out, std::string_view text) {
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace Kestrel::AutoCli
