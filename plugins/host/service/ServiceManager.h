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
  std::string
      message;  ///< the output of the program that made the change, on one line; may be empty
};

/// The manager of this machine's services: systemd if it runs, otherwise the init scripts.
///
/// Names may, but need not, end with ".service". The operations throw KestrelException if the
/// manager cannot be queried, or if the given name is not that of a service.
class ServiceManager {
 public:
  explicit ServiceManager(ServicePlaces places = {});

  bool IsSystemd() const { return isSystemd_; }

  /// Returns the services in byte order of their names.
  std::vector<Service> List() const;

  ServiceDetails Get(const std::string& name) const;

  /// Performs `action`, which is "start", "stop", "restart", "enable" or "disable", and returns the
  /// service before and after. Never prompts for a password. Throws KestrelException with the
  /// reason if the user may not do this, if it fails, or if it takes longer than `limit`.
  ServiceChange Change(const std::string& action, const std::string& name,
                       std::chrono::seconds limit) const;

 private:
  ServicePlaces places_;
  bool isSystemd_;
};

}  // namespace Kestrel::Host
