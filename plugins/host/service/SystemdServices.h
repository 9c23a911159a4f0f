// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "plugins/host/service/Service.h"
#include "plugins/host/service/Systemctl.h"

namespace Kestrel::Host {

/// Returns systemd's services in byte order of their names: the loaded services, and the installed
/// ones that are not loaded.
std::vector<Service> ReadSystemdServices(const Systemctl& systemctl);

/// Returns a single service. Its state is "not-found" if systemd has no such service.
ServiceDetails ReadSystemdService(const Systemctl& systemctl, const std::string& name);

}  // namespace Kestrel::Host
