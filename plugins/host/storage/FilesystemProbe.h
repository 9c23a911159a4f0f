// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "plugins/host/storage/FilesystemUsage.h"

namespace Kestrel::Host {

/// What came of asking one file system.
struct FilesystemAnswer {
  /// 0 with a valid usage, ETIMEDOUT when the file system kept silent, else the system's error.
  int error = 0;
  FilesystemUsage usage;
};

/// Asks the file system at each path how full it is and returns an answer for each, in their order.
///
/// A file system on a server that went away can hold up whoever asks it for ever, so that a child
/// process does the asking. One that is silent for a moment no longer holds up the others: a
/// further child goes on behind it. After `deadline` its answer is no longer awaited, so that the
/// call takes that long and a moment for each silent file system at most.
std::vector<FilesystemAnswer> ProbeFilesystems(const std::vector<std::string>& paths,
                                               std::chrono::milliseconds deadline);

}  // namespace Kestrel::Host
