// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Sessions.h"

#include <kestrel/KestrelException.h>
#include <signal.h>
#include <utmpx.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/system/OsRelease.h"

namespace Kestrel::Host {
namespace {

constexpr long kMicrosecond = 1000000;

// A string that fills its field has no final NUL.
template <std::size_t Size>
std::string TextOf(const char (&field)[Size]) {
  return std::string(field, ::strnlen(field, Size));
}

bool IsAlive(long process) {
  return process > 0 && (::kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM);
}

Session MakeSession(const utmpx& entry) {
  Session session;
  session.user = TextOf(entry.ut_user);
  session.terminal = TextOf(entry.ut_line);
  session.host = TextOf(entry.ut_host);
  session.process = entry.ut_pid;
  session.start = entry.ut_tv.tv_sec;
  return session;
}

Session ParseSession(std::string_view text) {
  Session session;
  session.user = ParseOsRelease(text, "USER");
  session.terminal = ParseOsRelease(text, "TTY");
  session.host = ParseOsRelease(text, "REMOTE_HOST");
  session.process = ParseNumber(ParseOsRelease(text, "LEADER")).value_or(0);
  session.start = ParseNumber(ParseOsRelease(text, "REALTIME")).value_or(0) / kMicrosecond;
  return session;
}

// Returns the sessions whose process is alive. Other entries may remain from the time before the
// machine lost power.
std::vector<Session> AliveSessions(std::string_view records) {
  auto sessions = ParseSessionRecords(records);
  sessions.erase(std::remove_if(sessions.begin(), sessions.end(),
                                [](const Session& session) { return !IsAlive(session.process); }),
                 sessions.end());
  return sessions;
}

}  // namespace

std::vector<Session> ParseSessionRecords(std::string_view records) {
  if (records.size() % sizeof(utmpx) != 0) {
    throw KestrelException("Unable to understand the login entries: the last one is incomplete");
  }
  std::vector<Session> sessions;
  for (; !records.empty(); records.remove_prefix(sizeof(utmpx))) {
    utmpx entry = {};
    std::memcpy(&entry, records.data(), sizeof(entry));
    if (entry.ut_type == USER_PROCESS && entry.ut_user[0] != '\0') {
      sessions.push_back(MakeSession(entry));
    }
  }
  return sessions;
}

std::vector<Session> ReadSessionFolder(const std::string& path) {
  std::vector<Session> sessions;
  for (const std::string& name : ListOptionalFolder(path).value_or(std::vector<std::string>())) {
    // The folder may also contain a pipe for a session, as in "1.ref".
    if (name.find('.') != std::string::npos) {
      continue;
    }
    const auto text = ReadOptionalFile(path + "/" + name);
    if (!text || ParseOsRelease(*text, "CLASS") != "user") {
      continue;
    }
    Session session = ParseSession(*text);
    if (!session.user.empty()) {
      sessions.push_back(std::move(session));
    }
  }
  return sessions;
}

std::vector<Session> ReadSessions(const std::string& root) {
  const auto records = ReadOptionalFile(root + "/run/utmp");
  auto sessions =
      records ? AliveSessions(*records) : ReadSessionFolder(root + "/run/systemd/sessions");
  std::stable_sort(sessions.begin(), sessions.end(), [](const Session& left, const Session& right) {
    return left.start < right.start;
  });
  return sessions;
}

}  // namespace Kestrel::Host
