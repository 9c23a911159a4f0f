// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Kestrel::Testing {

/// Makes the system call `call` (SYS_...) fail in this process with `error`. If `error` is 0, the
/// call does nothing and succeeds. Only calls whose first argument is `argument` are affected; if
/// `argument` is negative, all calls are. The change cannot be undone, so this function must be
/// used only in child processes.
void Forbid(long call, long argument, unsigned error);

}  // namespace Kestrel::Testing
