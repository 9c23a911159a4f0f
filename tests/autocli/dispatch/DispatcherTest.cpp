// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/Dispatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <list>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/SharedLibraryPlugin.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaString.h"
#include "support/SampleCommands.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/StreamCapture.h"
#include "support/TestPlugins.h"

namespace Kestrel::AutoCli {
namespace {

using CallSpec::Output;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using MetaObj::MetaString;
using Testing::CopyTestPlugin;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Testing::IsLoaded;
using Testing::MakeAnsweringCommand;
using Testing::MakeCommandInput;
using Testing::MakeLyingCommand;
using Testing::MakeThrowingCommand;
using Testing::RegisterAt;
using Testing::SampleCommand;
using Testing::ScopedEnvironment;
using Testing::ScopedTempDir;
using testing::StartsWith;
using Testing::StreamCapture;
using Testing::TestPluginPath;
using testing::ThrowsMessage;

// A formatter that prints its name and the root object, or does what a test sets.
class SampleFormatter : public Formatter {
 public:
  explicit SampleFormatter(const std::string& formatterName) : Formatter(formatterName) {}

  void Format(const std::shared_ptr<Output>& output, FormatParameters& parameters,
              DisplayContext& display, std::ostream& out) override {
    if (work) {
      return work(output, parameters, display, out);
    }
    out << GetName() << ": " << output->GetRootObject()->ToString() << "\n";
  }

  std::function<void(const std::shared_ptr<Output>&, FormatParameters&, DisplayContext&,
                     std::ostream&)>
      work;
};

// A plug-in whose name, registration and formatters a test sets.
class SamplePlugin : public Plugin {
 public:
  explicit SamplePlugin(std::string name, const std::vector<std::string>& formatterNames = {})
      : name_(std::move(name)) {
    for (const std::string& formatterName : formatterNames) {
      formatters.push_back(std::make_shared<SampleFormatter>(formatterName));
    }
  }

  void Initialize() override { ++initializations; }
  const std::string& GetName() const override { return name_; }
  void RegisterNamespaces(std::shared_ptr<Namespace> root) override {
    if (registration) {
      registration(root);
    }
  }
  bool HasFormatter(const std::string& name) override {
    return !deniesFormatters && GetFormatter(name) != nullptr;
  }
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) override {
    const auto formatter =
        std::find_if(formatters.begin(), formatters.end(), [&](const auto& candidate) {
          return candidate != nullptr && candidate->GetName() == name;
        });
    return formatter != formatters.end() ? *formatter : nullptr;
  }
  // An override may return a reference to a non-const vector.
  std::vector<std::shared_ptr<Formatter>>& GetFormatters() override { return formatters; }

  std::function<void(const std::shared_ptr<Namespace>&)> registration;
  std::vector<std::shared_ptr<Formatter>> formatters;
  bool deniesFormatters = false;
  int initializations = 0;

 private:
  std::string name_;
};

class DispatcherTest : public testing::Test {
 protected:
  // Runs the command at `path` without parameters; returns its result or its errors as a string.
  std::string Run(std::initializer_list<const char*> path) {
    const std::shared_ptr<CommandOutput> output = CommandOutput::New();
    if (dispatcher_.ExecuteCommand(MakeCommandInput(path), output)) {
      return output->GetRootObject()->ToString();
    }
    std::string errors;
    for (const std::string& error : output->GetErrors()) {
      errors += error + "\n";
    }
    return errors;
  }

  void Register(std::initializer_list<const char*> path, const std::shared_ptr<Command>& command) {
    RegisterAt(dispatcher_.GetRootNamespace(), path, command);
  }

  std::shared_ptr<CommandOutput> output_ = CommandOutput::New();
  Dispatcher dispatcher_;
};

// Construction.

TEST_F(DispatcherTest, StartsWithARootThatPointsBack) {
  const std::shared_ptr<RootNamespace> root = dispatcher_.GetRootNamespace();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->GetDispatcher(), &dispatcher_);
  EXPECT_EQ(dispatcher_.GetRootNamespace(), root);
}

TEST_F(DispatcherTest, StartsWithOnlyTheBuiltInPlugin) {
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal"));
  EXPECT_THAT(dispatcher_.GetRootNamespace()->GetNamespaceNodeNames(), ElementsAre("vexil"));
  EXPECT_TRUE(dispatcher_.HasFormatter("table"));
  EXPECT_TRUE(dispatcher_.HasFormatter("simple"));
  EXPECT_TRUE(dispatcher_.HasFormatter("commandhelp"));
}

TEST_F(DispatcherTest, CommandsReachTheirDispatcher) {
  const std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("here");
  Register({"network", "ip", "list"}, command);
  EXPECT_EQ(command->GetDispatcher(), &dispatcher_);
}

// One file.

TEST_F(DispatcherTest, AddPluginLoadsASharedObject) {
  const std::string path = TestPluginPath("EchoPlugin");
  dispatcher_.AddPlugin(path);
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal", path));
  const std::shared_ptr<CommandInput> input = MakeCommandInput({"echo", "say"});
  input->AddParameter("text", "hello");
  EXPECT_TRUE(dispatcher_.ExecuteCommand(input, output_));
  EXPECT_EQ(output_->GetRootObject()->ToString(), "hello");
}

