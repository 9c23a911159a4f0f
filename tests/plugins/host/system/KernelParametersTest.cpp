// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/KernelParameters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/support/PlainUser.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Host {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using Testing::PlainUser;
using Testing::ScopedTempDir;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

class KernelParametersTest : public ::testing::Test {
 protected:
  KernelParametersTest() {
    proc_.Write("sys/vm/swappiness", "60\n");
    proc_.Write("sys/vm/overcommit_memory", "0\n");
    proc_.Write("sys/vmx/other", "1\n");
    proc_.Write("sys/net/ipv4/conf/eth0.1/mtu", "1500\n");
    proc_.Write("sys/net/ipv4/tcp_mem", "1\t2\t3\n");
    ::chmod(proc_.GetPath("sys/vm/overcommit_memory").c_str(), 0444);
    proc_.Write("sys/vm/drop_caches", "");
    ::chmod(proc_.GetPath("sys/vm/drop_caches").c_str(), 0200);
  }

  std::vector<std::string> NamesUnder(const std::string& prefix) const {
    std::vector<std::string> names;
    for (const KernelParameter& parameter : ReadParameters(proc_.GetPath(), prefix)) {
      names.push_back(parameter.name);
    }
    return names;
  }

  ScopedTempDir proc_;
};

TEST_F(KernelParametersTest, ListsParametersByName) {
  EXPECT_THAT(NamesUnder(""),
              ElementsAre("net.ipv4.conf.eth0/1.mtu", "net.ipv4.tcp_mem", "vm.drop_caches",
                          "vm.overcommit_memory", "vm.swappiness", "vmx.other"));
}

TEST_F(KernelParametersTest, APrefixMatchesOnlyWholePartsOfAName) {
  EXPECT_THAT(NamesUnder("vm"),
              ElementsAre("vm.drop_caches", "vm.overcommit_memory", "vm.swappiness"));
  EXPECT_THAT(NamesUnder("vm.swappiness"), ElementsAre("vm.swappiness"));
  EXPECT_THAT(NamesUnder("net/ipv4/conf/eth0.1"), ElementsAre("net.ipv4.conf.eth0/1.mtu"));
  EXPECT_THAT(NamesUnder("net.ipv4.conf.eth0/1"), ElementsAre("net.ipv4.conf.eth0/1.mtu"));
  EXPECT_THAT(NamesUnder("v"), IsEmpty());
  EXPECT_THAT(NamesUnder("vm.swappiness.more"), IsEmpty());
}

TEST_F(KernelParametersTest, ReportsTheValueAndWhetherItCanBeChanged) {
  const auto parameters = ReadParameters(proc_.GetPath(), "vm");
  ASSERT_EQ(parameters.size(), 3u);
  EXPECT_EQ(parameters[0].name, "vm.drop_caches");
  EXPECT_FALSE(parameters[0].isReadable) << "it can only be written";
  EXPECT_TRUE(parameters[0].isWritable);
  EXPECT_EQ(parameters[1].value, "0");
  EXPECT_TRUE(parameters[1].isReadable);
  EXPECT_FALSE(parameters[1].isWritable);
  EXPECT_EQ(parameters[2].value, "60");
  EXPECT_TRUE(parameters[2].isWritable);
}

TEST_F(KernelParametersTest, ListsAParameterThatTheUserMayNotRead) {
  ::chmod(proc_.GetPath().c_str(), 0755);
  ::chmod(proc_.GetPath("sys/vm/swappiness").c_str(), 0600);
  const PlainUser user;
  const auto parameters = ReadParameters(proc_.GetPath(), "vm.swappiness");
  ASSERT_EQ(parameters.size(), 1u);
  EXPECT_FALSE(parameters[0].isReadable);
  EXPECT_TRUE(parameters[0].isWritable) << "by root";
  EXPECT_EQ(parameters[0].value, "");
}

TEST_F(KernelParametersTest, ReportsAFolderThatTheUserMayNotRead) {
  ::chmod(proc_.GetPath().c_str(), 0755);
  for (const mode_t mode : {0000, 0600}) {  // the owner may read nothing, or only the names
    ::chmod(proc_.GetPath("sys/vm").c_str(), mode);
    const PlainUser user;
    EXPECT_THAT([this] { ReadParameters(proc_.GetPath(), ""); },
                ThrowsMessage<KestrelException>(
                    AllOf(StartsWith("Unable to read " + proc_.GetPath("sys/vm")),
                          EndsWith(": Permission denied"))));
  }
}

