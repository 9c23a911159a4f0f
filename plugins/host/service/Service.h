// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace Kestrel::Host {

/// A service of systemd, or of a script in /etc/init.d.
struct Service {
  std::string name;
  std::string state;      ///< one of kServiceStates
  std::string subState;   ///< systemd's more detailed word; may be empty
  std::string bootState;  ///< whether it starts with the machine, in systemd's words; may be empty
  std::string source;     ///< kSystemd or kInitScripts
  std::string description;  ///< may be empty
};

/// Further details about a single service.
struct ServiceDetails {
  Service service;
  std::string loadState;  ///< systemd's word for the result of reading the unit; may be empty
  std::int64_t mainProcess = 0;  ///< 0 if there is none
  std::string since;             ///< when it entered its state; may be empty
  std::optional<std::int64_t> memoryBytes;
  std::string file;  ///< its unit or script; may be empty
};

/// The managers of services: the values of `Service::source`.
extern const char* const kSystemd;
extern const char* const kInitScripts;

/// The states of a service. "running": it has a process that works, as far as its manager knows; a
/// script may also report this for a service without a process. "exited": its work is done, and
/// systemd counts it as active. "template": a unit from which services are made. "alias": another
/// name of a service.
constexpr std::array<const char*, 13> kServiceStates = {
    "running", "exited",    "reloading", "refreshing", "activating",  "deactivating", "failed",
    "stopped", "not-found", "template",  "alias",      "maintenance", "unknown"};

}  // namespace Kestrel::Host
