#include "plugins/host/HostPlugin.h"

namespace Kestrel::Host {

void RegisterNetwork(const std::shared_ptr<AutoCli::Namespace>&) {}

}  // namespace Kestrel::Host
