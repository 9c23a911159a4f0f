#pragma once

#include <kestrel/autocli/Command.h>

#include <memory>

namespace Kestrel::Host {

// The commands below "system", each in the file of its name.
std::shared_ptr<AutoCli::Command> NewSystemVersionGet();

}  // namespace Kestrel::Host
