// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/KernelModules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/PlainUser.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;
using Testing::WordsIn;

constexpr char kModules[] =
    "snd_timer 49152 2 snd_seq,snd_pcm, Live 0x0000000000000000\n"
    "loop 40960 0 - Live 0x0000000000000000 (OE)\n"
    "fixed 8192 1 [permanent], Live 0x0000000000000000\n"
    "kept 4096 - - Loading 0x0000000000000000\n";

TEST(KernelModulesTest, ReadsModules) {
  const auto modules = ParseModules(kModules);
  ASSERT_EQ(modules.size(), 4u);
  EXPECT_EQ(modules[0].name, "snd_timer");
  EXPECT_EQ(modules[0].size, 49152);
  EXPECT_EQ(modules[0].references, 2);
  EXPECT_THAT(modules[0].users, ElementsAre("snd_seq", "snd_pcm"));
  EXPECT_EQ(modules[0].state, "Live");
  EXPECT_EQ(modules[1].references, 0);
  EXPECT_THAT(modules[1].users, IsEmpty());
  EXPECT_THAT(modules[2].users, IsEmpty());
  EXPECT_EQ(modules[3].references, -1);
  EXPECT_EQ(modules[3].state, "Loading");
}

TEST(KernelModulesTest, ListsModulesByName) {
  const ScopedTempDir proc;
  proc.Write("modules", kModules);
  std::vector<std::string> names;
  for (const KernelModule& module : ReadModules(proc.GetPath())) {
    names.push_back(module.name);
  }
  EXPECT_THAT(names, ElementsAre("fixed", "kept", "loop", "snd_timer"));
}

