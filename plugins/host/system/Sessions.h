// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ctime>
#include <string>
#include <vector>

namespace Kestrel::Host {

/// Where the running system stores its login sessions.
extern const char* const kSessionRecords;
extern const char* const kSessionFolder;

/// A login session.
struct Session {
  std::string user;
  std::string terminal;  ///< Its path below /dev; empty if the session has none.
  std::string host;      ///< The remote host; empty for a local session.
  long process = 0;      ///< The process that leads the session.
  std::time_t start = 0;
};

/// Reads a file of login entries (utmp), in its order; empty if it cannot be read. With
/// `onlyAlive`, skips sessions whose process has ended.
std::vector<Session> ReadSessionRecords(const std::string& path, bool onlyAlive);

/// Reads a folder of session files, which replaces the login entries on some systems.
std::vector<Session> ReadSessionFolder(const std::string& path);

/// Returns the sessions of this machine, the oldest first.
std::vector<Session> ReadSessions();

}  // namespace Kestrel::Host
