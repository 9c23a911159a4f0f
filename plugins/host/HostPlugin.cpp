#include "plugins/host/HostPlugin.h"

#include <kestrel/autocli/PluginEntryPoint.h>

void AutoCli_RegisterNamespaces(std::shared_ptr<Kestrel::AutoCli::Namespace> root) {
  Kestrel::Host::RegisterSystem(root);
  Kestrel::Host::RegisterStorage(root);
  Kestrel::Host::RegisterNetwork(root);
}
