// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// A login session.
struct Session {
  std::string user;
  std::string terminal;  ///< Its path below /dev; empty if the session has none.
  std::string host;      ///< The remote host; empty for a local session.
  long process = 0;      ///< The process that leads the session.
  std::time_t start = 0;
};

/// Returns the sessions of users in the content of a file of login entries (utmp), in its order.
/// Throws KestrelException if it ends within an entry.
std::vector<Session> ParseSessionRecords(std::string_view records);

/// Returns the sessions of users in a folder of session files, which replaces the login entries on
/// some systems; none if there is no such folder. Throws KestrelException if it or a file in it
/// cannot be read.
std::vector<Session> ReadSessionFolder(const std::string& path);

/// Returns the sessions, the oldest first: those in the file of login entries below `root` whose
/// process is alive or, without that file, all in the folder of session files. Empty if there is
/// neither. Throws KestrelException if they exist but cannot be read.
std::vector<Session> ReadSessions(const std::string& root);

}  // namespace Kestrel::Host