TEST_F(DispatcherTest, AddPluginSilentlySkipsOtherFiles) {
  StreamCapture err(STDERR_FILENO);
  for (const char* path : {"/nowhere/notes.txt", "/nowhere/libx.so.1", "/nowhere/x.SO", ".so", "",
                           "/nowhere/x.so\n", "/nowhere/"}) {
    dispatcher_.AddPlugin(path);
  }
  EXPECT_EQ(err.GetText(), "");
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal"));
}

TEST_F(DispatcherTest, AddPluginPassesOnAFailureToLoad) {
  const ScopedTempDir dir;
  const std::string path = dir.Write("x.so", "a text");
  EXPECT_THROW(dispatcher_.AddPlugin(path), KestrelException);
  EXPECT_THAT([&] { dispatcher_.AddPlugin(dir.GetPath("missing.so")); },
              ThrowsMessage<KestrelException>(
                  StartsWith("Unable to load plugin from " + dir.GetPath("missing.so") + " : ")));
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal"));
}

TEST_F(DispatcherTest, AddPluginPassesOnAFailureToRegisterWithItsContext) {
  const std::string path = TestPluginPath("ThrowingPluginKestrelException");
  EXPECT_THAT(
      [&] { dispatcher_.AddPlugin(path); },
      ThrowsMessage<KestrelException>("Error while trying to register the plugin " + path +
                                      " the plug-in has no fuel The functionality in " + path +
                                      " will not be available until this issue is resolved."));
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal"));
}

// A plug-in that registers the command "early" in the namespace `command` and then fails, and what
// the command returns.

struct FailingPlugin {
  const char* name;
  const char* command;
  const char* answer;
};

class DispatcherFailingPluginTest : public DispatcherTest,
                                    public testing::WithParamInterface<FailingPlugin> {};

TEST_P(DispatcherFailingPluginTest, KeepsItsCommandsAndItsCodeUntilTheEnd) {
  const std::string path = TestPluginPath(GetParam().name);
  {
    Dispatcher dispatcher;
    bool hasThrown = false;
    try {
      dispatcher.AddPlugin(path);
    } catch (...) {
      hasThrown = true;
    }
    EXPECT_TRUE(hasThrown);
    EXPECT_THAT(dispatcher.GetPluginNames(), ElementsAre("Internal"));
    EXPECT_TRUE(IsLoaded(path));

    EXPECT_TRUE(
        dispatcher.ExecuteCommand(MakeCommandInput({GetParam().command, "early"}), output_));
    EXPECT_EQ(output_->GetRootObject()->ToString(), GetParam().answer);
    dispatcher.ResetRegistrations();
    EXPECT_TRUE(IsLoaded(path));
  }
  EXPECT_FALSE(IsLoaded(path));
}

INSTANTIATE_TEST_SUITE_P(
    Plugins, DispatcherFailingPluginTest,
    testing::Values(FailingPlugin{"ThrowingPluginKestrelException", "throwing", "before the throw"},
                    FailingPlugin{"ThrowingPluginStandardException", "throwing",
                                  "before the throw"},
                    FailingPlugin{"ThrowingPluginOwnObject", "throwing", "before the throw"},
                    FailingPlugin{"DuplicatePlugin", "duplicate", "before the duplicate"}),
    [](const auto& row) { return row.param.name; });

TEST_F(DispatcherTest, APluginThatRegistersATakenNameIsRefused) {
  const std::string path = TestPluginPath("DuplicatePlugin");
  EXPECT_THAT([&] { dispatcher_.AddPlugin(path); },
              ThrowsMessage<KestrelException>(
                  "Error while trying to register the plugin " + path +
                  " Duplicate registration in namespace  attempt to register two objects with name "
                  "vexil The functionality in " +
                  path + " will not be available until this issue is resolved."));
}

TEST_F(DispatcherTest, AddPluginPassesOnExceptionsOfOtherTypes) {
  EXPECT_THAT([&] { dispatcher_.AddPlugin(TestPluginPath("ThrowingPluginStandardException")); },
              ThrowsMessage<std::runtime_error>("the plug-in has no oil"));
}

TEST_F(DispatcherTest, TheSameFileTwiceIsADuplicateAndHarmless) {
  const std::string path = TestPluginPath("EchoPlugin");
  dispatcher_.AddPlugin(path);
  EXPECT_THAT([&] { dispatcher_.AddPlugin(path); },
              ThrowsMessage<KestrelException>(HasSubstr(
                  "Duplicate registration in namespace  attempt to register two objects with name "
                  "echo")));
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal", path));
}

TEST_F(DispatcherTest, ResetKeepsTheTreeTheFormattersAndTheCode) {
  const std::string path = TestPluginPath("EchoPlugin");
  std::weak_ptr<Plugin> released;
  {
    Dispatcher dispatcher;
    dispatcher.AddPlugin(path);
    const auto other = std::make_shared<SamplePlugin>("Other");
    released = other;
    dispatcher.RegisterPlugin(other);
    dispatcher.ResetRegistrations();
    EXPECT_THAT(dispatcher.GetPluginNames(), IsEmpty());

    EXPECT_TRUE(dispatcher.HasFormatter("table"));
    EXPECT_THAT(dispatcher.GetRootNamespace()->GetNamespaceNodeNames(),
                ElementsAre("echo", "vexil"));
    EXPECT_TRUE(IsLoaded(path));
    const std::shared_ptr<CommandInput> input = MakeCommandInput({"echo", "say"});
    input->AddParameter("text", "still here");
    EXPECT_TRUE(dispatcher.ExecuteCommand(input, output_));
    EXPECT_EQ(output_->GetRootObject()->ToString(), "still here");
  }
  EXPECT_TRUE(released.expired());
  EXPECT_FALSE(IsLoaded(path));
}

