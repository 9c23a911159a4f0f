// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Kestrel::Host {

/// Returns the name of a unit without the ending ".service": "ssh" for "ssh" and for "ssh.service".
std::string ServiceName(std::string_view unit);

/// Returns the unit of a service: "ssh.service" for "ssh" and for "ssh.service".
std::string ServiceUnit(std::string_view name);

/// Whether `name` can be the name of a service, with or without the ending. False for names that
/// systemctl interprets differently: a pattern, which may match several units, or a path.
bool IsServiceName(std::string_view name);

}  // namespace Kestrel::Host
