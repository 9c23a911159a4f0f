// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/SharedLibraryPlugin.h"

#include <dlfcn.h>
#include <elf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <memory>
#include <string>
#include <type_traits>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/RootNamespace.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/metaobj/MetaObject.h"
#include "support/ScopedTempDir.h"
#include "support/TestPlugins.h"

namespace Kestrel::AutoCli {
namespace {

using testing::AnyOf;
using Testing::CopyTestPlugin;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using Testing::IsLoaded;
using Testing::ScopedTempDir;
using Testing::TestPluginPath;
using testing::ThrowsMessage;

static_assert(!std::is_copy_constructible<SharedLibraryPlugin>::value,
              "one owner closes the shared object");

// Returns the message of the loader for `path`.
std::string LoaderErrorFor(const std::string& path) {
  if (void* const handle = dlopen(path.c_str(), RTLD_LAZY)) {
    dlclose(handle);
    return "no error";
  }
  return dlerror();
}

TEST(SharedLibraryPluginTest, ItsNameIsExactlyThePathItWasMadeWith) {
  for (const char* path : {"/some/where/x.so", "./a//b.so", "x", ""}) {
    EXPECT_EQ(SharedLibraryPlugin::New(path)->GetName(), path);
  }
}

TEST(SharedLibraryPluginTest, NewOpensNothing) {
  const std::string path = TestPluginPath("EchoPlugin");
  const std::shared_ptr<SharedLibraryPlugin> plugin = SharedLibraryPlugin::New(path);
  EXPECT_FALSE(IsLoaded(path));
}

TEST(SharedLibraryPluginTest, TheSharedObjectStaysLoadedAsLongAsThePluginExists) {
  const std::string path = TestPluginPath("EchoPlugin");
  std::shared_ptr<SharedLibraryPlugin> plugin = SharedLibraryPlugin::New(path);
  plugin->Initialize();
  EXPECT_TRUE(IsLoaded(path));
  plugin.reset();
  EXPECT_FALSE(IsLoaded(path));
}

TEST(SharedLibraryPluginTest, RegistersItsNamespacesBelowTheRoot) {
  const std::shared_ptr<SharedLibraryPlugin> plugin =
      SharedLibraryPlugin::New(TestPluginPath("EchoPlugin"));
  plugin->Initialize();
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  plugin->RegisterNamespaces(root);

  std::list<std::string> path{"echo", "say"};
  EXPECT_EQ(root->ResolveNode(path)->GetType(), NodeType::Command);
  EXPECT_EQ(root->GetNamespaceNode("echo")->GetDescription(), "Answers of a plug-in.");
}

TEST(SharedLibraryPluginTest, BeforeInitializeItRegistersNothing) {
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  SharedLibraryPlugin::New(TestPluginPath("EchoPlugin"))->RegisterNamespaces(root);
  EXPECT_THAT(root->GetNamespaceNodeNames(), IsEmpty());
}

TEST(SharedLibraryPluginTest, AfterAFailedInitializeItRegistersNothing) {
  const std::shared_ptr<SharedLibraryPlugin> plugin =
      SharedLibraryPlugin::New(TestPluginPath("NoEntryPoint"));
  EXPECT_THROW(plugin->Initialize(), KestrelException);
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  plugin->RegisterNamespaces(root);
  EXPECT_THAT(root->GetNamespaceNodeNames(), IsEmpty());
}

TEST(SharedLibraryPluginTest, CanBeInitializedAgain) {
  const std::string path = TestPluginPath("EchoPlugin");
  std::shared_ptr<SharedLibraryPlugin> plugin = SharedLibraryPlugin::New(path);
  plugin->Initialize();
  plugin->Initialize();
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  plugin->RegisterNamespaces(root);
  EXPECT_THAT(root->GetNamespaceNodeNames(), ElementsAre("echo"));
}

TEST(SharedLibraryPluginTest, HasNoFormatters) {
  const std::shared_ptr<SharedLibraryPlugin> plugin = SharedLibraryPlugin::New("x.so");
  EXPECT_FALSE(plugin->HasFormatter("table"));
  EXPECT_FALSE(plugin->HasFormatter(""));
  EXPECT_EQ(plugin->GetFormatter("table"), nullptr);
  EXPECT_THAT(plugin->GetFormatters(), IsEmpty());
  EXPECT_EQ(&plugin->GetFormatters(), &SharedLibraryPlugin::New("y.so")->GetFormatters());
}

TEST(SharedLibraryPluginTest, ATextFileIsRefusedWithTheLoadersText) {
  const ScopedTempDir dir;
  const std::string path = dir.Write("x.so", std::string(1000, 'x'));
  const std::string expected = "Unable to load plugin from " + path + " : " + LoaderErrorFor(path);
  EXPECT_THAT(expected, EndsWith("invalid ELF header"));
  EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
              ThrowsMessage<KestrelException>(expected));
}

TEST(SharedLibraryPluginTest, AMissingFileIsRefusedWithTheLoadersText) {
  const ScopedTempDir dir;
  const std::string path = dir.GetPath("missing.so");
  EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
              ThrowsMessage<KestrelException>(
                  "Unable to load plugin from " + path + " : " + path +
                  ": cannot open shared object file: No such file or directory"));
}