TEST_F(DispatcherTest, ResetReleasesAPluginThatUnmapsNoCodeUnlessItHasFormatters) {
  auto plain = std::make_shared<SamplePlugin>("Plain");
  auto formatting = std::make_shared<SamplePlugin>("Formatting", std::vector<std::string>{"zeta"});
  const std::weak_ptr<Plugin> plainOwner = plain;
  const std::weak_ptr<Plugin> formattingOwner = formatting;
  dispatcher_.RegisterPlugin(std::move(plain));
  dispatcher_.RegisterPlugin(std::move(formatting));
  dispatcher_.ResetRegistrations();
  EXPECT_TRUE(plainOwner.expired());
  EXPECT_FALSE(formattingOwner.expired());
  EXPECT_TRUE(dispatcher_.HasFormatter("zeta"));
}

TEST_F(DispatcherTest, PluginsCanBeRegisteredAfterAReset) {
  dispatcher_.ResetRegistrations();
  dispatcher_.ResetRegistrations();
  dispatcher_.RegisterPlugin(std::make_shared<SamplePlugin>("Later"));
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Later"));
}

TEST_F(DispatcherTest, APluginThatFailsToRegisterIsReleasedWhenItUnmapsNoCode) {
  auto plugin = std::make_shared<SamplePlugin>("Failing");
  plugin->registration = [](const auto&) { throw KestrelException("no"); };
  const std::weak_ptr<Plugin> owner = plugin;
  EXPECT_THROW(dispatcher_.RegisterPlugin(std::move(plugin)), KestrelException);
  EXPECT_TRUE(owner.expired());
}

TEST_F(DispatcherTest, AnEntryPointMayLoadAnotherPlugin) {
  const std::string inner = TestPluginPath("EchoPlugin");
  const ScopedEnvironment nested("KESTREL_NESTED_PLUGIN", inner);
  const std::string outer = TestPluginPath("NestingPlugin");
  dispatcher_.AddPlugin(outer);
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal", inner, outer));
}

TEST_F(DispatcherTest, AnEntryPointMaySurviveTheFailureOfAnotherPlugin) {
  const std::string inner = TestPluginPath("DuplicatePlugin");
  const ScopedEnvironment nested("KESTREL_NESTED_PLUGIN", inner);
  const std::string outer = TestPluginPath("NestingPlugin");
  {
    Dispatcher dispatcher;
    dispatcher.AddPlugin(outer);
    EXPECT_THAT(dispatcher.GetPluginNames(), ElementsAre("Internal", outer));
    EXPECT_TRUE(dispatcher.ExecuteCommand(MakeCommandInput({"duplicate", "early"}), output_));
    EXPECT_TRUE(dispatcher.ExecuteCommand(MakeCommandInput({"nesting"}), output_));
    EXPECT_EQ(output_->GetRootObject()->ToString(), "outside");
  }
  EXPECT_FALSE(IsLoaded(inner));
  EXPECT_FALSE(IsLoaded(outer));
}

// Directories.

TEST_F(DispatcherTest, ADirectoryIsLoadedInByteOrderAndOtherFilesAreIgnored) {
  const ScopedTempDir dir;
  for (const char* name : {"b.so", "a.so", ".hidden.so"}) {
    CopyTestPlugin("NamedAfterFilePlugin", dir.GetPath(name));
  }
  dir.Write("notes.txt", "not a plug-in");
  dir.Write("c.so.1", "not a plug-in either");
  StreamCapture err(STDERR_FILENO);
  dispatcher_.AddExternalDirectoryInt(dir.GetPath(), true);
  EXPECT_EQ(err.GetText(), "");
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal", dir.GetPath(".hidden.so"),
                                                        dir.GetPath("a.so"), dir.GetPath("b.so")));
  EXPECT_EQ(Run({"hidden"}), "hidden");
  EXPECT_EQ(Run({"b"}), "b");
}

// Makes a descriptor that adds one namespace.
std::string MakeDescriptor(const std::string& name) {
  return "<x><version>1.0.0</version><namespaces><namespace path='" + name +
         "'><description>Added.</description></namespace></namespaces></x>";
}

TEST_F(DispatcherTest, DescriptorsAndSharedObjectsAreLoadedInOneByteOrder) {
  const ScopedTempDir dir;
  CopyTestPlugin("NamedAfterFilePlugin", dir.GetPath("b.so"));
  dir.Write("a.xml", MakeDescriptor("a"));
  dir.Write("notes.txt", "not a plug-in");
  dir.Write(".hidden.xml", MakeDescriptor("hidden"));
  StreamCapture err(STDERR_FILENO);
  dispatcher_.AddExternalDirectoryInt(dir.GetPath(), true);
  EXPECT_EQ(err.GetText(), "");
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal", dir.GetPath(".hidden.xml"),
                                                        dir.GetPath("a.xml"), dir.GetPath("b.so")));
  EXPECT_THAT(dispatcher_.GetRootNamespace()->GetNamespaceNodeNames(),
              ElementsAre("a", "b", "hidden", "vexil"));
}

