// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/FilesystemProbe.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <list>

namespace Kestrel::Host {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// After this time without a response, another child continues with the next file system.
constexpr milliseconds kSilenceLimit(100);
// How long to wait for a killed child. One that is blocked in the kernel remains.
constexpr milliseconds kKillTimeout(50);

// What a child reports for each path. It is small enough to be written atomically to a pipe.
struct Report {
  std::uint64_t index;
  FilesystemAnswer answer;
};

FilesystemAnswer QueryFilesystem(const std::string& path) {
  FilesystemAnswer answer;
  struct statvfs usage = {};
  int result = 0;
  do {
    result = ::statvfs(path.c_str(), &usage);
  } while (result != 0 && errno == EINTR);
  if (result != 0) {
    answer.error = errno;
    return answer;
  }
  const std::uint64_t block = usage.f_frsize != 0 ? usage.f_frsize : usage.f_bsize;
  answer.usage = {usage.f_blocks * block, usage.f_bfree * block, usage.f_bavail * block,
                  usage.f_files, usage.f_ffree};
  return answer;
}

// Closes all file descriptors except `pipe`, whose number changes, and replaces the standard
// streams by /dev/null. Otherwise, a child that is blocked in the kernel would keep inherited pipes
// open, and processes that read these pipes to the end would wait for it.
void CloseAllExcept(int& pipe) {
  constexpr int kKept = 3;
  pipe = ::fcntl(pipe, F_DUPFD, kKept);
  const int null = ::open("/dev/null", O_RDWR);
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (null < 0 || ::dup2(null, standard) < 0) {
      ::close(standard);
    }
  }
  pipe = ::dup2(pipe, kKept);
  ::close_range(kKept + 1, ~0U, 0);
}

[[noreturn]] void RunChild(const std::vector<std::string>& paths, std::size_t first, int pipe) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  ::signal(SIGPIPE, SIG_DFL);
  CloseAllExcept(pipe);
  for (std::size_t index = first; index < paths.size(); ++index) {
    const Report report = {index, QueryFilesystem(paths[index])};
    if (::write(pipe, &report, sizeof(report)) != sizeof(report)) {
      break;
    }
  }
  ::_exit(0);
}

// A child process that queries paths one after the other. It still has to report the results for
// the paths from `current_` up to, but not including, `end_`.
class Prober {
 public:
  Prober(const std::vector<std::string>& paths, std::size_t first)
      : current_(first), end_(paths.size()) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
      error_ = errno;
      return;
    }
    process_ = ::fork();
    if (process_ == 0) {
      RunChild(paths, first, ends[1]);
    }
    error_ = process_ < 0 ? errno : 0;
    ::close(ends[1]);
    pipe_ = ends[0];
  }
  Prober(const Prober&) = delete;
  Prober& operator=(const Prober&) = delete;
  ~Prober() {
    if (process_ > 0) {
      End();
    }
    if (pipe_ >= 0) {
      ::close(pipe_);
    }
  }

  int GetError() const { return error_; }
  int GetPipe() const { return pipe_; }
  std::size_t GetCurrent() const { return current_; }
  bool IsFinished() const { return current_ >= end_; }
  bool StopsAfterCurrent() const { return end_ == current_ + 1; }
  Clock::duration GetSilence(Clock::time_point now) const { return now - lastHeard_; }
  void StopAfterCurrent() { end_ = current_ + 1; }

  // Reads a report. Returns false if the child ended before it had reported everything.
  bool Receive(std::vector<FilesystemAnswer>& answers) {
    Report report;
    const ssize_t size = ::read(pipe_, &report, sizeof(report));
    if (size < 0 && errno == EINTR) {
      return true;
    }
    if (size != sizeof(report)) {
      return false;
    }
    answers[report.index] = report.answer;
    current_ = report.index + 1;
    lastHeard_ = Clock::now();
    return true;
  }

 private:
  void End() const {
    ::kill(process_, SIGKILL);
    const Clock::time_point limit = Clock::now() + kKillTimeout;
    while (::waitpid(process_, nullptr, WNOHANG) == 0 && Clock::now() < limit) {
      pollfd nothing = {-1, 0, 0};
      ::poll(&nothing, 1, 1);
    }
  }

  std::size_t current_;
  std::size_t end_;
  pid_t process_ = -1;
  int pipe_ = -1;
  int error_ = 0;
  Clock::time_point lastHeard_ = Clock::now();
};

