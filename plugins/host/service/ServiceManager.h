// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "plugins/host/service/Service.h"

namespace Kestrel::Host {

/// Where the managers of services are found.
struct ServicePlaces {
  std::string systemd = "/run/systemd/system";  ///< a folder that exists while systemd runs
  std::string scripts = "/etc/init.d";
};

/// What a change did to a service.
struct ServiceChange {
  ServiceDetails before;
  ServiceDetails after;
  std::string message;  ///< what the program that made it says, on one line; may be empty
};

/// The manager of the services of this machine: systemd if it runs, else the scripts.
///
/// A name may have the ending ".service" or not. Operations throw KestrelException when the manager
/// cannot be asked, and those with a name when there is no such service.
class ServiceManager {
 public:
  explicit ServiceManager(ServicePlaces places = {});

  bool IsSystemd() const { return isSystemd_; }

  /// The services in byte order of their names.
  std::vector<Service> List() const;

  ServiceDetails Get(const std::string& name) const;

  /// Does what "start", "stop", "restart", "enable" or "disable" says and returns what that
  /// changed. Never asks for a password. Throws KestrelException with the words of the manager when
  /// the user has no right to do it, when it fails, and when it takes longer than `limit`.
  ServiceChange Change(const std::string& action, const std::string& name,
                       std::chrono::seconds limit) const;

 private:
  ServicePlaces places_;
  bool isSystemd_;
};

}  // namespace Kestrel::Host
