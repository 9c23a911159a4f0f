// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "plugins/host/storage/FilesystemUsage.h"

namespace Kestrel::Host {

/// The result of querying a file system.
struct FilesystemAnswer {
  /// 0 if `usage` is valid, ETIMEDOUT if the file system did not respond, EIO if the child process
  /// ended, otherwise the error number of the query.
  int error = 0;
  FilesystemUsage usage;
};

/// Queries the file system at each path and returns the results in the order of the paths.
///
/// A file system on an unreachable server can block the query without limit, so child processes do
/// the queries. If a child does not respond within a moment, another child continues with the next
/// file system. The call waits at most `deadline` for each result. These waits overlap, so the call
/// takes at most `deadline` plus a moment for each file system that is slow or does not respond.
/// Throws KestrelException if a child cannot be started.
std::vector<FilesystemAnswer> ProbeFilesystems(const std::vector<std::string>& paths,
                                               std::chrono::milliseconds deadline);

}  // namespace Kestrel::Host
