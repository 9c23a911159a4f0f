// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/complete/LoadPlugins.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/RootNamespace.h"
#include "support/ScopedTempDir.h"
#include "support/TestPlugins.h"

namespace Kestrel::Testing {

namespace {

using Vexil::TypedOption;

class LoadPluginsTest : public ::testing::Test {
 protected:
  LoadPluginsTest() {
    chmod(folder_.GetPath().c_str(), 0755);
    CopyTestPlugin("EchoPlugin", file_);
    chmod(file_.c_str(), 0644);
  }

  // Returns whether the option `name` with this value loads the plug-in "echo".
  static bool IsLoadedBy(const std::string& name, const std::string& value) {
    AutoCli::Dispatcher dispatcher;
    Complete::LoadPlugins(dispatcher, {TypedOption{"--" + name, name, value, true}});
    return dispatcher.GetRootNamespace()->HasNamespaceNode("echo");
  }

  ScopedTempDir folder_;
  std::string file_ = folder_.GetPath("echo.so");
};

TEST_F(LoadPluginsTest, LoadsTrustedFiles) {
  EXPECT_TRUE(IsLoadedBy("plugin", file_));
  EXPECT_TRUE(IsLoadedBy("plugin-dir", folder_.GetPath()));
  EXPECT_FALSE(IsLoadedBy("formatter", file_));
}

TEST_F(LoadPluginsTest, LoadsNoFileThatOthersCanWrite) {
  chmod(file_.c_str(), 0666);
  EXPECT_FALSE(IsLoadedBy("plugin", file_));
  EXPECT_FALSE(IsLoadedBy("plugin-dir", folder_.GetPath()));
}

TEST_F(LoadPluginsTest, SkipsFilesThatCannotBeLoaded) {
  const std::string broken = folder_.Write("a.so", "text");
  chmod(broken.c_str(), 0644);
  EXPECT_TRUE(IsLoadedBy("plugin-dir", folder_.GetPath()));
  EXPECT_FALSE(IsLoadedBy("plugin", broken));
  EXPECT_FALSE(IsLoadedBy("plugin-dir", folder_.GetPath("nosuch")));
  EXPECT_FALSE(IsLoadedBy("plugin", ""));
}

}  // namespace

}  // namespace Kestrel::Testing