TEST(SharedLibraryPluginTest, ASharedObjectWithoutTheEntryPointIsRefusedAndClosed) {
  const std::string path = TestPluginPath("NoEntryPoint");
  EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
              ThrowsMessage<KestrelException>("Unable to get plugin registration point from " +
                                              path + " : " + path +
                                              ": undefined symbol: AutoCli_RegisterNamespaces"));
  EXPECT_FALSE(IsLoaded(path));
}

TEST(SharedLibraryPluginTest, AnEntryPointWithTheAddressNullIsRefusedWithoutAMessageOfTheLoader) {
  const std::string path = TestPluginPath("NullEntryPoint");
  // The message of an earlier call must not appear.
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "Kestrel_NoSuchSymbol"), nullptr);
  EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
              ThrowsMessage<KestrelException>("Unable to get plugin registration point from " +
                                              path + " : (null)"));
  EXPECT_FALSE(IsLoaded(path));
}

// The number of the plug-in interface.

TEST(SharedLibraryPluginTest, APluginCompiledForAnotherAbiIsRefusedAndClosed) {
  const std::string path = TestPluginPath("OtherAbiPlugin");
  EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
              ThrowsMessage<KestrelException>(
                  "Unable to load plugin from " + path + " : " + path +
                  ": compiled for plug-in ABI 4000000000, but this library has plug-in ABI 1"));
  EXPECT_FALSE(IsLoaded(path));
}

TEST(SharedLibraryPluginTest, APluginWithoutAnAbiNumberIsLoaded) {
  const std::shared_ptr<SharedLibraryPlugin> plugin =
      SharedLibraryPlugin::New(TestPluginPath("NoAbiPlugin"));
  plugin->Initialize();
  EXPECT_EQ(dlerror(), nullptr);
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  plugin->RegisterNamespaces(root);
  EXPECT_THAT(root->GetNamespaceNodeNames(), ElementsAre("own"));
}

// If the number were a unique symbol, the loader would use the first definition for all plug-ins.
TEST(SharedLibraryPluginTest, EachPluginHasAnAbiNumberOfItsOwn) {
  const std::unique_ptr<void, int (*)(void*)> other(
      dlopen(TestPluginPath("OtherAbiPlugin").c_str(), RTLD_LAZY | RTLD_GLOBAL), dlclose);
  ASSERT_NE(other, nullptr);
  const std::string path = TestPluginPath("EchoPlugin");
  SharedLibraryPlugin::New(path)->Initialize();

  const std::unique_ptr<void, int (*)(void*)> echo(dlopen(path.c_str(), RTLD_LAZY), dlclose);
  const auto* const number = static_cast<const unsigned*>(dlsym(echo.get(), "AutoCli_PluginAbi"));
  ASSERT_NE(number, nullptr);
  EXPECT_EQ(*number, 1U);
}

// Incomplete files.

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

TEST(SharedLibraryPluginTest, ASharedObjectThatWasCutShortIsRefused) {
  const ScopedTempDir dir;
  const std::string whole = ReadFile(TestPluginPath("EchoPlugin"));
  for (const std::size_t size : {std::size_t{1000}, std::size_t{4096}, whole.size() / 4}) {
    const std::string path = dir.Write(std::to_string(size) + ".so", whole.substr(0, size));
    EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
                ThrowsMessage<KestrelException>("Unable to load plugin from " + path + " : " +
                                                path + ": file too short"));
  }
}

