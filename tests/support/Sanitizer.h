// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Kestrel::Testing {

/// Whether the program watches its own memory. What it needs for that, descriptors, the files in
/// /proc and memory that it keeps, a test can then neither take away nor measure.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool kIsSanitized = true;
#else
inline constexpr bool kIsSanitized = false;
#endif

}  // namespace Kestrel::Testing
