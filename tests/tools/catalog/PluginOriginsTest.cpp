// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/PluginOrigins.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/ExtensionCommand.h"
#include "support/SampleCommands.h"
#include "support/ScopedTempDir.h"
#include "support/TestPlugins.h"
#include "tools/catalog/Catalog.h"

namespace Kestrel::Catalog {
namespace {

using AutoCli::Dispatcher;
using AutoCli::Namespace;
using AutoCli::NamespaceNode;
using Testing::CopyTestPlugin;
using testing::ElementsAre;
using testing::IsEmpty;
using Testing::MakeAnsweringCommand;
using Testing::RegisterAt;
using Testing::ScopedTempDir;
using Testing::TestPluginPath;

/// Returns a descriptor that declares the namespace `name`, which others may declare too, and a
/// command in it.
std::string MakeDescriptor(const std::string& name, const std::string& command) {
  return "<p><version>1.0.0</version><namespaces><namespace path=\"" + name +
         "\"><description>Shared.</description></namespace></namespaces><commands><command "
         "path=\"" +
         name + "." + command +
         "\"><description>d</description><input-spec/><output-spec><string/></output-spec>"
         "<format-parameters/><execute>true</execute></command></commands></p>";
}

/// A plug-in that is part of the program, with the command "sample get".
class ProgramPlugin : public AutoCli::Plugin {
 public:
  void Initialize() override {}
  const std::string& GetName() const override { return name_; }
  void RegisterNamespaces(std::shared_ptr<Namespace> root) override {
    RegisterAt(root, {"sample", "get"}, MakeAnsweringCommand("x"));
  }
  bool HasFormatter(const std::string& /*name*/) override { return false; }
  std::shared_ptr<AutoCli::Formatter> GetFormatter(const std::string& /*name*/) override {
    return nullptr;
  }
  const std::vector<std::shared_ptr<AutoCli::Formatter>>& GetFormatters() override {
    return formatters_;
  }

 private:
  std::string name_ = "Own";
  std::vector<std::shared_ptr<AutoCli::Formatter>> formatters_;
};

class PluginOriginsTest : public testing::Test {
 protected:
  /// Returns the plug-in of a command as "kind path file"; "none" if it is not found.
  std::string Find(const std::string& path) {
    const auto node = Resolve(path);
    const Plugin* const plugin = origins().FindPlugin(*node, path);
    return plugin == nullptr ? "none" : Describe(*plugin);
  }

  /// Returns the library's own plug-in. Its path is that at which the loader found the library.
  std::string LibraryPlugin() {
    const Plugin& plugin = *origins().GetPlugins().front();
    EXPECT_TRUE(std::filesystem::equivalent(KESTREL_LIBRARY, plugin.path));
    return "built-in " + plugin.path + " built-in";
  }

  static std::string Describe(const Plugin& plugin) {
    const char* const kinds[] = {"built-in", "shared", "descriptor"};
    return std::string(kinds[static_cast<int>(plugin.kind)]) + " " + plugin.path + " " +
           plugin.file;
  }

  std::shared_ptr<NamespaceNode> Resolve(const std::string& path) {
    std::list<std::string> words;
    for (std::size_t begin = 0; begin < path.size();) {
      const std::size_t end = std::min(path.find(' ', begin), path.size());
      words.push_back(path.substr(begin, end - begin));
      begin = end + 1;
    }
    return dispatcher_.GetRootNamespace()->ResolveNode(words);
  }

  /// Returns the origins. They are made at the first call, when all plug-ins are loaded.
  PluginOrigins& origins() {
    if (origins_ == nullptr) {
      origins_ = std::make_unique<PluginOrigins>(dispatcher_);
    }
    return *origins_;
  }

  ScopedTempDir folder_;
  Dispatcher dispatcher_;

