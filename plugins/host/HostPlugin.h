#pragma once

#include <kestrel/autocli/Namespace.h>

#include <memory>

/// The plug-in with the commands of the machine it runs on: a command is one file, its declaration
/// first and its work below; what reads the machine's data knows nothing of commands.
namespace Kestrel::Host {

/// Adds "system" and what is below it: the machine, its kernel, its processes and its people.
void RegisterSystem(const std::shared_ptr<AutoCli::Namespace>& root);

/// Adds "storage" and what is below it: devices, file systems and where they are mounted.
void RegisterStorage(const std::shared_ptr<AutoCli::Namespace>& root);

/// Adds "network" and what is below it: interfaces, addresses, routes and connections.
void RegisterNetwork(const std::shared_ptr<AutoCli::Namespace>& root);

}  // namespace Kestrel::Host
