// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>
#include <kestrel/autocli/Namespace.h>

#include <memory>

namespace Kestrel::Host {

/// Adds the namespace "network" with its commands about interfaces, addresses, routes, connections,
/// ports and name resolution.
void RegisterNetwork(const std::shared_ptr<AutoCli::Namespace>& root);

// The commands of the namespace, each defined in the file of its name.
std::shared_ptr<AutoCli::Command> NewNetworkAddressList();
std::shared_ptr<AutoCli::Command> NewNetworkConnectionList();
std::shared_ptr<AutoCli::Command> NewNetworkCounterList();
std::shared_ptr<AutoCli::Command> NewNetworkDnsList();
std::shared_ptr<AutoCli::Command> NewNetworkInterfaceGet();
std::shared_ptr<AutoCli::Command> NewNetworkInterfaceList();
std::shared_ptr<AutoCli::Command> NewNetworkNeighborList();
std::shared_ptr<AutoCli::Command> NewNetworkPortList();
std::shared_ptr<AutoCli::Command> NewNetworkRouteList();

}  // namespace Kestrel::Host
