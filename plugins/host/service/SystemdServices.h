// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "plugins/host/service/Service.h"
#include "plugins/host/service/Systemctl.h"

namespace Kestrel::Host {

/// The services of systemd in byte order of their names: those that are loaded, and the installed
/// ones that are not.
std::vector<Service> ReadSystemdServices(const Systemctl& systemctl);

/// One of them, with the state "not-found" when systemd has no such service.
ServiceDetails ReadSystemdService(const Systemctl& systemctl, const std::string& name);

}  // namespace Kestrel::Host
