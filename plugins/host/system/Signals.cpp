// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Signals.h"

#include <kestrel/KestrelException.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

// Alternative names of signals.
struct OtherName {
  std::string_view name;
  int signal;
};

constexpr OtherName kOtherNames[] = {{"iot", SIGABRT}, {"cld", SIGCHLD}, {"io", SIGIO}};

bool IsSignal(long number) { return number >= 1 && number <= SIGRTMAX; }

// Calls the kernel directly, because older C libraries do not have these functions.
int OpenProcess(long process) {
  return static_cast<int>(::syscall(SYS_pidfd_open, static_cast<pid_t>(process), 0u));
}

int SendToDescriptor(int descriptor, int signal) {
  return static_cast<int>(::syscall(SYS_pidfd_send_signal, descriptor, signal, nullptr, 0u));
}

}  // namespace

std::string SignalName(int signal) {
  if (signal >= SIGRTMIN && signal <= SIGRTMAX) {
    const int distance = signal - SIGRTMIN;
    return distance == 0 ? "RTMIN" : "RTMIN+" + std::to_string(distance);
  }
  const char* const name = ::sigabbrev_np(signal);
  return name == nullptr ? std::to_string(signal) : name;
}

std::optional<int> ParseSignal(std::string_view text) {
  const auto number = ParseNumber(text);
  if (number) {
    return IsSignal(*number) ? std::optional<int>(static_cast<int>(*number)) : std::nullopt;
  }
  std::string lower = LowerCase(text);
  if (StartsWith(lower, "sig")) {
    lower.erase(0, 3);
  }
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    if (LowerCase(SignalName(signal)) == lower) {
      return signal;
    }
  }
  for (const OtherName& other : kOtherNames) {
    if (other.name == lower) {
      return other.signal;
    }
  }
  return std::nullopt;
}

std::optional<SignalTarget> SignalTarget::Open(long process) {
  const int descriptor = OpenProcess(process);
  if (descriptor >= 0) {
    return SignalTarget(process, descriptor);
  }
  switch (errno) {
    case ESRCH:
    case EINVAL:  // the number is that of a thread
      return std::nullopt;
    case ENOSYS:
      break;
    default:
      throw KestrelException("Unable to open process " + std::to_string(process) + ": " +
                             std::strerror(errno));
  }
  return ::kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH
             ? std::nullopt
             : std::optional<SignalTarget>(SignalTarget(process, -1));
}

int SignalTarget::Send(int signal) const {
  const int result = descriptor_.IsOpen() ? SendToDescriptor(descriptor_.Get(), signal)
                                          : ::kill(static_cast<pid_t>(process_), signal);
  return result == 0 ? 0 : errno;
}

}  // namespace Kestrel::Host
