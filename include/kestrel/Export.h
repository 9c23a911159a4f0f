// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// Marks what the shared library exports to programs and plug-ins; everything else is hidden.
#define KESTREL_API __attribute__((visibility("default")))