TEST_F(DispatcherTest, AMissingDirectoryIsReportedOnRequestOnly) {
  const ScopedTempDir dir;
  const std::string missing = dir.GetPath("missing");
  StreamCapture err(STDERR_FILENO);
  dispatcher_.AddExternalDirectoryInt(missing, false);
  EXPECT_EQ(err.GetText(), "");
  dispatcher_.AddExternalDirectoryInt(missing, true);
  EXPECT_EQ(err.GetText(), "Unable to open directory " + missing + " for plugin registration\n");
}

// Redirects standard error to a socket that preserves the boundaries of writes.
class WrittenPieces {
 public:
  WrittenPieces() : original_(dup(STDERR_FILENO)) {
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends_), 0);
    dup2(ends_[0], STDERR_FILENO);
  }
  ~WrittenPieces() {
    dup2(original_, STDERR_FILENO);
    close(original_);
    close(ends_[0]);
    close(ends_[1]);
  }
  WrittenPieces(const WrittenPieces&) = delete;
  WrittenPieces& operator=(const WrittenPieces&) = delete;

  // Returns the next write, or an empty string if there is none.
  std::string Next() {
    char piece[4096];
    const ssize_t length = recv(ends_[1], piece, sizeof piece, MSG_DONTWAIT);
    return length > 0 ? std::string(piece, static_cast<std::size_t>(length)) : std::string();
  }

 private:
  int original_;
  int ends_[2];
};

TEST_F(DispatcherTest, EachReportIsWrittenInOnePiece) {
  const ScopedTempDir dir;
  const std::string text = dir.Write("a.so", "a text");
  WrittenPieces pieces;
  dispatcher_.AddExternalDirectoryInt(dir.GetPath("missing"), true);
  dispatcher_.AddExternalDirectoryInt(dir.GetPath(), true);
  const std::string missing = pieces.Next();
  const std::string broken = pieces.Next();
  const std::string rest = pieces.Next();
  EXPECT_EQ(missing,
            "Unable to open directory " + dir.GetPath("missing") + " for plugin registration\n");
  EXPECT_EQ(broken, "Error loading plugin " + text +
                        " skipping.  Error was: Unable to load plugin from " + text + " : " + text +
                        ": file too short\n");
  EXPECT_EQ(rest, "");
}

TEST_F(DispatcherTest, AFileInsteadOfADirectoryIsReportedAsMissing) {
  const ScopedTempDir dir;
  const std::string file = dir.Write("file", "");
  StreamCapture err(STDERR_FILENO);
  dispatcher_.AddExternalDirectoryInt(file, true);
  EXPECT_EQ(err.GetText(), "Unable to open directory " + file + " for plugin registration\n");
}

TEST_F(DispatcherTest, TheSubdirectoryForLibrariesIsLoadedFirst) {
  const ScopedTempDir dir;
  dir.MakeDirectory("lib64");
  CopyTestPlugin("NamedAfterFilePlugin", dir.GetPath("a.so"));
  CopyTestPlugin("NamedAfterFilePlugin", dir.GetPath("lib64/z.so"));
  StreamCapture err(STDERR_FILENO);
  dispatcher_.AddExternalDirectory(dir.GetPath());
  EXPECT_EQ(err.GetText(), "");
  EXPECT_THAT(dispatcher_.GetPluginNames(),
              ElementsAre("Internal", dir.GetPath("lib64/z.so"), dir.GetPath("a.so")));
}

TEST_F(DispatcherTest, AMissingSubdirectoryForLibrariesIsNotReported) {
  const ScopedTempDir dir;
  const std::string missing = dir.GetPath("missing");
  StreamCapture err(STDERR_FILENO);
  dispatcher_.AddExternalDirectory(dir.GetPath());
  EXPECT_EQ(err.GetText(), "");
  dispatcher_.AddExternalDirectory(missing);
  EXPECT_EQ(err.GetText(), "Unable to open directory " + missing + " for plugin registration\n");
}

TEST_F(DispatcherTest, ReportsWhichDefaultDirectoriesAreMissing) {
  const bool haveBoth = access(KESTREL_PLUGIN_DIR, R_OK) == 0;
  const bool haveExt = access(KESTREL_PLUGIN_DIR "/ext", R_OK) == 0;
  std::string expected;
  if (!haveBoth) {
    expected += "Unable to open directory " KESTREL_PLUGIN_DIR " for plugin registration\n";
  }
  if (!haveExt) {
    expected += "Unable to open directory " KESTREL_PLUGIN_DIR "/ext for plugin registration\n";
  }
  StreamCapture err(STDERR_FILENO);
  dispatcher_.AddDefaultDirectories();
  EXPECT_EQ(err.GetText(), expected);
}

