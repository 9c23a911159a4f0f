// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <tuple>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/Namespaces.h"
#include "support/ForbiddenCalls.h"
#include "support/Sanitizer.h"

// The commands in the namespace "network" when the system refuses access. The result must be
// complete or an error, never a shorter list.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

struct Reader {
  const char* name;
  const char* command;
  Parameters parameters;
  bool readsFiles;
  bool asksTheKernel;
  bool hasTables = false;  // whether it reads tables if the kernel does not answer requests
};

const Reader kReaders[] = {
    {"Addresses", "network address list", {}, true, true},
    {"Connections", "network connection list", {}, false, true, true},
    {"ConnectionsWithProcesses", "network connection list", {{"processes", ""}}, true, true, true},
    {"UnixSockets", "network connection list", {{"protocol", "unix"}}, false, true},
    {"UnixSocketsWithProcesses",
     "network connection list",
     {{"protocol", "unix"}, {"processes", ""}},
     true,
     true},
    {"Dns", "network dns list", {}, true, false},
    {"Ports", "network port list", {{"port", "22"}}, true, false},
    {"Counters", "network counter list", {}, false, true},
    {"Interface", "network interface get", {{"interface", "lo"}}, true, true},
    {"Interfaces", "network interface list", {}, false, true},
    {"Neighbors", "network neighbor list", {{"all", ""}}, false, true},
    {"Routes", "network route list", {}, true, true},
};

// Returns the result of a call as a string.
std::string TextOf(const CommandResult& result) {
  return result.GetValue() == nullptr ? "nothing" : result.GetValue()->ToString();
}

// Expects the call to fail with the system's text for `error`.
void ExpectError(const Reader& reader, int error) {
  const CommandResult result = Call(reader.command, reader.parameters);
  EXPECT_THAT(result.GetErrors(), ElementsAre(HasSubstr(std::strerror(error)))) << TextOf(result);
  EXPECT_EQ(result.GetValue(), nullptr);
}

void RunWithRefusal(const std::function<void()>& body) {
  if (kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs the system calls that the test forbids";
  }
  GetDispatcher();  // loads the plug-in while files can still be opened
  EXPECT_EQ(RunInNamespaces(CLONE_NEWNET, body), "");
}

class RefusedFileTest : public ::testing::TestWithParam<std::tuple<Reader, int>> {};

TEST_P(RefusedFileTest, IsAnErrorOnlyIfFilesAreRead) {
  const auto& [reader, error] = GetParam();
  RunWithRefusal([&reader = reader, error = error] {
    Forbid(SYS_openat, -1, static_cast<unsigned>(error));
    if (reader.readsFiles) {
      ExpectError(reader, error);
    } else {
      EXPECT_THAT(Call(reader.command, reader.parameters).GetErrors(), ::testing::IsEmpty());
    }
  });
}

std::string NameOf(const ::testing::TestParamInfo<std::tuple<Reader, int>>& row) {
  return std::string(std::get<0>(row.param).name) + "_" + strerrorname_np(std::get<1>(row.param));
}

INSTANTIATE_TEST_SUITE_P(Readers, RefusedFileTest,
                         ::testing::Combine(::testing::ValuesIn(kReaders),
                                            ::testing::Values(EACCES, EIO, EMFILE, ENFILE, ENOMEM)),
                         NameOf);

class RefusedNetlinkTest : public ::testing::TestWithParam<std::tuple<Reader, int>> {};

TEST_P(RefusedNetlinkTest, IsAnErrorOnlyIfTheCommandNeedsNetlink) {
  const auto& [reader, error] = GetParam();
  RunWithRefusal([&reader = reader, error = error] {
    Forbid(SYS_socket, AF_NETLINK, static_cast<unsigned>(error));
    const bool readsTables = reader.hasTables && error != EMFILE;
    if (reader.asksTheKernel && !readsTables) {
      ExpectError(reader, error);
    } else {
      EXPECT_THAT(Call(reader.command, reader.parameters).GetErrors(), ::testing::IsEmpty());
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Readers, RefusedNetlinkTest,
                         ::testing::Combine(::testing::ValuesIn(kReaders),
                                            ::testing::Values(EACCES, EMFILE, EPROTONOSUPPORT)),
                         NameOf);

TEST(RefusedNetlinkAndFilesTest, IsAnError) {
  RunWithRefusal([] {
    Forbid(SYS_socket, AF_NETLINK, EPROTONOSUPPORT);
    Forbid(SYS_openat, -1, EACCES);
    EXPECT_THAT(Call("network connection list").GetErrors(),
                ElementsAre("Unable to read /proc/net/tcp: Permission denied"));
  });
}

class FewFileDescriptorsTest : public ::testing::TestWithParam<Reader> {};

// Tries from zero to five free file descriptors. Five are enough for each command.
TEST_P(FewFileDescriptorsTest, TheCommandReturnsTheWholeResultOrAnError) {
  RunWithRefusal([] {
    const int lowestFree = ::dup(0);
    ::close(lowestFree);
    const auto call = [] { return Call(GetParam().command, GetParam().parameters); };
    const std::string whole = TextOf(call());
    for (int free = 0; free < 6; ++free) {
      const rlimit limit = {static_cast<rlim_t>(lowestFree + free), 4096};
      ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
      const CommandResult result = call();
      if (result.GetErrors().empty()) {
        EXPECT_EQ(TextOf(result), whole) << free;
        EXPECT_GT(free, 0);
      } else {
        EXPECT_THAT(result.GetErrors(), ElementsAre(HasSubstr("Too many open files"))) << free;
        EXPECT_LT(free, 5);
      }
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Readers, FewFileDescriptorsTest, ::testing::ValuesIn(kReaders),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace Kestrel::Testing
