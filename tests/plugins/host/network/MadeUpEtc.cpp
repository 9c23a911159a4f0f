// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/MadeUpEtc.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include "plugins/host/support/Namespaces.h"
#include "plugins/support/CommandCall.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Testing {

std::string RunWithEtc(const Files& files, const std::function<void()>& body) {
  GetDispatcher();  // loads the plug-in while the libraries are still found through /etc
  const ScopedTempDir folder;
  for (const auto& [name, text] : files) {
    folder.Write(name, text);
  }
  return RunInNamespaces(CLONE_NEWNS, [&] {
    ASSERT_EQ(::mount(folder.GetPath().c_str(), "/etc", nullptr, MS_BIND, nullptr), 0);
    body();
  });
}

}  // namespace Kestrel::Testing
