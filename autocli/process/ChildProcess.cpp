// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/process/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <utility>

#include "autocli/process/FileDescriptor.h"
#include "autocli/process/SignalForwarding.h"
#include "autocli/text/SystemError.h"
#include "kestrel/KestrelException.h"
#include "kestrel/platform/Zoluser.h"

namespace Kestrel::AutoCli {
namespace {

constexpr int kFirstFreeDescriptor = 3;
constexpr std::size_t kReadSize = 64 * 1024;

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

/// Returns `fd` or a duplicate of it above 2: the file descriptors 0 to 2 are the child's streams,
/// and may be free if the tool was started with one of them closed. Throws KestrelException with
/// `failureText` and the system's message when no file descriptor is left.
FileDescriptor AboveStandardStreams(FileDescriptor fd, const char* failureText) {
  if (fd.Get() >= kFirstFreeDescriptor) {
    return fd;
  }
  FileDescriptor moved(fcntl(fd.Get(), F_DUPFD_CLOEXEC, kFirstFreeDescriptor));
  if (!moved.IsOpen()) {
    throw KestrelException(failureText + SystemErrorText(errno));
  }
  return moved;
}

Pipe OpenPipe(const char* failureText) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw KestrelException(failureText + SystemErrorText(errno));
  }
  FileDescriptor readEnd(ends[0]);
  FileDescriptor writeEnd(ends[1]);
  Pipe opened;
  opened.readEnd = AboveStandardStreams(std::move(readEnd), failureText);
  opened.writeEnd = AboveStandardStreams(std::move(writeEnd), failureText);
  return opened;
}

/// Children that were still running when their call failed. Each later call tries to reap them.
class UnreapedChildren {
 public:
  void Remember(pid_t child) { children_.push_back(child); }

  void Reap() {
    const auto reaped = [](pid_t child) { return waitpid(child, nullptr, WNOHANG) != 0; };
    children_.erase(std::remove_if(children_.begin(), children_.end(), reaped), children_.end());
  }

 private:
  std::vector<pid_t> children_;
};

UnreapedChildren& Unreaped() {
  static UnreapedChildren children;
  return children;
}

/// A started child. If an exception prevents waiting for the child, `UnreapedChildren` takes it
/// over. The child is not killed, because it may have work to finish.
class Child {
 public:
  Child() = default;
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (pid_ > 0) {
      Unreaped().Remember(pid_);
      Unreaped().Reap();
    }
  }

  void Started(pid_t pid) {
    pid_ = pid;
    forwarding_.Start(pid);
  }

  int Wait(const std::string& commandLine) {
    siginfo_t ended;
    while (waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOWAIT) < 0 &&
           errno == EINTR) {
    }
    forwarding_.Stop();
    int status = 0;
    pid_t waited;
    do {
      waited = waitpid(pid_, &status, 0);
    } while (waited < 0 && errno == EINTR);
    pid_ = 0;
    if (waited < 0) {
      throw KestrelException("Error waiting for process '" + commandLine +
                             "': " + SystemErrorText(errno));
    }
    return status;
  }

 private:
  SignalForwarding forwarding_;  // first, so destroyed last: its destructor may end the process
  pid_t pid_ = 0;
};

/// Thrown when a read fails. What was read before is still part of the output.
struct ReadFailure : KestrelException {
  using KestrelException::KestrelException;
};

