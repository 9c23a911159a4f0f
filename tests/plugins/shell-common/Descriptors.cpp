// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/shell-common/Descriptors.h"

#include "plugins/support/CommandCall.h"

namespace Kestrel::Testing {

AutoCli::Dispatcher& GetDispatcher() {
  static AutoCli::Dispatcher dispatcher;
  static const bool isLoaded = [] {
    for (const char* const name : {"address", "disk", "password", "service"}) {
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