 private:
  std::unique_ptr<PluginOrigins> origins_;
};

TEST_F(PluginOriginsTest, ACommandOfTheLibraryIsBuiltIn) {
  EXPECT_EQ(LibraryPlugin(), Find("vexil command list"));
}

TEST_F(PluginOriginsTest, ACommandThatTheProgramAddsIsBuiltIn) {
  RegisterAt(dispatcher_.GetRootNamespace(), {"sample", "get"}, MakeAnsweringCommand("x"));
  EXPECT_EQ(LibraryPlugin(), Find("sample get"));
}

TEST_F(PluginOriginsTest, APluginOfTheProgramIsBuiltIntoTheProgram) {
  dispatcher_.RegisterPlugin(std::make_shared<ProgramPlugin>());
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  EXPECT_EQ("built-in " + program + " built-in", Find("sample get"));
  EXPECT_EQ(LibraryPlugin(), Find("vexil command list"));
}

TEST_F(PluginOriginsTest, ANativeCommandBelongsToTheSharedObjectWithItsClass) {
  const std::string first = folder_.GetPath("first.so");
  const std::string second = folder_.GetPath("second.so");
  CopyTestPlugin("NamedAfterFilePlugin", first);
  CopyTestPlugin("NamedAfterFilePlugin", second);
  dispatcher_.AddPlugin(first);
  dispatcher_.AddPlugin(TestPluginPath("EchoPlugin"));
  dispatcher_.AddPlugin(second);
  EXPECT_EQ("shared " + first + " first.so", Find("first"));
  EXPECT_EQ("shared " + second + " second.so", Find("second"));
  EXPECT_EQ("shared " + TestPluginPath("EchoPlugin") + " EchoPlugin.so", Find("echo say"));
}

TEST_F(PluginOriginsTest, APluginIsFoundByTheNameThatItWasLoadedBy) {
  const auto here = std::filesystem::current_path();
  CopyTestPlugin("NamedAfterFilePlugin", folder_.GetPath("here.so"));
  std::filesystem::current_path(folder_.GetPath());
  dispatcher_.AddPlugin("./here.so");
  EXPECT_EQ("shared ./here.so here.so", Find("here"));
  std::filesystem::current_path(here);
}

TEST_F(PluginOriginsTest, ACommandBelongsToTheDescriptorThatDeclaresIt) {
  const std::string list = folder_.Write("list.xml", MakeDescriptor("disk", "list"));
  const std::string get = folder_.Write("get.xml", MakeDescriptor("disk", "get"));
  dispatcher_.AddPlugin(list);
  dispatcher_.AddPlugin(get);
  EXPECT_EQ("descriptor " + list + " list.xml", Find("disk list"));
  EXPECT_EQ("descriptor " + get + " get.xml", Find("disk get"));
}

TEST_F(PluginOriginsTest, TheDescriptorsOfANamespaceAreThoseThatDeclareIt) {
  dispatcher_.AddPlugin(folder_.Write("list.xml", MakeDescriptor("disk", "list")));
  dispatcher_.AddPlugin(folder_.Write("get.xml", MakeDescriptor("disk", "get")));
  dispatcher_.AddPlugin(folder_.Write("other.xml", MakeDescriptor("other", "get")));
  std::vector<std::string> files;
  for (const Plugin* const plugin : origins().FindDescriptors("disk")) {
    files.push_back(plugin->file);
  }
  EXPECT_THAT(files, ElementsAre("list.xml", "get.xml"));
  EXPECT_THAT(origins().FindDescriptors("disk list"), IsEmpty());
  EXPECT_THAT(origins().FindDescriptors("vexil"), IsEmpty());
}

TEST_F(PluginOriginsTest, ReturnsNullForADescriptorThatIsGone) {
  const std::string list = folder_.Write("list.xml", MakeDescriptor("disk", "list"));
  dispatcher_.AddPlugin(list);
  std::remove(list.c_str());
  EXPECT_EQ("none", Find("disk list"));
}

TEST_F(PluginOriginsTest, ReturnsNullForAnExtensionCommandThatNoDescriptorDeclares) {
  dispatcher_.AddPlugin(folder_.Write("list.xml", MakeDescriptor("disk", "list")));
  RegisterAt(dispatcher_.GetRootNamespace(), {"disk", "get"}, AutoCli::ExtensionCommand::New());
  EXPECT_EQ("none", Find("disk get"));
}

TEST_F(PluginOriginsTest, ReturnsNullForAPlainNamespace) {
  EXPECT_EQ("none", Find("vexil command"));
}

TEST_F(PluginOriginsTest, APluginThatFailedIsFoundButNotRegistered) {
  const std::string path = TestPluginPath("ThrowingPluginKestrelException");
  EXPECT_THROW(dispatcher_.AddPlugin(path), KestrelException);
  EXPECT_EQ("shared " + path + " ThrowingPluginKestrelException.so", Find("throwing early"));
  EXPECT_EQ(1u, origins().GetPlugins().size());
}

TEST_F(PluginOriginsTest, TheRegisteredPluginsAreInTheOrderOfLoading) {
  const std::string echo = TestPluginPath("EchoPlugin");
  const std::string list = folder_.Write("list.xml", MakeDescriptor("disk", "list"));
  dispatcher_.AddPlugin(list);
  dispatcher_.AddPlugin(echo);
  std::vector<std::string> plugins;
  for (const Plugin* const plugin : origins().GetPlugins()) {
    plugins.push_back(Describe(*plugin));
  }
  EXPECT_THAT(plugins, ElementsAre(LibraryPlugin(), "descriptor " + list + " list.xml",
                                   "shared " + echo + " EchoPlugin.so"));
}

TEST_F(PluginOriginsTest, WithoutRegistrationsNothingIsBuiltIn) {
  dispatcher_.ResetRegistrations();
  EXPECT_EQ("none", Find("vexil command list"));
}

}  // namespace
}  // namespace Kestrel::Catalog