TEST_F(DispatcherTest, OneBrokenPluginDoesNotStopTheOthers) {
  const ScopedTempDir dir;
  const std::string text = dir.Write("a.so", "a text");
  const std::string throwing = dir.GetPath("b.so");
  CopyTestPlugin("ThrowingPluginKestrelException", throwing);
  const std::string noEntry = dir.GetPath("c.so");
  CopyTestPlugin("NoEntryPoint", noEntry);
  const std::string folder = dir.MakeDirectory("d.so");
  const std::string fifo = dir.GetPath("e.so");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  CopyTestPlugin("NamedAfterFilePlugin", dir.GetPath("f.so"));

  StreamCapture err(STDERR_FILENO);
  dispatcher_.AddExternalDirectoryInt(dir.GetPath(), true);
  EXPECT_EQ(
      err.GetText(),
      "Error loading plugin " + text + " skipping.  Error was: Unable to load plugin from " + text +
          " : " + text + ": file too short\n" +  //
          "Error loading plugin " + throwing +
          " skipping.  Error was: Error while trying to register the plugin " + throwing +
          " the plug-in has no fuel The functionality in " + throwing +
          " will not be available until this issue is resolved.\n" +  //
          "Error loading plugin " + noEntry +
          " skipping.  Error was: Unable to get plugin registration point from " + noEntry + " : " +
          noEntry + ": undefined symbol: AutoCli_RegisterNamespaces\n" +  //
          "Error loading plugin " + folder + " skipping.  Error was: Unable to load plugin from " +
          folder + " : not a regular file\n" +  //
          "Error loading plugin " + fifo + " skipping.  Error was: Unable to load plugin from " +
          fifo + " : not a regular file\n");
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal", dir.GetPath("f.so")));
  EXPECT_EQ(Run({"f"}), "f");
  EXPECT_EQ(Run({"throwing", "early"}), "before the throw");
  EXPECT_FALSE(IsLoaded(noEntry));
}

TEST_F(DispatcherTest, AnExceptionOfAnotherTypeStopsLoadingTheDirectory) {
  const ScopedTempDir dir;
  CopyTestPlugin("NamedAfterFilePlugin", dir.GetPath("a.so"));
  CopyTestPlugin("ThrowingPluginStandardException", dir.GetPath("b.so"));
  CopyTestPlugin("NamedAfterFilePlugin", dir.GetPath("c.so"));
  StreamCapture err(STDERR_FILENO);
  EXPECT_THAT([&] { dispatcher_.AddExternalDirectoryInt(dir.GetPath(), true); },
              ThrowsMessage<std::runtime_error>("the plug-in has no oil"));
  EXPECT_EQ(err.GetText(), "");
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal", dir.GetPath("a.so")));
}

TEST_F(DispatcherTest, LoadsAThousandSharedObjects) {
  constexpr std::size_t kCount = 1000;
  const ScopedTempDir dir;
  for (std::size_t i = 0; i < kCount; ++i) {
    CopyTestPlugin("NamedAfterFilePlugin", dir.GetPath("p" + std::to_string(i) + ".so"));
  }
  StreamCapture err(STDERR_FILENO);
  dispatcher_.AddExternalDirectoryInt(dir.GetPath(), true);
  EXPECT_EQ(err.GetText(), "");
  EXPECT_EQ(dispatcher_.GetPluginNames().size(), kCount + 1);
  EXPECT_EQ(Run({"p999"}), "p999");
}

// Registration and formatters.

TEST_F(DispatcherTest, RegisterPluginPassesTheRootAndDoesNotInitialize) {
  const auto plugin = std::make_shared<SamplePlugin>("Sample");
  std::shared_ptr<Namespace> seen;
  plugin->registration = [&](const auto& root) { seen = root; };
  dispatcher_.RegisterPlugin(plugin);
  EXPECT_EQ(seen, dispatcher_.GetRootNamespace());
  EXPECT_EQ(plugin->initializations, 0);
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal", "Sample"));
}

TEST_F(DispatcherTest, RegisterPluginRefusesNull) {
  EXPECT_THAT([&] { dispatcher_.RegisterPlugin(nullptr); },
              ThrowsMessage<KestrelException>("Null plugin passed to RegisterPlugin"));
}

TEST_F(DispatcherTest, PluginsAreListedInTheOrderOfRegistration) {
  for (const char* name : {"Zeta", "Alpha", "Zeta"}) {
    dispatcher_.RegisterPlugin(std::make_shared<SamplePlugin>(name));
  }
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal", "Zeta", "Alpha", "Zeta"));
}

TEST_F(DispatcherTest, FormattersAreFoundByNameAndListedInByteOrder) {
  const auto plugin = std::make_shared<SamplePlugin>(
      "Sample", std::vector<std::string>{"zeta", "Alpha", "simplest"});
  dispatcher_.RegisterPlugin(plugin);
  EXPECT_TRUE(dispatcher_.HasFormatter("zeta"));
  EXPECT_EQ(dispatcher_.GetFormatter("zeta"), plugin->formatters[0]);
  EXPECT_FALSE(dispatcher_.HasFormatter("Zeta"));
  EXPECT_EQ(dispatcher_.GetFormatter("Zeta"), nullptr);
  EXPECT_FALSE(dispatcher_.HasFormatter("clihelp"));

  std::vector<std::string> names;
  for (const std::shared_ptr<Formatter>& formatter : dispatcher_.GetFormatters()) {
    names.push_back(formatter->GetName());
  }
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
  EXPECT_EQ(names.front(), "Alpha");
  EXPECT_EQ(names.back(), "zeta");
}

