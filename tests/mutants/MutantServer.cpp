// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The main function of the test programs of scripts/mutate.py. It forks for each request. So the
// program need not be started again for each request, and no test sees the state that an earlier
// request has left.
//
// A request is a line of standard input: the limits of processor time and of elapsed time, in
// seconds, and the names of the tests, separated by colons. The answer is "passed", "failed" or
// "slow", and the microseconds of processor time.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <system_error>

namespace {

constexpr rlim_t kMaxMemory = rlim_t{4} << 30;
constexpr int kMaxIdleSeconds = 5;

struct Request {
  unsigned processorSeconds = 0;
  int seconds = 0;
  std::string tests;
};

[[noreturn]] void RunTests(const Request& request) {
  setsid();
  const int nothing = open("/dev/null", O_RDWR);
  for (int descriptor = 0; descriptor < 3; ++descriptor) {
    dup2(nothing, descriptor);
  }
  close(nothing);
  const rlimit time = {request.processorSeconds, request.processorSeconds + 1};
  setrlimit(RLIMIT_CPU, &time);
  const rlimit memory = {kMaxMemory, RLIM_INFINITY};
  setrlimit(RLIMIT_DATA, &memory);
  GTEST_FLAG_SET(filter, request.tests);
  GTEST_FLAG_SET(fail_fast, true);
  std::exit(RUN_ALL_TESTS());
}

// Returns whether a thread runs, could run or waits uninterruptibly.
bool IsRunning(const std::filesystem::path& thread) {
  std::string line;
  if (!std::getline(std::ifstream(thread / "stat"), line)) {
    return false;
  }
  const char state = line[line.rfind(')') + 2];
  return state == 'R' || state == 'D';
}

// Returns whether any thread of a process runs, even if the main thread waits for the others.
bool IsAnyThreadRunning(const std::filesystem::path& process) {
  std::error_code error;  // the process may end at any time
  const std::filesystem::directory_iterator threads(process / "task", error);
  return std::any_of(begin(threads), end(threads),
                     [](const auto& thread) { return IsRunning(thread.path()); });
}

// Returns whether another process of this namespace runs or could run.
bool IsAnyRunning() {
  const std::string self = std::to_string(getpid());
  const std::filesystem::directory_iterator processes("/proc");
  return std::any_of(begin(processes), end(processes), [&self](const auto& process) {
    const std::string name = process.path().filename();
    return name != self && std::all_of(name.begin(), name.end(), isdigit) &&
           IsAnyThreadRunning(process.path());
  });
}

// Waits until a child ends. Returns false if that takes too long, or if no process has run for a
// while. A test that only waits for a processor of a busy machine could run, so it is not regarded
// as stuck.
bool WaitForEnd(pid_t child, int seconds) {
  // The declaration of pidfd_open has no C linkage in some versions of the C library.
  pollfd end = {static_cast<int>(syscall(SYS_pidfd_open, child, 0)), POLLIN, 0};
  int idleSeconds = 0;
  bool hasEnded = false;
  for (int second = 0; !hasEnded && second < seconds && idleSeconds < kMaxIdleSeconds; ++second) {
    hasEnded = poll(&end, 1, 1000) == 1;
    idleSeconds = hasEnded || IsAnyRunning() ? 0 : idleSeconds + 1;
  }
  close(end.fd);
  return hasEnded;
}

void WaitForOrphans(pid_t group) {
  kill(-group, SIGKILL);
  while (waitpid(-1, nullptr, WNOHANG) > 0) {
  }
}

std::string Answer(const Request& request) {
  const pid_t child = fork();
  if (child == 0) {
    RunTests(request);
  }
  const bool isInTime = WaitForEnd(child, request.seconds);
  if (!isInTime) {
    kill(child, SIGKILL);
  }
  int status = 0;
  rusage usage = {};
  wait4(child, &status, 0, &usage);
  WaitForOrphans(child);
  const bool isSlow = !isInTime || (WIFSIGNALED(status) &&
                                    (WTERMSIG(status) == SIGXCPU || WTERMSIG(status) == SIGKILL));
  const timeval& user = usage.ru_utime;
  const timeval& system = usage.ru_stime;
  const std::string outcome = isSlow ? "slow" : status == 0 ? "passed" : "failed";
  return outcome + ' ' +
         std::to_string((user.tv_sec + system.tv_sec) * 1'000'000 + user.tv_usec + system.tv_usec);
}

void Serve() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  std::cout << "ready" << std::endl;
  for (std::string line; std::getline(std::cin, line);) {
    Request request;
    std::istringstream(line) >> request.processorSeconds >> request.seconds >> request.tests;
    std::cout << Answer(request) << std::endl;
  }
}

}  // namespace

// A test may start the program again, with arguments of the test framework.
int main(int argc, char** argv) {
  const bool isServer = argc == 2 && std::string(argv[1]) == "--serve";
  ::testing::InitGoogleMock(&argc, argv);
  if (!isServer) {
    return RUN_ALL_TESTS();
  }
  Serve();
}