TEST(SharedLibraryPluginTest, FaultsThatTheLoaderFindsAreReportedWithItsMessage) {
  const ScopedTempDir dir;
  const std::string whole = ReadFile(TestPluginPath("EchoPlugin"));
  std::string odd = whole.substr(0, 4096);
  odd[EI_PAD] = 1;
  for (const std::string& path :
       {dir.Write("1.so", whole.substr(0, 1)), dir.Write("64.so", whole.substr(0, 64)),
        dir.Write("100.so", whole.substr(0, 100)), dir.Write("odd.so", odd)}) {
    EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
                ThrowsMessage<KestrelException>("Unable to load plugin from " + path + " : " +
                                                LoaderErrorFor(path)));
  }
}

// Files of other types.

std::string NotAFileMessage(const std::string& path) {
  return "Unable to load plugin from " + path + " : not a regular file";
}

TEST(SharedLibraryPluginTest, AFifoIsRefusedUnopened) {
  const ScopedTempDir dir;
  const std::string path = dir.GetPath("x.so");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
              ThrowsMessage<KestrelException>(NotAFileMessage(path)));
}

TEST(SharedLibraryPluginTest, ADirectoryIsRefused) {
  const ScopedTempDir dir;
  const std::string path = dir.MakeDirectory("x.so");
  EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
              ThrowsMessage<KestrelException>(NotAFileMessage(path)));
}

TEST(SharedLibraryPluginTest, ALinkToADeviceIsRefused) {
  const ScopedTempDir dir;
  const std::string path = dir.GetPath("x.so");
  std::filesystem::create_symlink("/dev/zero", path);
  EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
              ThrowsMessage<KestrelException>(NotAFileMessage(path)));
}

TEST(SharedLibraryPluginTest, ALinkToASharedObjectIsLoaded) {
  const ScopedTempDir dir;
  const std::string path = dir.GetPath("x.so");
  std::filesystem::create_symlink(TestPluginPath("EchoPlugin"), path);
  const std::shared_ptr<SharedLibraryPlugin> plugin = SharedLibraryPlugin::New(path);
  plugin->Initialize();
  EXPECT_TRUE(IsLoaded(path));
}

// Makes `dir` the working directory of this process for as long as the object exists.
class ScopedWorkingDirectory {
 public:
  explicit ScopedWorkingDirectory(const std::string& dir)
      : previous_(std::filesystem::current_path()) {
    std::filesystem::current_path(dir);
  }
  ~ScopedWorkingDirectory() { std::filesystem::current_path(previous_); }
  ScopedWorkingDirectory(const ScopedWorkingDirectory&) = delete;
  ScopedWorkingDirectory& operator=(const ScopedWorkingDirectory&) = delete;

 private:
  std::filesystem::path previous_;
};

TEST(SharedLibraryPluginTest, TheLoaderSearchesForAPathWithoutSlash) {
  const ScopedTempDir dir;
  CopyTestPlugin("EchoPlugin", dir.GetPath("here.so"));
  dir.MakeDirectory("folder.so");
  const ScopedWorkingDirectory inDir(dir.GetPath());
  for (const char* name : {"here.so", "folder.so"}) {
    EXPECT_THAT([&] { SharedLibraryPlugin::New(name)->Initialize(); },
                ThrowsMessage<KestrelException>(
                    std::string("Unable to load plugin from ") + name + " : " + name +
                    ": cannot open shared object file: No such file or directory"));
  }
  SharedLibraryPlugin::New("./here.so")->Initialize();
  EXPECT_THAT([] { SharedLibraryPlugin::New("./folder.so")->Initialize(); },
              ThrowsMessage<KestrelException>(NotAFileMessage("./folder.so")));
}

// How symbols are bound.

TEST(SharedLibraryPluginTest, SymbolsAreBoundLazilyAndVisibleToLaterPlugins) {
  // The borrower can be opened although the function that it calls is not defined yet.
  const std::shared_ptr<SharedLibraryPlugin> borrower =
      SharedLibraryPlugin::New(TestPluginPath("BorrowerPlugin"));
  borrower->Initialize();
  const std::shared_ptr<SharedLibraryPlugin> lender =
      SharedLibraryPlugin::New(TestPluginPath("LenderPlugin"));
  lender->Initialize();

  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  borrower->RegisterNamespaces(root);
  const auto command = std::dynamic_pointer_cast<Command>(root->GetNamespaceNode("borrower"));
  const std::shared_ptr<CallSpec::Output> output = CallSpec::Output::New();
  command->Execute(CallSpec::Input::New(), output);
  EXPECT_EQ(output->GetRootObject()->ToString(), "a text on loan");
}

// Plug-ins that are checked before they are loaded.