/// Blocks SIGPIPE and discards the one that a write raises, so that a write to a child that has
/// ended fails with EPIPE and does not end the tool.
class SigpipeBlock {
 public:
  SigpipeBlock() {
    sigemptyset(&sigpipe_);
    sigaddset(&sigpipe_, SIGPIPE);
    wasPending_ = IsPending();
    pthread_sigmask(SIG_BLOCK, &sigpipe_, &before_);
  }
  SigpipeBlock(const SigpipeBlock&) = delete;
  SigpipeBlock& operator=(const SigpipeBlock&) = delete;
  ~SigpipeBlock() {
    const timespec noWait = {0, 0};
    if (!wasPending_ && IsPending()) {
      sigtimedwait(&sigpipe_, nullptr, &noWait);
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

 private:
  static bool IsPending() {
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
  }

  sigset_t sigpipe_;
  sigset_t before_;
  bool wasPending_;
};

pid_t Start(const std::vector<std::string>& arguments, const std::string& commandLine,
            const Pipe& input, const Pipe& output) {
  std::vector<const char*> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) {
    argv.push_back(argument.c_str());
  }
  argv.push_back(nullptr);
  std::vector<ZoluserForkFd> map = {{STDIN_FILENO, input.readEnd.Get()},
                                    {STDOUT_FILENO, output.writeEnd.Get()}};
  // Standard error is shared, unless the tool was started without one.
  if (fcntl(STDERR_FILENO, F_GETFD) >= 0) {
    map.push_back({STDERR_FILENO, STDERR_FILENO});
  }
  pid_t pid = 0;
  const ZoluserStatus status =
      ZoluserCompat_ForkExec(argv[0], argv.data(), nullptr, map.data(), map.size(), &pid);
  if (status != 0) {
    throw KestrelException("Failed to call process '" + commandLine +
                           "': " + ZoluserStatus_CodeToString(status));
  }
  return pid;
}

/// Appends one chunk of the child's output to `received`. Returns false at the end of the output.
bool ReadChunk(const FileDescriptor& from, std::string& received) {
  char chunk[kReadSize];
  ssize_t count;
  do {
    count = read(from.Get(), chunk, sizeof(chunk));
  } while (count < 0 && errno == EINTR);
  if (count < 0) {
    throw ReadFailure("Unable to read from sub-process: " + SystemErrorText(errno));
  }
  received.append(chunk, static_cast<std::size_t>(count));
  return count > 0;
}

/// Appends `received` to `output`; swaps them if `output` is empty, which avoids a copy.
void MoveTo(std::string& received, std::string& output) {
  if (output.empty()) {
    output.swap(received);
  } else {
    output += received;
  }
}

/// Writes `data` from position `written` on, as much as the pipe accepts, and advances `written`.
void WriteChunk(const FileDescriptor& to, const std::string& data, std::size_t& written) {
  const ssize_t count = write(to.Get(), data.data() + written, data.size() - written);
  if (count >= 0) {
    written += static_cast<std::size_t>(count);
    return;
  }
  if (errno != EINTR && errno != EAGAIN) {
    throw KestrelException("Unable to write to sub-process: " + SystemErrorText(errno));
  }
}

/// Writes all of `data` and at the same time reads what the child prints, so that neither side
/// blocks the other. Returns false when the child's output has ended already.
bool Feed(const FileDescriptor& to, const std::string& data, const FileDescriptor& from,
          std::string& received) {
  const SigpipeBlock block;
  fcntl(to.Get(), F_SETFL, O_NONBLOCK);
  bool outputIsOpen = true;
  std::size_t written = 0;
  while (written < data.size()) {
    // `poll` ignores a negative file descriptor.
    pollfd events[2] = {{to.Get(), POLLOUT, 0}, {outputIsOpen ? from.Get() : -1, POLLIN, 0}};
    if (poll(events, 2, -1) < 0) {
      if (errno == EINTR) {
        continue;
      }
      throw KestrelException("Unable to write to sub-process: " + SystemErrorText(errno));
    }
    if (events[0].revents != 0) {
      WriteChunk(to, data, written);
    }
    if (events[1].revents != 0) {
      outputIsOpen = ReadChunk(from, received);
    }
  }
  return outputIsOpen;
}

}  // namespace

int RunChildProcess(const std::vector<std::string>& arguments, const std::string& commandLine,
                    std::string& output, const std::string& stdinData) {
  Unreaped().Reap();
  Child child;  // before the pipes, so that it is destroyed after they are closed
  Pipe input = OpenPipe("Can't create input pipe: ");
  Pipe result = OpenPipe("Can't create output pipe: ");
  child.Started(Start(arguments, commandLine, input, result));
  input.readEnd.Close();
  result.writeEnd.Close();

  std::string received;
  try {
    bool outputIsOpen = Feed(input.writeEnd, stdinData, result.readEnd, received);
    input.writeEnd.Close();
    while (outputIsOpen) {
      outputIsOpen = ReadChunk(result.readEnd, received);
    }
  } catch (const ReadFailure& failure) {
    MoveTo(received, output);
    throw KestrelException(failure.what());
  }
  result.readEnd.Close();
  MoveTo(received, output);
  return child.Wait(commandLine);
}

}  // namespace Kestrel::AutoCli
