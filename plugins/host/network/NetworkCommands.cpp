// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkCommands.h"

#include "plugins/host/frame/HostCommand.h"

namespace Kestrel::Host {

void RegisterNetwork(const std::shared_ptr<AutoCli::Namespace>& root) {
  const auto network = AddNamespace(root, "network", "Interfaces, addresses, routes, connections.");
  AddNamespace(network, "address", "The addresses of the interfaces.")
      ->RegisterNamespaceNode(NewNetworkAddressList(), "list");
  AddNamespace(network, "connection", "Connections and listening sockets.")
      ->RegisterNamespaceNode(NewNetworkConnectionList(), "list");
  AddNamespace(network, "counter", "The traffic of the interfaces.")
      ->RegisterNamespaceNode(NewNetworkCounterList(), "list");
  AddNamespace(network, "dns", "The settings for resolving names.")
      ->RegisterNamespaceNode(NewNetworkDnsList(), "list");
  const auto interface = AddNamespace(network, "interface", "The network interfaces.");
  interface->RegisterNamespaceNode(NewNetworkInterfaceGet(), "get");
  interface->RegisterNamespaceNode(NewNetworkInterfaceList(), "list");
  AddNamespace(network, "neighbor", "The link-layer addresses of the neighbors.")
      ->RegisterNamespaceNode(NewNetworkNeighborList(), "list");
  AddNamespace(network, "port", "The services that ports are assigned to.")
      ->RegisterNamespaceNode(NewNetworkPortList(), "list");
  AddNamespace(network, "route", "The routes of packets.")
      ->RegisterNamespaceNode(NewNetworkRouteList(), "list");
}

}  // namespace Kestrel::Host