constexpr uid_t kOtherUser = 4711;

/// The real user of the process differs from the effective one, so every plug-in is checked.
class ForeignRightsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) {
      GTEST_SKIP() << "Only root can change the real user.";
    }
    ASSERT_EQ(setresuid(kOtherUser, 0, 0), 0);
    try {
      SharedLibraryPlugin::New(CopyOf("LenderPlugin"))->Initialize();
    } catch (const KestrelException& error) {
      ASSERT_THAT(error.what(),
                  AnyOf(HasSubstr(" belongs to user "), HasSubstr(" can be written by ")));
      GTEST_SKIP() << "The files of this test are not trusted: " << error.what();
    }
  }

  void TearDown() override {
    if (geteuid() == 0) {
      ASSERT_EQ(setresuid(0, 0, 0), 0);
    }
  }

  std::string CopyOf(const std::string& name) const {
    const std::string path = dir_.GetPath(name + ".so");
    CopyTestPlugin(name, path);
    SetMode(path, 0755);
    return path;
  }

  static void SetMode(const std::string& path, mode_t mode) {
    EXPECT_EQ(chmod(path.c_str(), mode), 0);
  }

  static std::list<std::string> NamesOf(const std::string& path) {
    const std::shared_ptr<SharedLibraryPlugin> plugin = SharedLibraryPlugin::New(path);
    plugin->Initialize();
    const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
    plugin->RegisterNamespaces(root);
    const auto names = root->GetNamespaceNodeNames();
    return {names.begin(), names.end()};
  }

  static void ExpectRefused(const std::string& path, const std::string& reason) {
    EXPECT_THAT([&] { SharedLibraryPlugin::New(path)->Initialize(); },
                ThrowsMessage<KestrelException>(reason));
  }

  const ScopedTempDir dir_;
};

TEST_F(ForeignRightsTest, ATrustedSharedObjectIsLoaded) {
  EXPECT_THAT(NamesOf(CopyOf("EchoPlugin")), ElementsAre("echo"));
  EXPECT_THAT(NamesOf(CopyOf("NoAbiPlugin")), ElementsAre("own"));
}

TEST_F(ForeignRightsTest, AFileThatOthersCanWriteIsRefused) {
  const std::string path = CopyOf("EchoPlugin");
  SetMode(path, 0666);
  ExpectRefused(
      path, "Unable to load plugin from " + path + " : " + path + " can be written by every user");
}

TEST_F(ForeignRightsTest, MessagesNameThePathAndNotTheFileDescriptor) {
  const std::string missing = dir_.GetPath("missing.so");
  ExpectRefused(missing, "Unable to load plugin from " + missing + " : " + missing +
                             ": cannot open shared object file: No such file or directory");
  const std::string text = dir_.Write("text.so", std::string(1000, 'x'));
  SetMode(text, 0644);
  ExpectRefused(text, "Unable to load plugin from " + text + " : " + text + ": invalid ELF header");
  const std::string bare = CopyOf("NoEntryPoint");
  ExpectRefused(bare, "Unable to get plugin registration point from " + bare + " : " + bare +
                          ": undefined symbol: AutoCli_RegisterNamespaces");
  ExpectRefused(dir_.GetPath(),
                "Unable to load plugin from " + dir_.GetPath() + " : not a regular file");
}

TEST_F(ForeignRightsTest, ASharedObjectFindsLibrariesBesideIt) {
  const std::string path = CopyOf("OriginPlugin");
  std::filesystem::copy(
      std::filesystem::path(TestPluginPath("OriginPlugin")).parent_path() / "helpers",
      dir_.GetPath("helpers"));
  EXPECT_THAT(NamesOf(path), ElementsAre("echo"));
}

// Exceptions.

TEST(SharedLibraryPluginTest, AnExceptionOfTheEntryPointReachesTheCaller) {
  const std::shared_ptr<SharedLibraryPlugin> plugin =
      SharedLibraryPlugin::New(TestPluginPath("ThrowingPluginKestrelException"));
  plugin->Initialize();
  const std::shared_ptr<RootNamespace> root = RootNamespace::New(nullptr);
  EXPECT_THAT([&] { plugin->RegisterNamespaces(root); },
              ThrowsMessage<KestrelException>("the plug-in has no fuel"));
  EXPECT_THAT(root->GetNamespaceNodeNames(), ElementsAre("throwing"));
}

}  // namespace
}  // namespace Kestrel::AutoCli
