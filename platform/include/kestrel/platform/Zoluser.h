// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <cstddef>

/// What the host kernel's user library offers to this one, under the host's own names.

extern "C" {

/// How an operation went: 0 is success; of other values the stand-in uses those of errno.
typedef int ZoluserStatus;

/// A descriptor of the child, and the one of this process that it is made a copy of.
typedef struct ZoluserForkFd {
  int childFd;
  int parentFd;
} ZoluserForkFd;

/// Starts the program `path` with `argv` and `envp`, both ended by null, in a child process, whose
/// number goes to `childPid`. A null `envp` stands for the environment of this process. The child
/// has the `fdCount` descriptors of `fdMap` and no other, SIGPIPE at its default and no signal
/// blocked. A program that cannot be executed is reported here, and there is no child then.
ZoluserStatus ZoluserCompat_ForkExec(const char* path, const char* const* argv,
                                     const char* const* envp, const ZoluserForkFd* fdMap,
                                     std::size_t fdCount, pid_t* childPid);

/// The text of a status. Not owned by the caller; lives until the next call.
const char* ZoluserStatus_CodeToString(ZoluserStatus status);
}