TEST_F(DispatcherTest, ThePluginThatOwnsAFormatterDecidesWhetherItExists) {
  const auto plugin =
      std::make_shared<SamplePlugin>("Sample", std::vector<std::string>{"zeta", "eta"});
  dispatcher_.RegisterPlugin(plugin);
  const std::size_t count = dispatcher_.GetFormatters().size();

  plugin->deniesFormatters = true;
  EXPECT_FALSE(dispatcher_.HasFormatter("zeta"));
  EXPECT_EQ(dispatcher_.GetFormatter("zeta"), nullptr);
  EXPECT_EQ(dispatcher_.GetFormatters().size(), count);

  plugin->formatters.clear();
  EXPECT_EQ(dispatcher_.GetFormatters().size(), count - 2);
}

TEST_F(DispatcherTest, NullsAmongTheFormattersOfAPluginAreSkipped) {
  const auto plugin = std::make_shared<SamplePlugin>("Sample", std::vector<std::string>{"zeta"});
  plugin->formatters.insert(plugin->formatters.begin(), nullptr);
  dispatcher_.RegisterPlugin(plugin);
  EXPECT_EQ(dispatcher_.GetFormatter("zeta"), plugin->formatters[1]);
}

TEST_F(DispatcherTest, APluginWithATakenFormatterNameIsRefusedButItsCommandsStay) {
  const std::shared_ptr<Formatter> table = dispatcher_.GetFormatter("table");
  const auto plugin = std::make_shared<SamplePlugin>(
      "Second", std::vector<std::string>{"fresh", "table", "simple"});
  plugin->registration = [](const auto& root) {
    RegisterAt(root, {"second", "list"}, MakeAnsweringCommand("reachable"));
  };
  EXPECT_THAT(
      [&] { dispatcher_.RegisterPlugin(plugin); },
      ThrowsMessage<KestrelException>(
          "Error while trying to register the plugin Second  this plugin has a formatter table "
          "that was already registered from the plugin Internal  The functionality in Second will "
          "not be available until this issue is resolved."));
  EXPECT_EQ(dispatcher_.GetFormatter("table"), table);
  EXPECT_FALSE(dispatcher_.HasFormatter("fresh"));
  EXPECT_THAT(dispatcher_.GetPluginNames(), ElementsAre("Internal"));
  EXPECT_EQ(Run({"second", "list"}), "reachable");
}

TEST_F(DispatcherTest, OnePluginMayOfferANameTwice) {
  const auto plugin =
      std::make_shared<SamplePlugin>("Sample", std::vector<std::string>{"zeta", "zeta"});
  dispatcher_.RegisterPlugin(plugin);
  EXPECT_EQ(dispatcher_.GetFormatter("zeta"), plugin->formatters[0]);
}

TEST_F(DispatcherTest, AFailedRegistrationIsReportedBeforeAFormatterWhoseNameIsTaken) {
  const auto plugin = std::make_shared<SamplePlugin>("Second", std::vector<std::string>{"table"});
  plugin->registration = [](const auto&) { throw KestrelException("both at once."); };
  EXPECT_THAT([&] { dispatcher_.RegisterPlugin(plugin); },
              ThrowsMessage<KestrelException>(
                  "Error while trying to register the plugin Second both at once. The "
                  "functionality in Second will not be available until this issue is resolved."));
}

// Finding a command.

TEST_F(DispatcherTest, GetCommandFindsTheCommandAndLeavesTheInputUnchanged) {
  const std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("here");
  Register({"network", "ip", "list"}, command);
  const std::shared_ptr<CommandInput> input = MakeCommandInput({"network", "ip", "list"});
  EXPECT_EQ(dispatcher_.GetCommand(input, output_), command);
  EXPECT_THAT(output_->GetErrors(), IsEmpty());
  EXPECT_THAT(input->GetCommandPath(), ElementsAre("network", "ip", "list"));
}

TEST_F(DispatcherTest, AnUnknownWordCausesTwoErrors) {
  Register({"network", "ip", "list"}, MakeAnsweringCommand("here"));
  const std::shared_ptr<CommandInput> input = MakeCommandInput({"network", "bogus"});
  EXPECT_EQ(dispatcher_.GetCommand(input, output_), nullptr);
  EXPECT_THAT(output_->GetErrors(),
              ElementsAre("Unable to find a command or namespace with the name 'bogus' in "
                          "namespace network",
                          "Unable to find command"));
  EXPECT_THAT(input->GetCommandPath(), ElementsAre("network", "bogus"));
}

TEST_F(DispatcherTest, AWordAfterACommandCausesTwoErrors) {
  Register({"network", "ip", "list"}, MakeAnsweringCommand("here"));
  EXPECT_EQ(Run({"network", "ip", "list", "extra", "more"}),
            "Unable to find a namespace or command with the name 'extra more' on the command "
            "'network ip list'. Commands cannot have sub-commands or sub-namespaces.\n"
            "Unable to find command\n");
}