class FilesystemProbe {
 public:
  FilesystemProbe(const std::vector<std::string>& paths, milliseconds deadline)
      : paths_(paths), deadline_(deadline), answers_(paths.size()) {}

  std::vector<FilesystemAnswer> Run() {
    Start(0);
    while (!probers_.empty()) {
      WaitForReports();
      HandleSilence();
    }
    return std::move(answers_);
  }

 private:
  void Start(std::size_t first) {
    if (first >= paths_.size()) {
      return;
    }
    probers_.emplace_back(paths_, first);
    if (probers_.back().GetError() != 0) {
      throw KestrelException(std::string("Unable to query the file systems: ") +
                             std::strerror(probers_.back().GetError()));
    }
  }

  void WaitForReports() {
    std::vector<pollfd> pipes;
    for (const Prober& prober : probers_) {
      pipes.push_back({prober.GetPipe(), POLLIN, 0});
    }
    if (::poll(pipes.data(), pipes.size(), static_cast<int>(TimeToNextLimit().count())) <= 0) {
      return;
    }
    auto prober = probers_.begin();
    for (const pollfd& pipe : pipes) {
      const auto current = prober++;
      if (pipe.revents != 0) {
        HandleReport(current);
      }
    }
  }

  void HandleReport(std::list<Prober>::iterator prober) {
    if (!prober->Receive(answers_)) {
      // The child died at this path. If no other child has taken over the paths after it, a new one
      // does.
      answers_[prober->GetCurrent()].error = EIO;
      const std::size_t following = prober->GetCurrent() + 1;
      const bool isLast = prober->StopsAfterCurrent();
      probers_.erase(prober);
      if (!isLast) {
        Start(following);
      }
      return;
    }
    if (prober->IsFinished()) {
      probers_.erase(prober);
    }
  }

  void HandleSilence() {
    const Clock::time_point now = Clock::now();
    for (auto prober = probers_.begin(); prober != probers_.end();) {
      const auto current = prober++;
      const Clock::duration silence = current->GetSilence(now);
      if (silence >= std::min(kSilenceLimit, deadline_) && !current->StopsAfterCurrent()) {
        const std::size_t following = current->GetCurrent() + 1;
        current->StopAfterCurrent();
        Start(following);
      }
      if (silence >= deadline_) {
        answers_[current->GetCurrent()].error = ETIMEDOUT;
        probers_.erase(current);
      }
    }
  }

  // Returns the time until the next silent child reaches its limit.
  milliseconds TimeToNextLimit() const {
    const Clock::time_point now = Clock::now();
    milliseconds time = deadline_;
    for (const Prober& prober : probers_) {
      const milliseconds limit =
          prober.StopsAfterCurrent() ? deadline_ : std::min(kSilenceLimit, deadline_);
      const auto silence = std::chrono::duration_cast<milliseconds>(prober.GetSilence(now));
      time = std::min(time, std::max(milliseconds(0), limit - silence));
    }
    return time;
  }

  const std::vector<std::string>& paths_;
  milliseconds deadline_;
  std::vector<FilesystemAnswer> answers_;
  std::list<Prober> probers_;
};

}  // namespace

std::vector<FilesystemAnswer> ProbeFilesystems(const std::vector<std::string>& paths,
                                               milliseconds deadline) {
  return FilesystemProbe(paths, deadline).Run();
}

}  // namespace Kestrel::Host
