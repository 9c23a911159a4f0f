// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ChildProcess.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr int kFirstFreeDescriptor = 3;
constexpr std::size_t kReadSize = std::size_t{64} << 10;
constexpr int kSignalStatus = 128;
// A reader with a time limit waits at most this long for output before it checks whether the
// program has ended. Once the streams are closed, it checks at the shorter interval.
constexpr int kSliceMilliseconds = 20;
constexpr int kEndMilliseconds = 1;
// A program that ends by itself prints far less.
constexpr std::size_t kMaxOutputSize = std::size_t{256} << 20;
// Where programs are searched for if PATH is not set.
constexpr char kStandardPath[] = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

// The environment variables that a program may need to find other programs, the user's files, the
// time zone and the services it contacts.
constexpr const char* kPassedOn[] = {"PATH",
                                     "HOME",
                                     "USER",
                                     "LOGNAME",
                                     "TMPDIR",
                                     "TZ",
                                     "TZDIR",
                                     "XDG_RUNTIME_DIR",
                                     "DBUS_SESSION_BUS_ADDRESS",
                                     "DBUS_SYSTEM_BUS_ADDRESS"};

[[noreturn]] void Fail(const std::string& path, int error) {
  throw KestrelException("Unable to run " + path + ": " + std::strerror(error));
}

bool IsProgram(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

std::vector<std::string> MakeEnvironment() {
  std::vector<std::string> environment = {"LC_ALL=C"};
  for (const char* const name : kPassedOn) {
    if (const char* const value = std::getenv(name)) {
      environment.push_back(std::string(name) + "=" + value);
    }
  }
  return environment;
}

std::vector<char*> PointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

struct Pipe {
  FileDescriptor readEnd;
  FileDescriptor writeEnd;
};

// Returns the file descriptor, or a duplicate of it with a number above 2. The numbers 0 to 2
// become the program's streams; a new pipe can get one of them if this process was started with it
// closed.
FileDescriptor AboveStandardStreams(FileDescriptor descriptor, const std::string& path) {
  if (descriptor.Get() >= kFirstFreeDescriptor) {
    return descriptor;
  }
  FileDescriptor moved(::fcntl(descriptor.Get(), F_DUPFD_CLOEXEC, kFirstFreeDescriptor));
  if (!moved.IsOpen()) {
    Fail(path, errno);
  }
  return moved;
}

Pipe OpenPipe(const std::string& path) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    Fail(path, errno);
  }
  FileDescriptor readEnd(ends[0]);
  FileDescriptor writeEnd(ends[1]);
  return {AboveStandardStreams(std::move(readEnd), path),
          AboveStandardStreams(std::move(writeEnd), path)};
}

// Whether a signal reaches only the program or its whole process group.
enum class Reach { Program, Group };