// Returns a line for each module: its name, size, references and sorted users.
std::vector<std::string> LinesOf(const std::vector<KernelModule>& modules) {
  std::vector<std::string> lines;
  for (const KernelModule& module : modules) {
    std::vector<std::string> users = module.users;
    std::sort(users.begin(), users.end());
    std::string line =
        module.name + " " + std::to_string(module.size) + " " + std::to_string(module.references);
    for (std::size_t i = 0; i < users.size(); ++i) {
      line += (i == 0 ? " " : ",") + users[i];
    }
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> LinesOfLsmod(const std::string& command) {
  std::vector<std::string> lines;
  for (const std::string& line : Testing::WitnessLines(command)) {
    std::string joined;
    for (const std::string& word : WordsIn(line)) {
      joined += (joined.empty() ? "" : " ") + word;
    }
    lines.push_back(joined);
  }
  lines.erase(lines.begin());  // the header
  std::sort(lines.begin(), lines.end());
  return lines;
}

TEST(KernelModulesTest, AgreesWithLsmodAboutThisMachine) {
  if (::access("/proc/modules", R_OK) != 0) {
    EXPECT_THAT(ReadModules("/proc"), IsEmpty());
    return;
  }
  EXPECT_EQ(LinesOf(ReadModules("/proc")), LinesOfLsmod("lsmod"));
}

// Runs lsmod with simulated modules: those in the file whose path follows.
constexpr char kLsmodElsewhere[] = R"(unshare --mount sh -ec '
  modules=$(cat "$0")
  mount -t tmpfs none /sys
  add() {
    name=$1
    mkdir -p "/sys/module/$name/holders"
    echo "$2" >"/sys/module/$name/refcnt"
    shift 2
    for holder; do mkdir "/sys/module/$name/holders/$holder"; done
  }
  add snd_timer 2 snd_seq snd_pcm
  add loop 0
  add snd_pcm 0
  add snd_seq 1
  mount -t tmpfs none /proc
  echo "$modules" >/proc/modules
  lsmod' )";

TEST(KernelModulesTest, AgreesWithLsmodAboutAMadeUpMachine) {
  if (::system("unshare --mount true 2>/dev/null") != 0) {
    GTEST_SKIP() << "a machine can be made up by root alone";
  }
  const ScopedTempDir proc;
  const std::string path = proc.Write("modules",
                                      "snd_timer 49152 2 snd_seq,snd_pcm, Live 0x0\n"
                                      "loop 40960 0 - Live 0x0\n"
                                      "snd_pcm 8192 0 - Live 0x0\n"
                                      "snd_seq 12288 1 - Live 0x0\n");
  EXPECT_EQ(LinesOf(ReadModules(proc.GetPath())), LinesOfLsmod(kLsmodElsewhere + path));
}

TEST(KernelModulesTest, ListsNoneIfTheKernelHasNoModules) {
  const ScopedTempDir proc;
  proc.Write("version", "a kernel without loadable modules");
  EXPECT_THAT(ReadModules(proc.GetPath()), IsEmpty());
}

TEST(KernelModulesTest, ReportsAnEmptyOrMissingProc) {
  const ScopedTempDir proc;
  EXPECT_THAT(
      [&proc] { ReadModules(proc.GetPath()); },
      ThrowsMessage<KestrelException>("Unable to read " + proc.GetPath() + ": nothing is there"));
  EXPECT_THAT(
      [] { ReadModules("/nowhere"); },
      ThrowsMessage<KestrelException>("Unable to read /nowhere: No such file or directory"));
}

// A machine with loaded modules, and with others that its kernel could load.
class HasModuleTest : public ::testing::Test {
 protected:
  HasModuleTest() {
    root_.Write("proc/modules", kModules);
    root_.MakeDirectory("sys/module/built_in");
    root_.Write("sys/module/file", "");
    root_.Write("modules/modules.builtin", "kernel/fs/ext4/ext4.ko\nkernel/lib/a-b.ko\n");
    root_.Write("modules/modules.dep",
                "kernel/drivers/net/tun.ko.xz:\nextra/snd-hda.ko: kernel/sound/snd.ko.zst\n"
                "kernel/sound/snd.ko.zst:\n");
  }

  bool Has(const char* name) const {
    return HasModule(root_.GetPath("proc"), root_.GetPath("sys"), root_.GetPath("modules"), name);
  }

  ScopedTempDir root_;
};

TEST_F(HasModuleTest, FindsLoadedModules) {
  EXPECT_TRUE(Has("snd_timer"));
  EXPECT_TRUE(Has("snd-timer")) << "a dash is an underscore";
}

TEST_F(HasModuleTest, FindsBuiltInModules) {
  EXPECT_TRUE(Has("built-in")) << "in a folder of the kernel";
  EXPECT_TRUE(Has("ext4")) << "in the list of the module tools";
  EXPECT_TRUE(Has("a_b"));
}

TEST_F(HasModuleTest, AModuleThatCouldBeLoadedIsNotPresent) {
  EXPECT_FALSE(Has("tun"));
  EXPECT_FALSE(Has("snd_hda"));
  EXPECT_FALSE(Has("snd-hda"));
  EXPECT_FALSE(Has("snd"));
}

TEST_F(HasModuleTest, ReportsAModuleThatTheMachineDoesNotHave) {
  for (const std::string name : {"file", "tu", "tun.ko", "kernel", "no-such"}) {
    EXPECT_THAT([&] { Has(name.c_str()); },
                ThrowsMessage<KestrelException>("There is no module '" + name + "'"));
  }
}

TEST_F(HasModuleTest, ReportsThatTheFolderOfModulesIsMissing) {
  const auto has = [this](const char* name) {
    return HasModule(root_.GetPath("proc"), root_.GetPath("sys"), root_.GetPath("gone"), name);
  };
  EXPECT_TRUE(has("loop"));
  EXPECT_TRUE(has("built_in"));
  EXPECT_THAT([&] { has("tun"); },
              ThrowsMessage<KestrelException>("Unable to tell whether the kernel has the module "
                                              "'tun': there is no folder " +
                                              root_.GetPath("gone")));
}

TEST_F(HasModuleTest, ReportsThatTheListsOfModulesAreMissing) {
  for (const std::string list : {"modules/modules.dep", "modules/modules.builtin"}) {
    ASSERT_EQ(::unlink(root_.GetPath(list).c_str()), 0);
    EXPECT_THAT([&] { Has("tun"); },
                ThrowsMessage<KestrelException>("Unable to read " + root_.GetPath(list) +
                                                ": No such file or directory"));
  }
}

TEST_F(HasModuleTest, ReportsWhatCannotBeRead) {
  ::chmod(root_.GetPath().c_str(), 0755);
  ASSERT_EQ(::chmod(root_.GetPath("proc/modules").c_str(), 0), 0);
  const PlainUser user;
  EXPECT_THAT([&] { Has("tun"); },
              ThrowsMessage<KestrelException>("Unable to read " + root_.GetPath("proc/modules") +
                                              ": Permission denied"));
}

TEST(KernelModulesTest, TheFolderOfModulesIsThatOfTheRunningKernel) {
  EXPECT_EQ(ModuleFolder(), "/lib/modules/" + Testing::WitnessLines("uname -r").at(0));
}

struct ModuleCase {
  const char* name;
  const char* line;
  std::vector<std::string> modules;
};

// The modules are in the format of LinesOf.
const ModuleCase kModuleLines[] = {
    {"NoUser", "loop 40960 0 - Live 0x0", {"loop 40960 0"}},
    {"OneUser", "a 1 1 b, Live 0x0", {"a 1 1 b"}},
    {"UsersWithoutALastComma", "a 1 2 c,b Live 0x0", {"a 1 2 b,c"}},
    {"Permanent", "a 1 1 [permanent], Live 0x0", {"a 1 1"}},
    {"PermanentAmongUsers", "a 1 2 b,[permanent], Live 0x0", {"a 1 2 b"}},
    {"OnlyCommas", "a 1 0 ,, Live 0x0", {"a 1 0"}},
    {"KernelThatCannotUnload", "a 1 - - Live 0x0", {"a 1 -1"}},
    {"Tainted", "a 1 0 - Live 0x0 (OE)", {"a 1 0"}},
    {"WithoutAddress", "a 1 0 - Live", {"a 1 0"}},
    {"ReferencesAreAWord", "a 1 x - Live 0x0", {"a 1 -1"}},
    {"LargestSize", "a 9223372036854775807 0 - Live 0x0", {"a 9223372036854775807 0"}},
};

class ModuleLineTest : public ::testing::TestWithParam<ModuleCase> {};

TEST_P(ModuleLineTest, IsRead) {
  EXPECT_EQ(LinesOf(ParseModules(GetParam().line)), GetParam().modules);
  EXPECT_EQ(LinesOf(ParseModules(std::string(GetParam().line) + "\n")), GetParam().modules);
}

TEST(KernelModulesTest, AnEmptyListHasNoModules) { EXPECT_THAT(ParseModules(""), IsEmpty()); }

TEST(KernelModulesTest, ReportsADamagedLine) {
  for (const std::string line :
       {"a 9223372036854775808 0 - Live 0x0", "a x 0 - Live 0x0", "a 1 0 -", "a", ""}) {
    EXPECT_THAT([&line] { ParseModules("loop 40960 0 - Live 0x0\n" + line + "\n"); },
                ThrowsMessage<KestrelException>("Unable to understand the list of modules: '" +
                                                line + "'"));
  }
}

INSTANTIATE_TEST_SUITE_P(Lines, ModuleLineTest, ::testing::ValuesIn(kModuleLines),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace Kestrel::Host
