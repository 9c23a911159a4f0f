// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/ServiceManager.h"

#include <kestrel/KestrelException.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <string_view>
#include <utility>

#include "plugins/host/frame/ChildProcess.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/service/InitScripts.h"
#include "plugins/host/service/ServiceName.h"
#include "plugins/host/service/Systemctl.h"
#include "plugins/host/service/SystemdServices.h"

namespace Kestrel::Host {
namespace {

// Parts of systemctl's messages that mean that the user lacks permission.
constexpr std::string_view kRefusals[] = {"authentication required", "Access denied",
                                          "Permission denied", "Not authorized"};

bool IsFolder(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string Quote(const std::string& name) { return "'" + SanitizedText(name)->GetValue() + "'"; }

[[noreturn]] void ReportUnknown(const std::string& name) {
  throw KestrelException("There is no service " + Quote(name));
}

[[noreturn]] void Refuse(const std::string& action, const std::string& name,
                         const std::string& reason) {
  throw KestrelException("You may not " + action + " the service " + Quote(name) + ": " + reason);
}

bool IsRefusal(const std::string& words) {
  for (const std::string_view refusal : kRefusals) {
    if (words.find(refusal) != std::string::npos) {
      return true;
    }
  }
  return false;
}

void RequireSuccess(const ProgramResult& result, const std::string& action, const std::string& name,
                    std::chrono::seconds limit) {
  if (result.isTimedOut) {
    throw KestrelException("It takes longer than " + std::to_string(limit.count()) + " s to " +
                           action + " the service " + Quote(name) +
                           "; the change may still go on, see 'service get'");
  }
  if (result.status == 0) {
    return;
  }
  const std::string words = FailureWords(result);
  if (IsRefusal(words)) {
    Refuse(action, name, words);
  }
  throw KestrelException("Unable to " + action + " the service " + Quote(name) + ": " + words);
}

// Runs the script of a service to start, stop or restart it. To enable or disable the service, runs
// a separate program, which changes links.
ProgramResult RunScript(const InitScripts& scripts, const std::string& action,
                        const std::string& name, std::chrono::seconds limit) {
  if (action != "enable" && action != "disable") {
    return scripts.Run(name, action, limit);
  }
  const std::optional<std::string> program = FindProgram("update-rc.d");
  if (!program) {
    throw KestrelException(
        "Unable to " + action + " the service " + Quote(name) +
        ": the program update-rc.d (package init-system-helpers) is not in PATH");
  }
  return RunProgramWithin(limit, *program, {name, action});
}

}  // namespace

const char* const kSystemd = "systemd";

ServiceManager::ServiceManager(ServicePlaces places)
    : places_(std::move(places)), isSystemd_(IsFolder(places_.systemd)) {}

std::vector<Service> ServiceManager::List() const {
  return isSystemd_ ? ReadSystemdServices(Systemctl()) : InitScripts(places_.scripts).Read();
}

ServiceDetails ServiceManager::Get(const std::string& name) const {
  if (!IsServiceName(name)) {
    ReportUnknown(name);
  }
  if (ServiceName(name).back() == '@') {
    throw KestrelException("The service " + Quote(name) +
                           " is a template: name a service that is made from it, such as '" +
                           ServiceName(name) + "NAME'");
  }
  if (isSystemd_) {
    ServiceDetails details = ReadSystemdService(Systemctl(), name);
    if (details.service.state == "not-found") {
      ReportUnknown(name);
    }
    return details;
  }
  std::optional<ServiceDetails> details = InitScripts(places_.scripts).Read(ServiceName(name));
  if (!details) {
    ReportUnknown(name);
  }
  return *std::move(details);
}

ServiceChange ServiceManager::Change(const std::string& action, const std::string& name,
                                     std::chrono::seconds limit) const {
  ServiceChange change;
  change.before = Get(name);
  if (!isSystemd_ && ::geteuid() != 0) {
    Refuse(action, name, "only root may");
  }
  // The given name may be an alias, which may not exist after the change.
  const std::string& ownName = change.before.service.name;
  const ProgramResult result =
      isSystemd_ ? Systemctl().Change(action, ServiceUnit(ownName), limit)
                 : RunScript(InitScripts(places_.scripts), action, ownName, limit);
  RequireSuccess(result, action, name, limit);
  change.message = OnOneLine(result.output + result.errorOutput);
  change.after = isSystemd_ ? ReadSystemdService(Systemctl(), ownName) : Get(ownName);
  return change;
}

}  // namespace Kestrel::Host