TEST_F(KernelParametersTest, ReportsTooManyOpenFiles) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  EXPECT_EQ(Testing::RunInNamespaces(0,
                                     [this] {
                                       const rlimit few = {3, 3};
                                       ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
                                       EXPECT_THAT([this] { ReadParameters(proc_.GetPath(), ""); },
                                                   ThrowsMessage<KestrelException>(
                                                       "Unable to read " + proc_.GetPath("sys/") +
                                                       ": Too many open files"));
                                     }),
            "");
}

TEST_F(KernelParametersTest, DoesNotFollowALinkToAFolderAbove) {
  ASSERT_EQ(::symlink("..", proc_.GetPath("sys/vm/loop").c_str()), 0);
  EXPECT_EQ(NamesUnder("").size(), 6u);
}

TEST_F(KernelParametersTest, ListsNothingBelowAnUnknownName) {
  EXPECT_THAT(ReadParameters(proc_.GetPath(), "nowhere"), IsEmpty());
}

TEST(HiddenKernelParametersTest, AMissingOrEmptyFolderIsReported) {
  const ScopedTempDir proc;
  const auto read = [&proc] { ReadParameters(proc.GetPath(), ""); };
  const std::string message = "Unable to read " + proc.GetPath("sys") + ": ";
  EXPECT_THAT(read, ThrowsMessage<KestrelException>(message + "No such file or directory"));
  proc.MakeDirectory("sys");
  EXPECT_THAT(read, ThrowsMessage<KestrelException>(message + "nothing is there"));
}

TEST_F(KernelParametersTest, ReadsByEitherSpelling) {
  EXPECT_EQ(ReadParameter(proc_.GetPath(), "vm.swappiness"), "60");
  EXPECT_EQ(ReadParameter(proc_.GetPath(), "vm/swappiness"), "60");
  EXPECT_EQ(ReadParameter(proc_.GetPath(), "net.ipv4.conf.eth0/1.mtu"), "1500");
  EXPECT_EQ(ReadParameter(proc_.GetPath(), "net/ipv4/conf/eth0.1/mtu"), "1500");
  EXPECT_EQ(ReadParameter(proc_.GetPath(), "net.ipv4.tcp_mem"), "1\t2\t3");
}

TEST_F(KernelParametersTest, ReportsWhyAParameterCannotBeRead) {
  const std::string proc = proc_.GetPath();
  EXPECT_THAT([&] { ReadParameter(proc, "vm.nope"); },
              ThrowsMessage<KestrelException>("There is no parameter 'vm.nope'"));
  EXPECT_THAT([&] { ReadParameter(proc, "vm.swappiness.more"); },
              ThrowsMessage<KestrelException>("There is no parameter 'vm.swappiness.more'"));
  EXPECT_THAT([&] { ReadParameter(proc, "vm"); },
              ThrowsMessage<KestrelException>("'vm' is a group of parameters"));
}

TEST_F(KernelParametersTest, NeverLeavesTheFolderOfParameters) {
  proc_.Write("secret", "s\n");
  const std::string proc = proc_.GetPath();
  for (const std::string name : {"../secret", "vm/../../secret", "vm/../swappiness", "/secret", "",
                                 "vm//swappiness", "./vm/swappiness", "///secret"}) {
    EXPECT_THAT([&] { ReadParameter(proc, name); },
                ThrowsMessage<KestrelException>("There is no parameter '" + name + "'"));
    EXPECT_THAT([&] { WriteParameter(proc, name, "x"); },
                ThrowsMessage<KestrelException>("There is no parameter '" + name + "'"));
  }
  EXPECT_EQ(proc_.Read("secret"), "s\n");
}

TEST_F(KernelParametersTest, WritesTheValueAsOneLine) {
  WriteParameter(proc_.GetPath(), "vm.swappiness", "10");
  EXPECT_EQ(proc_.Read("sys/vm/swappiness"), "10\n");
  WriteParameter(proc_.GetPath(), "net/ipv4/tcp_mem", "4 5 6");
  EXPECT_EQ(proc_.Read("sys/net/ipv4/tcp_mem"), "4 5 6\n");
}

TEST_F(KernelParametersTest, CreatesNoParameter) {
  const std::string proc = proc_.GetPath();
  EXPECT_THAT([&] { WriteParameter(proc, "vm.nope", "1"); },
              ThrowsMessage<KestrelException>("There is no parameter 'vm.nope'"));
  EXPECT_NE(::access(proc_.GetPath("sys/vm/nope").c_str(), F_OK), 0);
  EXPECT_THAT([&] { WriteParameter(proc, "vm", "1"); },
              ThrowsMessage<KestrelException>("'vm' is a group of parameters"));
}

