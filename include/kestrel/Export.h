// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// Marks what the shared library offers to programs and plug-ins; all else stays hidden in it.
#define KESTREL_API __attribute__((visibility("default")))
