#pragma once

#include <kestrel/autocli/Command.h>

#include <memory>

namespace Kestrel::Host {

// The commands below "network", each in the file of its name.
std::shared_ptr<AutoCli::Command> NewNetworkAddressList();
std::shared_ptr<AutoCli::Command> NewNetworkConnectionList();
std::shared_ptr<AutoCli::Command> NewNetworkCounterList();
std::shared_ptr<AutoCli::Command> NewNetworkInterfaceGet();
std::shared_ptr<AutoCli::Command> NewNetworkInterfaceList();
std::shared_ptr<AutoCli::Command> NewNetworkNeighborList();
std::shared_ptr<AutoCli::Command> NewNetworkRouteList();

}  // namespace Kestrel::Host
