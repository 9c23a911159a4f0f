// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Kestrel::Host {

/// The name of a unit without the ending ".service": "ssh" for "ssh" and for "ssh.service".
std::string ServiceName(std::string_view unit);

/// The unit of a service: "ssh.service" for "ssh" and for "ssh.service".
std::string ServiceUnit(std::string_view name);

/// Whether a service can have that name, with or without the ending. False for what systemctl reads
/// in another way: a pattern, which may mean several units, or a path.
bool IsServiceName(std::string_view name);

}  // namespace Kestrel::Host
