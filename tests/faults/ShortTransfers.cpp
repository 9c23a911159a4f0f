// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// ShortTransfers BYTES PROGRAM [ARGUMENT...]: runs a program in which read and write transfer at
// most BYTES bytes at a time, as the system may do at any moment. Ends as the program ends.
//
// It traces the program and changes the size that a call passes to the kernel, so it also reaches
// the calls that the C library makes itself. Shared objects are read as usual, because the dynamic
// loader does not repeat a short read. Child processes are not affected.

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#ifdef __x86_64__

namespace {

using Registers = user_regs_struct;
using Word = unsigned long long;

std::string NameOfFile(pid_t process, Word descriptor) {
  const std::string link = "/proc/" + std::to_string(process) + "/fd/" + std::to_string(descriptor);
  char name[4096];
  const ssize_t size = readlink(link.c_str(), name, sizeof name);
  return {name, static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

bool IsShortened(pid_t process, const Registers& registers) {
  return registers.orig_rax == SYS_write ||
         (registers.orig_rax == SYS_read &&
          NameOfFile(process, registers.rdi).find(".so") == std::string::npos);
}

// The kernel preserves the register that contains the size, so the size is restored after the call.
class Tracer {
 public:
  Tracer(pid_t process, Word maxBytes) : process_(process), maxBytes_(maxBytes) {}

  void HandleCall() {
    Registers registers = {};
    ptrace(PTRACE_GETREGS, process_, nullptr, &registers);
    isInCall_ = !isInCall_;
    if (isInCall_) {
      size_ = registers.rdx;
      isChanged_ = size_ > maxBytes_ && IsShortened(process_, registers);
    }
    if (isChanged_) {
      registers.rdx = isInCall_ ? maxBytes_ : size_;
      ptrace(PTRACE_SETREGS, process_, nullptr, &registers);
    }
  }

 private:
  const pid_t process_;
  const Word maxBytes_;
  Word size_ = 0;
  bool isInCall_ = false;
  bool isChanged_ = false;
};

[[noreturn]] void EndAs(int status) {
  if (WIFSIGNALED(status)) {
    std::signal(WTERMSIG(status), SIG_DFL);
    std::raise(WTERMSIG(status));
  }
  std::exit(WEXITSTATUS(status));
}

[[noreturn]] void Trace(pid_t process, Word maxBytes) {
  constexpr int kCallStop = SIGTRAP | 0x80;
  Tracer tracer(process, maxBytes);
  int status = 0;
  waitpid(process, &status, 0);
  ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  long signal = 0;  // to be delivered
  while (ptrace(PTRACE_SYSCALL, process, nullptr, signal) == 0 &&
         waitpid(process, &status, 0) == process && WIFSTOPPED(status)) {
    signal = 0;
    if (WSTOPSIG(status) == kCallStop) {
      tracer.HandleCall();
    } else {
      signal = WSTOPSIG(status);
    }
  }
  EndAs(status);
}

}  // namespace

int main(int argc, char** argv) {
  const Word maxBytes = argc < 3 ? 0 : std::strtoull(argv[1], nullptr, 10);
  if (maxBytes == 0) {
    std::fputs("Usage: ShortTransfers BYTES PROGRAM [ARGUMENT...]\n", stderr);
    return EXIT_FAILURE;
  }
  const pid_t process = fork();
  if (process == 0) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    execv(argv[2], argv + 2);
    std::perror(argv[2]);
    _exit(127);
  }
  Trace(process, maxBytes);
}

#else

int main() {
  std::fputs("ShortTransfers does not know the registers of this processor\n", stderr);
  return 77;
}

#endif
