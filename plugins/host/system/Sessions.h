// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <ctime>
#include <string>
#include <vector>

namespace Kestrel::Host {

/// Where a running system notes who is logged in.
extern const char* const kSessionRecords;
extern const char* const kSessionFolder;

/// One person's session.
struct Session {
  std::string user;
  std::string terminal;  ///< Below /dev; empty for a session without one.
  std::string host;      ///< From where; empty for the machine itself.
  long process = 0;      ///< That leads the session.
  std::time_t start = 0;
};

/// The sessions in a file of login records (utmp), in its order; none when it cannot be read.
/// With `onlyAlive`, those whose process is gone are left out.
std::vector<Session> ReadSessionRecords(const std::string& path, bool onlyAlive);

/// The sessions in a folder of session files, which systems keep that have no login records.
std::vector<Session> ReadSessionFolder(const std::string& path);

/// The sessions of this machine, ascending by start.
std::vector<Session> ReadSessions();

}  // namespace Kestrel::Host