TEST_F(DispatcherTest, AnEmptyPathFindsNoCommand) {
  const std::shared_ptr<CommandInput> input = MakeCommandInput({});
  EXPECT_FALSE(dispatcher_.ExecuteCommand(input, output_));
  EXPECT_THAT(output_->GetErrors(), ElementsAre("Unable to find command"));
}

TEST_F(DispatcherTest, APathToANamespaceCausesOneError) {
  const std::shared_ptr<CommandInput> input = MakeCommandInput({"vexil", "command"});
  EXPECT_FALSE(dispatcher_.ExecuteCommand(input, output_));
  EXPECT_THAT(output_->GetErrors(), ElementsAre("Path refers to a namespace, not a command."));
}

// A node that has the type of a command but is not a Command, so that it cannot run.
class BareSpec : public CommandSpec {
 public:
  std::shared_ptr<CallSpec::InputSpec> GetInputSpecInternal() override { return nullptr; }
  std::shared_ptr<CallSpec::OutputSpec> GetOutputSpecInternal() override { return nullptr; }
};

TEST_F(DispatcherTest, ANodeOfTheTypeCommandThatIsNotACommandAddsNoMessage) {
  RegisterAt(dispatcher_.GetRootNamespace(), {"bare"}, std::make_shared<BareSpec>());
  const std::shared_ptr<CommandInput> input = MakeCommandInput({"bare"});
  EXPECT_EQ(dispatcher_.GetCommand(input, output_), nullptr);
  EXPECT_FALSE(dispatcher_.ExecuteCommand(input, output_));
  EXPECT_THAT(output_->GetErrors(), IsEmpty());
}

// Running a command.

std::shared_ptr<SampleCommand> MakeDeletingCommand() {
  std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("deleted");
  const std::shared_ptr<ParameterSpec> what = ParameterSpec::New("delete", ParameterType::String);
  what->SetShortName("d");
  command->inputSpec->AddParameter(what);
  return command;
}

TEST_F(DispatcherTest, ExecuteCommandPassesTheSpecificationToTheInputAndRuns) {
  const std::shared_ptr<SampleCommand> command = MakeDeletingCommand();
  std::string seen;
  command->work = [&](const auto& input, const auto& output) {
    seen = input->GetParameter("delete");
    output->SetRootObject(MetaString::New("gone"));
  };
  Register({"file"}, command);
  const std::shared_ptr<CommandInput> input = MakeCommandInput({"file"});
  input->AddParameter("d", "x");
  EXPECT_TRUE(dispatcher_.ExecuteCommand(input, output_));
  EXPECT_EQ(seen, "x");
  EXPECT_EQ(output_->GetRootObject()->ToString(), "gone");
}

TEST_F(DispatcherTest, BadParametersAreAllReportedAndTheCommandDoesNotRun) {
  const std::shared_ptr<SampleCommand> command = MakeDeletingCommand();
  Register({"file"}, command);
  const std::shared_ptr<CommandInput> input = MakeCommandInput({"file"});
  input->AddParameter("colour", "red");
  EXPECT_FALSE(dispatcher_.ExecuteCommand(input, output_));
  EXPECT_THAT(output_->GetErrors(),
              ElementsAre("Unknown parameter : colour", "Missing required parameter --delete"));
  EXPECT_EQ(command->executions, 0);
}

TEST_F(DispatcherTest, MessagesOfAValidationThatReturnsTrueStopTheCall) {
  const std::shared_ptr<SampleCommand> command = MakeDeletingCommand();
  Register({"file"}, command);
  const std::shared_ptr<CommandInput> input = MakeCommandInput({"file"});
  input->AddParameter("delete", "a");
  input->AddParameter("delete", "b");
  EXPECT_FALSE(dispatcher_.ExecuteCommand(input, output_));
  EXPECT_EQ(output_->GetErrors().size(), 1U);
  EXPECT_EQ(command->executions, 0);
}

TEST_F(DispatcherTest, ErrorsFromBeforeTheCallDoNotStopIt) {
  const std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("here");
  Register({"file"}, command);
  output_->AddErrorMessage("from before");
  EXPECT_FALSE(dispatcher_.ExecuteCommand(MakeCommandInput({"file"}), output_));
  EXPECT_EQ(command->executions, 1);
  EXPECT_THAT(output_->GetErrors(), ElementsAre("from before"));
}

TEST_F(DispatcherTest, HelpIsReturnedAlthoughParametersAreMissing) {
  const std::shared_ptr<SampleCommand> command = MakeDeletingCommand();
  Register({"file"}, command);
  const std::shared_ptr<CommandInput> input = MakeCommandInput({"file"});
  input->AddParameter("h", "");
  EXPECT_TRUE(dispatcher_.ExecuteCommand(input, output_));
  EXPECT_EQ(output_->GetOutputType(), Output::Help);
  EXPECT_EQ(command->executions, 0);
}

TEST_F(DispatcherTest, ErrorsOfTheCommandMakeTheResultFalse) {
  Register({"throw"}, MakeThrowingCommand("boom"));
  EXPECT_EQ(Run({"throw"}), "Error on command throw : boom\n");
  Register({"lie"}, MakeLyingCommand());
  EXPECT_THAT(Run({"lie"}), HasSubstr("Implementation error! The output of this command does not "
                                      "match the declared output type, see errors above.\n"));
}

