// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Kestrel::Testing {

/// Makes a system call (SYS_...) with that first argument, or with any if it is negative, fail in
/// this process with an error, or do nothing if the error is 0. Cannot be undone, so it is for the
/// child processes of RunInNamespaces.
void Forbid(long call, long argument, unsigned error);

}  // namespace Kestrel::Testing
