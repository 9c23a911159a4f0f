// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/InitScripts.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <set>
#include <system_error>
#include <utility>

#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr std::string_view kSummary = "# Short-Description:";
// The folders with links to the scripts that are started at boot. Omits rc1.d, which is for
// single-user mode.
constexpr const char* kStartFolders[] = {"/../rcS.d", "/../rc2.d", "/../rc3.d", "/../rc4.d",
                                         "/../rc5.d"};
// The size of the prefix in "S01name".
constexpr std::size_t kOrderSize = 3;

bool IsScript(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::access(path.c_str(), R_OK | X_OK) == 0;
}

// Throws if the folder exists but cannot be read.
void RequireReadableFolder(const std::string& folder) {
  const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!opened.IsOpen() && errno != ENOENT) {
    throw KestrelException("Unable to read " + folder + ": " +
                           std::generic_category().message(errno));
  }
}

// dpkg leaves old or new versions of a changed script in the same folder.
bool IsLeftOver(const std::string& name) {
  return name.find(".dpkg-") != std::string::npos || name[0] == '.';
}

std::string Describe(const std::string& script) {
  for (const std::string_view line : SplitLines(script)) {
    if (StartsWith(line, kSummary)) {
      return std::string(Trim(line.substr(kSummary.size())));
    }
  }
  return {};
}

std::string ToState(const ProgramResult& result) {
  if (result.isTimedOut) {
    return "unknown";
  }
  switch (result.status) {
    case 0:
      return "running";
    case 1:  // the service ended and left its PID file
    case 2:  // the service ended and left its lock file
      return "failed";
    case 3:
      return "stopped";
    default:
      return "unknown";
  }
}

std::set<std::string> ReadStartLinks(const std::string& scripts) {
  std::set<std::string> names;
  for (const char* const folder : kStartFolders) {
    for (const std::string& link : ListFolder(scripts + folder)) {
      if (link.size() > kOrderSize && link[0] == 'S') {
        names.insert(link.substr(kOrderSize));
      }
    }
  }
  return names;
}

}  // namespace

const char* const kInitScripts = "init.d";

InitScripts::InitScripts(std::string folder, std::chrono::milliseconds limit)
    : folder_(std::move(folder)), limit_(limit) {}

std::vector<Service> InitScripts::Read() const {
  RequireReadableFolder(folder_);
  const std::set<std::string> started = ReadStartLinks(folder_);
  std::vector<Service> services;
  for (const std::string& name : ListFolder(folder_)) {
    if (!IsLeftOver(name) && IsScript(PathOf(name))) {
      services.push_back(ToService(name, started.count(name) != 0));
    }
  }
  return services;
}

std::optional<ServiceDetails> InitScripts::Read(const std::string& name) const {
  if (name.empty() || IsLeftOver(name) || name.find('/') != std::string::npos ||
      !IsScript(PathOf(name))) {
    return std::nullopt;
  }
  ServiceDetails details;
  details.service = ToService(name, ReadStartLinks(folder_).count(name) != 0);
  details.file = PathOf(name);
  return details;
}

ProgramResult InitScripts::Run(const std::string& name, const std::string& action,
                               std::chrono::milliseconds limit) const {
  return RunProgramWithin(limit, PathOf(name), {action});
}

Service InitScripts::ToService(const std::string& name, bool startsAtBoot) const {
  const std::string script = ReadFile(PathOf(name)).value_or("");
  return {name,         AskState(name, script), {}, startsAtBoot ? "enabled" : "disabled",
          kInitScripts, Describe(script)};
}

std::string InitScripts::AskState(const std::string& name, const std::string& script) const {
  // A script that does not know "status" could mistake it for another action.
  if (script.find("status") == std::string::npos) {
    return "unknown";
  }
  try {
    return ToState(Run(name, "status", limit_));
  } catch (const KestrelException&) {
    return "unknown";  // a script that cannot be started must not hide the others
  }
}

}  // namespace Kestrel::Host