TEST_F(DispatcherTest, ACommandWithoutAnInputSpecificationThrows) {
  const std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("here");
  command->inputSpec = nullptr;
  Register({"file"}, command);
  EXPECT_THAT([&] { dispatcher_.ExecuteCommand(MakeCommandInput({"file"}), output_); },
              ThrowsMessage<KestrelException>("The command 'file' has no input specification."));
}

TEST_F(DispatcherTest, DefaultFormatParametersAreThoseOfTheCommand) {
  const std::shared_ptr<SampleCommand> command = MakeAnsweringCommand("here");
  command->SetDefaultOutputFormatter("table");
  command->SetDefaultOutputParameter("wrap-last", "true");
  Register({"file"}, command);
  const FormatParameters params =
      dispatcher_.GetDefaultOutputFormatParameters(MakeCommandInput({"file"}), output_);
  EXPECT_EQ(params.GetFormatter(), "table");
  EXPECT_EQ(params.GetParameter("wrap-last"), "true");
  EXPECT_THAT(output_->GetErrors(), IsEmpty());
}

TEST_F(DispatcherTest, WithoutCommandTheDefaultFormatParametersAreEmpty) {
  const FormatParameters params =
      dispatcher_.GetDefaultOutputFormatParameters(MakeCommandInput({"bogus"}), output_);
  EXPECT_EQ(params.GetFormatter(), "");
  EXPECT_THAT(params.GetParameters(), IsEmpty());
  EXPECT_THAT(
      output_->GetErrors(),
      ElementsAre("Unable to find a command or namespace with the name 'bogus' in namespace ",
                  "Unable to find command"));
}

// Formatting.

class DispatcherFormatTest : public DispatcherTest {
 protected:
  DispatcherFormatTest() {
    output_->SetRootObject(MetaString::New("an answer"));
    dispatcher_.RegisterPlugin(plugin_);
  }

  SampleFormatter& GetSampleFormatter() {
    return dynamic_cast<SampleFormatter&>(*plugin_->formatters.front());
  }

  // Formats with the formatter `name` to `printed_`.
  bool Format(const std::string& name) {
    params_.SetFormatter(name);
    return dispatcher_.FormatOutput(output_, params_, display_, printed_);
  }

  std::shared_ptr<SamplePlugin> plugin_ =
      std::make_shared<SamplePlugin>("Sample", std::vector<std::string>{"sample"});
  FormatParameters params_;
  DisplayContext display_;
  std::ostringstream printed_;
};

TEST_F(DispatcherFormatTest, AnEmptyFormatterNamePrintsNothing) {
  EXPECT_TRUE(Format(""));
  EXPECT_EQ(printed_.str(), "");
  EXPECT_THAT(output_->GetErrors(), IsEmpty());
}

TEST_F(DispatcherFormatTest, TheNamedFormatterPrintsToTheStreamGiven) {
  EXPECT_TRUE(Format("sample"));
  EXPECT_EQ(printed_.str(), "sample: an answer\n");
}

TEST_F(DispatcherFormatTest, TheFormatterGetsTheArgumentsThemselves) {
  bool sawAll = false;
  GetSampleFormatter().work = [&](const auto& output, auto& params, auto& display, auto& out) {
    sawAll = output == output_ && &params == &params_ && &display == &display_ && &out == &printed_;
  };
  EXPECT_TRUE(Format("sample"));
  EXPECT_TRUE(sawAll);
}

TEST_F(DispatcherFormatTest, AnUnknownFormatterIsAnError) {
  EXPECT_FALSE(Format("clihelp"));
  EXPECT_EQ(printed_.str(), "");
  EXPECT_THAT(output_->GetErrors(), ElementsAre("Unable to find requested formatter: clihelp"));
}

TEST_F(DispatcherFormatTest, AFormatterThatThrowsIsAnErrorAndKeepsWhatItPrinted) {
  GetSampleFormatter().work = [](const auto&, auto&, auto&, auto& out) {
    out << "so far";
    throw KestrelException("cannot print this");
  };
  EXPECT_FALSE(Format("sample"));
  EXPECT_EQ(printed_.str(), "so far");
  EXPECT_THAT(output_->GetErrors(), ElementsAre("cannot print this"));
}

TEST_F(DispatcherFormatTest, OtherExceptionsOfAFormatterReachTheCaller) {
  GetSampleFormatter().work = [](const auto&, auto&, auto&, auto&) {
    throw std::runtime_error("something else");
  };
  EXPECT_THAT([&] { Format("sample"); }, ThrowsMessage<std::runtime_error>("something else"));
  EXPECT_THAT(output_->GetErrors(), IsEmpty());
}

TEST_F(DispatcherFormatTest, ErrorsThatAFormatterAddsLeaveTheResultTrue) {
  GetSampleFormatter().work = [](const auto& output, auto&, auto&, auto&) {
    output->AddErrorMessage("half of it is missing");
  };
  EXPECT_TRUE(Format("sample"));
  EXPECT_THAT(output_->GetErrors(), ElementsAre("half of it is missing"));
}

}  // namespace
}  // namespace Kestrel::AutoCli
