// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/shell-common/Descriptors.h"

#include "plugins/support/CommandCall.h"

namespace Kestrel::Testing {

AutoCli::Dispatcher& GetDispatcher() {
  // The dispatcher is never destroyed, because the plug-in's static objects are destroyed before
  // those of this program.
  static AutoCli::Dispatcher& dispatcher = *new AutoCli::Dispatcher();
  static const bool isLoaded = [] {
    // This plug-in declares namespaces that the descriptors use.
    dispatcher.AddPlugin(KESTREL_HOST_PLUGIN);
    for (const char* const name : {"network", "password"}) {
      dispatcher.AddPlugin(KESTREL_DESCRIPTOR_DIR "/" + std::string(name) + ".xml");
    }
    return true;
  }();
  static_cast<void>(isLoaded);
  return dispatcher;
}

std::string ScriptPath(const std::string& name) {
  return KESTREL_DESCRIPTOR_DIR "/scripts/" + name;
}

}  // namespace Kestrel::Testing
