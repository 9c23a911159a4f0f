#pragma once

#include <kestrel/autocli/Command.h>

#include <memory>

namespace Kestrel::Host {

// The commands below "storage", each in the file of its name.
std::shared_ptr<AutoCli::Command> NewStorageDeviceList();
std::shared_ptr<AutoCli::Command> NewStorageFilesystemList();
std::shared_ptr<AutoCli::Command> NewStorageMountList();

}  // namespace Kestrel::Host
