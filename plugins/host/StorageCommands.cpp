#include "plugins/host/HostPlugin.h"

namespace Kestrel::Host {

void RegisterStorage(const std::shared_ptr<AutoCli::Namespace>&) {}

}  // namespace Kestrel::Host
