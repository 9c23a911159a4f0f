// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/support/Namespaces.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace Kestrel::Testing {
namespace {

constexpr int kFailed = 1;
constexpr int kNoInterfaces = 99;
constexpr int kNotAllowed = 100;  // the error number is added to it

bool WriteFile(const char* path, const std::string& text) {
  const int file = ::open(path, O_WRONLY | O_CLOEXEC);
  const bool isWritten =
      file >= 0 && ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  ::close(file);
  return isWritten;
}

// A process without the required privilege may have it inside a user namespace.
bool EnterAsRoot(int namespaces) {
  const std::string user = std::to_string(::geteuid());
  const std::string group = std::to_string(::getegid());
  return ::unshare(namespaces | CLONE_NEWUSER) == 0 && WriteFile("/proc/self/setgroups", "deny") &&
         WriteFile("/proc/self/uid_map", "0 " + user + " 1") &&
         WriteFile("/proc/self/gid_map", "0 " + group + " 1");
}

bool Enter(int namespaces) {
  if (::unshare(namespaces) != 0 && !EnterAsRoot(namespaces)) {
    return false;
  }
  // Makes the mounts of this namespace private, so that they do not affect others.
  return (namespaces & CLONE_NEWNS) == 0 ||
         ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

[[noreturn]] void RunChild(int namespaces, const std::function<void()>& body) {
  if (!Enter(namespaces)) {
    ::_exit(kNotAllowed + errno);
  }
  try {
    body();
  } catch (const std::exception& error) {
    ADD_FAILURE() << error.what();
  }
  std::fflush(nullptr);
  ::_exit(testing::Test::HasFailure() ? kFailed : 0);
}

bool CanMakeInterfaces() {
  return std::system(
             "(ip link add probe0 type veth peer name probe1 && ip link add probe2 type bridge &&"
             " ip link delete probe0 && ip link delete probe2) > /dev/null 2>&1") == 0;
}

}  // namespace

std::string RunInNamespaces(int namespaces, const std::function<void()>& body) {
  std::fflush(nullptr);
  const pid_t process = ::fork();
  if (process == 0) {
    RunChild(namespaces, body);
  }
  int status = 0;
  ::waitpid(process, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) >= kNotAllowed) {
    return std::string("This machine allows no namespaces of our own: ") +
           std::strerror(WEXITSTATUS(status) - kNotAllowed);
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == kNoInterfaces) {
    return "This machine makes no interfaces of the kinds veth and bridge";
  }
  EXPECT_EQ(status, 0) << "The child in its own namespaces failed";
  return std::string();
}

std::string RunInOwnNetwork(const std::function<void()>& body) {
  return RunInNamespaces(CLONE_NEWNET, [&body] {
    if (!CanMakeInterfaces()) {
      ::_exit(kNoInterfaces);
    }
    body();
  });
}

}  // namespace Kestrel::Testing