TEST_F(KernelParametersTest, NeedsPermissionToReadAndToChange) {
  ::chmod(proc_.GetPath().c_str(), 0755);
  const std::string proc = proc_.GetPath();
  const PlainUser user;
  EXPECT_THAT([&] { ReadParameter(proc, "vm.drop_caches"); },
              ThrowsMessage<KestrelException>(
                  "You do not have permission to read the parameter 'vm.drop_caches'"));
  EXPECT_THAT(
      [&] { WriteParameter(proc, "vm.overcommit_memory", "1"); },
      ThrowsMessage<KestrelException>(
          "You do not have permission to change the parameter 'vm.overcommit_memory'; usually only "
          "root may, and some are read-only"));
}

// /dev/full simulates a kernel that does not accept any byte.
TEST_F(KernelParametersTest, ReportsTheErrorOfTheKernel) {
  ASSERT_EQ(::symlink("/dev/full", proc_.GetPath("sys/full").c_str()), 0);
  EXPECT_THAT([this] { WriteParameter(proc_.GetPath(), "full", "1"); },
              ThrowsMessage<KestrelException>(
                  "Unable to change the parameter 'full': No space left on device"));
}

TEST_F(KernelParametersTest, TheMessageRepeatsAValueThatTheKernelRefuses) {
  if (::access("/proc/sys/vm/swappiness", W_OK) != 0) {
    GTEST_SKIP() << "parameters are read-only here";
  }
  EXPECT_THAT([] { WriteParameter("/proc", "vm.swappiness", "many"); },
              ThrowsMessage<KestrelException>("The kernel refuses the value 'many' for the "
                                              "parameter 'vm.swappiness': Invalid argument"));
}

TEST(KernelParameterTextTest, PutsAValueOnOneLine) {
  EXPECT_EQ(OnOneLine("1\t2\n3"), "1 2 3");
  EXPECT_EQ(OnOneLine(""), "");
}

struct ValueCase {
  const char* name;
  const char* content;
  const char* value;
};

// Exactly one line feed at the end belongs to the file and not to the value.
const ValueCase kValues[] = {
    {"Number", "60\n", "60"},
    {"WithoutLineFeed", "60", "60"},
    {"Empty", "", ""},
    {"OnlyALineFeed", "\n", ""},
    {"TwoLineFeeds", "a\n\n", "a\n"},
    {"SeveralLines", "a\nb\n", "a\nb"},
    {"Tabs", "1\t2\t3\n", "1\t2\t3"},
    {"SpacesAtTheEnds", "  a  \n", "  a  "},
};

class ParameterValueTest : public ::testing::TestWithParam<ValueCase> {};

TEST_P(ParameterValueTest, IsReadUnchanged) {
  const ScopedTempDir proc;
  proc.Write("sys/a/b", GetParam().content);
  EXPECT_EQ(ReadParameter(proc.GetPath(), "a.b"), GetParam().value);
  const auto listed = ReadParameters(proc.GetPath(), "");
  ASSERT_EQ(listed.size(), 1u);
  EXPECT_EQ(listed[0].value, GetParam().value);
  EXPECT_TRUE(listed[0].isReadable);
}

INSTANTIATE_TEST_SUITE_P(Values, ParameterValueTest, ::testing::ValuesIn(kValues),
                         [](const auto& test) { return test.param.name; });

TEST_F(KernelParametersTest, AChangeIsReadBack) {
  for (const std::string value : {"1", "a b c", "", "1\t2"}) {
    WriteParameter(proc_.GetPath(), "vm.swappiness", value);
    EXPECT_EQ(ReadParameter(proc_.GetPath(), "vm.swappiness"), value);
  }
}

TEST_F(KernelParametersTest, AParameterThatVanishesIsNotListed) {
  ASSERT_EQ(::symlink("/nowhere", proc_.GetPath("sys/vm/gone").c_str()), 0);
  EXPECT_THAT(NamesUnder("vm.gone"), IsEmpty());
  EXPECT_THAT([this] { ReadParameter(proc_.GetPath(), "vm.gone"); },
              ThrowsMessage<KestrelException>("There is no parameter 'vm.gone'"));
}

}  // namespace
}  // namespace Kestrel::Host
