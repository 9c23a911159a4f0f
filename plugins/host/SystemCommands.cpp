#include "plugins/host/SystemCommands.h"

#include "plugins/host/HostCommand.h"
#include "plugins/host/HostPlugin.h"

namespace Kestrel::Host {

void RegisterSystem(const std::shared_ptr<AutoCli::Namespace>& root) {
  const auto system = AddNamespace(root, "system", "The machine, its kernel and its processes.");
  AddNamespace(system, "version", "The versions of the system.")
      ->RegisterNamespaceNode(NewSystemVersionGet(), "get");
}

}  // namespace Kestrel::Host
