// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Kestrel::Testing {

/// Makes a system call (SYS_...) fail in this process with an error, or do nothing if the error is
/// 0. Only calls with that first argument are affected, or all if it is negative. This cannot be
/// undone, so it must be used only in the child processes of RunInNamespaces.
void Forbid(long call, long argument, unsigned error);

}  // namespace Kestrel::Testing
