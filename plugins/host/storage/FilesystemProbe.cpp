// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/FilesystemProbe.h"

#include <fcntl.h>
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

// How long a file system may keep silent before the others are asked without waiting for it.
constexpr milliseconds kPatience(100);
// How long a killed child may take to end; one that the kernel holds is left behind.
constexpr milliseconds kEndPatience(50);

// What a child sends for each path; smaller than a pipe's atomic write, so never sent in part.
struct Report {
  std::uint64_t index;
  FilesystemAnswer answer;
};

FilesystemAnswer AskFilesystem(const std::string& path) {
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

// The child must hold nothing that others wait for: a child that the kernel does not let go would
// else keep the reader of this process's standard output waiting.
void KeepOnly(int& pipe) {
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
  KeepOnly(pipe);
  for (std::size_t index = first; index < paths.size(); ++index) {
    const Report report = {index, AskFilesystem(paths[index])};
    if (::write(pipe, &report, sizeof(report)) != sizeof(report)) {
      break;
    }
  }
  ::_exit(0);
}

// A child that asks the paths from `next` to before `end`, one after the other.
class Prober {
 public:
  Prober(const std::vector<std::string>& paths, std::size_t first)
      : next_(first), end_(paths.size()) {
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
  std::size_t GetNext() const { return next_; }
  bool IsFinished() const { return next_ >= end_; }
  bool IsOvertaken() const { return end_ == next_ + 1; }
  Clock::duration GetSilence(Clock::time_point now) const { return now - lastHeard_; }
  void StopBehindNext() { end_ = next_ + 1; }

  // Takes what the child has sent; false when it ended without having sent everything.
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
    next_ = report.index + 1;
    lastHeard_ = Clock::now();
    return true;
  }

 private:
  void End() const {
    ::kill(process_, SIGKILL);
    const Clock::time_point limit = Clock::now() + kEndPatience;
    while (::waitpid(process_, nullptr, WNOHANG) == 0 && Clock::now() < limit) {
      pollfd nothing = {-1, 0, 0};
      ::poll(&nothing, 1, 1);
    }
  }

  std::size_t next_;
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
      GiveUpOnSilent();
    }
    return std::move(answers_);
  }

 private:
  void Start(std::size_t first) {
    if (first >= paths_.size()) {
      return;
    }
    probers_.emplace_back(paths_, first);
    if (probers_.back().GetError() == 0) {
      return;
    }
    for (std::size_t index = first; index < paths_.size(); ++index) {
      answers_[index].error = probers_.back().GetError();
    }
    probers_.pop_back();
  }

  void WaitForReports() {
    std::vector<pollfd> pipes;
    for (const Prober& prober : probers_) {
      pipes.push_back({prober.GetPipe(), POLLIN, 0});
    }
    if (::poll(pipes.data(), pipes.size(), static_cast<int>(PollTime().count())) <= 0) {
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
      // It died over this path; the paths behind it are still open.
      answers_[prober->GetNext()].error = EIO;
      const std::size_t following = prober->GetNext() + 1;
      const bool isLast = prober->IsOvertaken();
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

  void GiveUpOnSilent() {
    const Clock::time_point now = Clock::now();
    for (auto prober = probers_.begin(); prober != probers_.end();) {
      const auto current = prober++;
      const Clock::duration silence = current->GetSilence(now);
      if (silence >= std::min(kPatience, deadline_) && !current->IsOvertaken()) {
        const std::size_t following = current->GetNext() + 1;
        current->StopBehindNext();
        Start(following);
      }
      if (silence >= deadline_) {
        answers_[current->GetNext()].error = ETIMEDOUT;
        probers_.erase(current);
      }
    }
  }

  // Until the next moment at which a silent child is overtaken or given up.
  milliseconds PollTime() const {
    const Clock::time_point now = Clock::now();
    milliseconds time = deadline_;
    for (const Prober& prober : probers_) {
      const milliseconds limit = prober.IsOvertaken() ? deadline_ : std::min(kPatience, deadline_);
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
