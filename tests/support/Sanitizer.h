// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Kestrel::Testing {

/// Whether the address sanitizer is on. It uses descriptors, files in /proc and memory of its own,
/// so a test can then neither close nor measure them.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

}  // namespace Kestrel::Testing
