// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/SystemdServices.h"

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>

#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/service/ServiceName.h"
#include "plugins/host/service/SystemctlOutput.h"

namespace Kestrel::Host {
namespace {

using UnitFiles = std::map<std::string, std::string>;

constexpr char kAlias[] = "alias";
constexpr char kNotFound[] = "not-found";
constexpr char kInactive[] = "inactive";
// This number of names takes far fewer bytes than the kernel accepts as arguments of one program.
constexpr std::size_t kMaxUnitsInACall = 400;

std::string Get(const UnitProperties& unit, const std::string& name) {
  const auto found = unit.find(name);
  return found == unit.end() ? std::string() : found->second;
}

std::vector<std::string> ListArguments(const char* list) {
  return {list,      "--type=service", "--all",      "--full",
          "--plain", "--no-legend",    "--no-pager", "--output=json"};
}

// Returns the state for systemd's words: `load` says whether the unit has a file, `active` and
// `sub` say what it does.
std::string ToState(const std::string& load, const std::string& active, const std::string& sub) {
  if (active == "active") {
    return sub == "exited" ? sub : "running";
  }
  if (active == kInactive) {
    return load == kNotFound ? kNotFound : "stopped";
  }
  const bool isKnown =
      std::find(kServiceStates.begin(), kServiceStates.end(), active) != kServiceStates.end();
  return isKnown ? active : "unknown";
}

// Returns the state of an installed service that is not loaded.
std::string ToStateOfFile(const std::string& name, const std::string& fileState) {
  if (fileState == kAlias) {
    return kAlias;
  }
  return !name.empty() && name.back() == '@' ? "template" : "stopped";
}

Service ToService(const LoadedUnit& unit) {
  return {ServiceName(unit.unit), ToState(unit.load, unit.active, unit.sub), unit.sub, {}, kSystemd,
          unit.description};
}

bool IsInstance(const std::string& unit) { return unit.find('@') != std::string::npos; }

// Returns the boot states of instances of templates, which have no unit files of their own.
UnitFiles AskBootStates(const Systemctl& systemctl, const std::vector<std::string>& units) {
  UnitFiles states;
  for (std::size_t start = 0; start < units.size(); start += kMaxUnitsInACall) {
    const std::size_t end = std::min(start + kMaxUnitsInACall, units.size());
    std::vector<std::string> arguments = {"show", "--no-pager", "--property=Id,UnitFileState",
                                          "--"};
    arguments.insert(arguments.end(), units.begin() + static_cast<std::ptrdiff_t>(start),
                     units.begin() + static_cast<std::ptrdiff_t>(end));
    for (const UnitProperties& unit : ParseProperties(systemctl.Ask(arguments))) {
      states[Get(unit, "Id")] = Get(unit, "UnitFileState");
    }
  }
  return states;
}

// Sets the boot states of `services`, and removes the entries of their units from `files`.
void SetBootStates(const Systemctl& systemctl, UnitFiles& files, std::vector<Service>& services) {
  std::vector<std::string> instances;
  for (Service& service : services) {
    std::string unit = ServiceUnit(service.name);
    if (const auto file = files.find(unit); file != files.end()) {
      service.bootState = file->second;
      files.erase(file);
    } else if (IsInstance(unit) && IsServiceName(unit)) {
      instances.push_back(std::move(unit));
    }
  }
  const UnitFiles states = AskBootStates(systemctl, instances);
  for (Service& service : services) {
    if (const auto state = states.find(ServiceUnit(service.name)); state != states.end()) {
      service.bootState = state->second;
    }
  }
}

constexpr char kProperties[] =
    "--property=Id,Description,LoadState,ActiveState,SubState,UnitFileState,FragmentPath,"
    "SourcePath,MainPID,MemoryCurrent,ActiveEnterTimestamp,ActiveExitTimestamp,"
    "InactiveEnterTimestamp,InactiveExitTimestamp";

// Returns the property with the time at which a unit entered its state.
const char* SinceProperty(const std::string& active) {
  if (active == "active" || active == "reloading" || active == "refreshing") {
    return "ActiveEnterTimestamp";
  }
  if (active == "activating") {
    return "InactiveExitTimestamp";
  }
  return active == "deactivating" ? "ActiveExitTimestamp" : "InactiveEnterTimestamp";
}

// Returns "2026-11-22 10:00:00" from "Sun 2026-11-22 10:00:00 UTC", which is in the zone of this
// process.
std::string ParseTimestamp(const std::string& text) {
  const auto words = SplitWords(text);
  return words.size() < 3 ? std::string() : std::string(words[1]).append(" ").append(words[2]);
}

// systemd writes the largest number, or words, if it has no value.
std::optional<std::int64_t> ParseMemory(const std::string& text) {
  const auto number = ParseNumber(text);
  return number && *number >= 0 ? std::make_optional<std::int64_t>(*number) : std::nullopt;
}

ServiceDetails ToDetails(const UnitProperties& unit) {
  const std::string load = Get(unit, "LoadState");
  const std::string active = Get(unit, "ActiveState");
  const std::string sub = Get(unit, "SubState");
  ServiceDetails details;
  details.service = {ServiceName(Get(unit, "Id")),
                     ToState(load, active, sub),
                     sub,
                     Get(unit, "UnitFileState"),
                     kSystemd,
                     Get(unit, "Description")};
  details.loadState = load;
  details.mainProcess = ParseNumber(Get(unit, "MainPID")).value_or(0);
  details.since = ParseTimestamp(Get(unit, SinceProperty(active)));
  details.memoryBytes = ParseMemory(Get(unit, "MemoryCurrent"));
  const std::string file = Get(unit, "FragmentPath");
  details.file = file.empty() ? Get(unit, "SourcePath") : file;
  return details;
}

}  // namespace

std::vector<Service> ReadSystemdServices(const Systemctl& systemctl) {
  std::vector<Service> services;
  for (const LoadedUnit& unit : ParseUnits(systemctl.Ask(ListArguments("list-units")))) {
    services.push_back(ToService(unit));
  }
  UnitFiles files = ParseUnitFiles(systemctl.Ask(ListArguments("list-unit-files")));
  SetBootStates(systemctl, files, services);
  for (const auto& [unit, state] : files) {
    const std::string name = ServiceName(unit);
    services.push_back({name, ToStateOfFile(name, state), {}, state, kSystemd, {}});
  }
  std::sort(services.begin(), services.end(),
            [](const Service& left, const Service& right) { return left.name < right.name; });
  return services;
}

ServiceDetails ReadSystemdService(const Systemctl& systemctl, const std::string& name) {
  const auto units =
      ParseProperties(systemctl.Ask({"show", "--no-pager", kProperties, "--", ServiceUnit(name)}));
  if (units.size() != 1 || units[0].count("ActiveState") == 0) {
    throw KestrelException("systemctl returned nothing about the service '" + name + "'");
  }
  ServiceDetails details = ToDetails(units[0]);
  if (details.service.name.empty()) {
    details.service.name = ServiceName(name);
  }
  return details;
}

}  // namespace Kestrel::Host
