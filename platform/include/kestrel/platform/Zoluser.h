// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <cstddef>

/// The host has a library for user-space access to its kernel. This header declares what Kestrel
/// uses of it, under the host's names.

extern "C" {

/// The result of an operation: 0 is success. The stand-in that platform/ has for the host's library
/// uses errno values for failures.
typedef int ZoluserStatus;

/// A file descriptor of the child, and the file descriptor of this process that it duplicates.
typedef struct ZoluserForkFd {
  int childFd;
  int parentFd;
} ZoluserForkFd;

/// Starts the program `path` in a child process and sets `childPid` to its process ID. `argv` and
/// `envp` end with a null; a null `envp` means the environment of this process. The child has the
/// `fdCount` file descriptors of `fdMap` and no others; SIGPIPE has its default action and no
/// signal is blocked. When the program cannot be executed, there is no child and a failure is
/// returned.
ZoluserStatus ZoluserCompat_ForkExec(const char* path, const char* const* argv,
                                     const char* const* envp, const ZoluserForkFd* fdMap,
                                     std::size_t fdCount, pid_t* childPid);

/// Returns the message for a status. The caller does not own it; it is valid until the next call.
const char* ZoluserStatus_CodeToString(ZoluserStatus status);
}