// How a program is started: which streams and process group it has, and that it neither blocks
// signals nor ignores SIGPIPE, whatever this process does.
class SpawnPlan {
 public:
  SpawnPlan(int output, int errorOutput, Reach reach) {
    ::posix_spawn_file_actions_init(&actions_);
    ::posix_spawnattr_init(&attributes_);
    ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions_, errorOutput, STDERR_FILENO);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    ::sigaddset(&signals, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
    ::posix_spawnattr_setpgroup(&attributes_, 0);
    const int group = reach == Reach::Group ? POSIX_SPAWN_SETPGROUP : 0;
    ::posix_spawnattr_setflags(
        &attributes_, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | group));
  }
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;
  ~SpawnPlan() {
    ::posix_spawn_file_actions_destroy(&actions_);
    ::posix_spawnattr_destroy(&attributes_);
  }

  pid_t Start(const std::string& path, const std::vector<std::string>& arguments) const {
    std::vector<std::string> words = {path};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environment = MakeEnvironment();
    pid_t process = 0;
    const int error = ::posix_spawn(&process, path.c_str(), &actions_, &attributes_,
                                    PointersTo(words).data(), PointersTo(environment).data());
    if (error != 0) {
      Fail(path, error);
    }
    return process;
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

// A started program. Unless Wait was called, the destructor kills the program or its group, and
// waits for the program.
class RunningProgram {
 public:
  RunningProgram(pid_t process, Reach reach) : process_(process), reach_(reach) {}
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;
  ~RunningProgram() {
    if (process_ > 0) {
      Kill();  // its output is no longer read
      AwaitEnd();
    }
  }

  void Kill() const { ::kill(reach_ == Reach::Group ? -process_ : process_, SIGKILL); }

  bool HasEnded() const {
    siginfo_t end = {};
    const int result =
        ::waitid(P_PID, static_cast<id_t>(process_), &end, WEXITED | WNOHANG | WNOWAIT);
    return result != 0 || end.si_pid != 0;
  }

  int Wait() {
    const int status = AwaitEnd();
    return WIFSIGNALED(status) ? kSignalStatus + WTERMSIG(status) : WEXITSTATUS(status);
  }

 private:
  int AwaitEnd() {
    int status = 0;
    pid_t waited = 0;
    do {
      waited = ::waitpid(process_, &status, 0);
    } while (waited < 0 && errno == EINTR);
    process_ = 0;
    // If this process ignores SIGCHLD, the system keeps no status.
    return waited < 0 ? 0 : status;
  }

  pid_t process_;
  Reach reach_;
};

// The streams of a program, and the functions that receive what it writes.
class Streams {
 public:
  enum class Reading { Nothing, Some, Enough };

  Streams(const std::string& path, OutputReader outputReader, OutputReader errorReader)
      : path_(path),
        output_(OpenPipe(path)),
        errorOutput_(OpenPipe(path)),
        outputReader_(std::move(outputReader)),
        errorReader_(std::move(errorReader)) {}

  pid_t Start(const std::vector<std::string>& arguments, Reach reach) {
    const SpawnPlan plan(output_.writeEnd.Get(), errorOutput_.writeEnd.Get(), reach);
    const pid_t process = plan.Start(path_, arguments);
    output_.writeEnd.Close();
    errorOutput_.writeEnd.Close();
    return process;
  }

  bool AreOpen() const { return output_.readEnd.IsOpen() || errorOutput_.readEnd.IsOpen(); }

  // Waits at most `milliseconds` until there is something to read, and passes it on; -1 means no
  // limit. Reads both streams as they fill, so that the program never blocks on one of them.
  Reading ReadOnce(int milliseconds) {
    // A closed pipe has a negative number, which poll ignores.
    pollfd events[] = {{output_.readEnd.Get(), POLLIN, 0}, {errorOutput_.readEnd.Get(), POLLIN, 0}};
    const int count = ::poll(events, 2, milliseconds);
    if (count < 0 && errno != EINTR) {
      Fail(path_, errno);
    }
    if (count <= 0) {
      return Reading::Nothing;
    }
    if (events[1].revents != 0) {
      Read(errorOutput_.readEnd, errorReader_);
    }
    const bool hasEnough = events[0].revents != 0 && !Read(output_.readEnd, outputReader_);
    return hasEnough ? Reading::Enough : Reading::Some;
  }

 private:
  // Passes on what the pipe contains, or closes it at its end. Returns false if the reader needs no
  // more.
  bool Read(FileDescriptor& pipe, const OutputReader& reader) const {
    std::array<char, kReadSize> buffer;
    const ssize_t count = pipe.Read(buffer.data(), buffer.size());
    if (count < 0) {
      Fail(path_, errno);
    }
    if (count == 0) {
      pipe.Close();
      return true;
    }
    return reader({buffer.data(), static_cast<std::size_t>(count)});
  }

  const std::string path_;
  Pipe output_;
  Pipe errorOutput_;
  const OutputReader outputReader_;
  const OutputReader errorReader_;
};

// Reads both streams to their ends. Returns false if the reader of standard output needs no more.
bool ReadToTheEnd(Streams& streams) {
  while (streams.AreOpen()) {
    if (streams.ReadOnce(-1) == Streams::Reading::Enough) {
      return false;
    }
  }
  return true;
}

// Reads until the program has ended and nothing is left to read, or until the time is up and the
// program still runs. Returns whether it has ended. What it left in the pipes is read even after
// that time.
bool ReadWithin(std::chrono::milliseconds limit, Streams& streams, const RunningProgram& program) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + limit;
  for (;;) {
    const bool isTimeUp = Clock::now() >= deadline;
    const bool hasEnded = program.HasEnded();
    if (isTimeUp && !hasEnded) {
      return false;
    }
    const int wait = streams.AreOpen() ? kSliceMilliseconds : kEndMilliseconds;
    const Streams::Reading reading = streams.ReadOnce(hasEnded ? 0 : wait);
    if (hasEnded && reading == Streams::Reading::Nothing) {
      return true;
    }
  }
}

OutputReader AppendTo(std::string& text) {
  return [&text](std::string_view piece) {
    text.append(piece);
    return true;
  };
}

// Like AppendTo, but throws if the program writes more than kMaxOutputSize bytes.
OutputReader AppendLimited(std::string& text, const std::string& path) {
  return [&text, path](std::string_view piece) {
    if (text.size() + piece.size() > kMaxOutputSize) {
      throw KestrelException("The output of " + path + " is too long");
    }
    text.append(piece);
    return true;
  };
}

}  // namespace

std::string ProgramResult::GetReason() const {
  if (isTimedOut) {
    return "it did not finish in time";
  }
  const std::string_view text = Trim(errorOutput);
  if (text.empty()) {
    return "exit status " + std::to_string(status);
  }
  return std::string(text.substr(0, text.find('\n')));
}

std::optional<std::string> FindProgram(const std::string& name) {
  const char* const path = std::getenv("PATH");
  for (const std::string_view folder : Split(path == nullptr ? kStandardPath : path, ':')) {
    if (!StartsWith(folder, "/")) {
      continue;
    }
    std::string file = std::string(folder) + "/" + name;
    if (IsProgram(file)) {
      return file;
    }
  }
  return std::nullopt;
}

ProgramResult RunProgram(const std::string& path, const std::vector<std::string>& arguments) {
  std::string output;
  ProgramResult result = RunProgram(path, arguments, AppendTo(output));
  result.output = std::move(output);
  return result;
}

ProgramResult RunProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const OutputReader& reader) {
  ProgramResult result;
  Streams streams(path, reader, AppendTo(result.errorOutput));
  RunningProgram program(streams.Start(arguments, Reach::Program), Reach::Program);
  if (ReadToTheEnd(streams)) {
    result.status = program.Wait();
  }
  return result;
}

ProgramResult RunProgramWithin(std::chrono::milliseconds limit, const std::string& path,
                               const std::vector<std::string>& arguments) {
  ProgramResult result;
  Streams streams(path, AppendLimited(result.output, path),
                  AppendLimited(result.errorOutput, path));
  RunningProgram program(streams.Start(arguments, Reach::Group), Reach::Group);
  result.isTimedOut = !ReadWithin(limit, streams, program);
  if (result.isTimedOut) {
    program.Kill();
  }
  result.status = program.Wait();
  return result;
}

}  // namespace Kestrel::Host
