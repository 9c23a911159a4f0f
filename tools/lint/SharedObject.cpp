// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The child writes one JSON value on each line: {"enter": WHAT} before each step, {"fault": ...},
// and {"end": ...} as the last. So its parent knows what was being examined when it ends early.

#include "tools/lint/SharedObject.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <utility>

#include "kestrel/KestrelException.h"
#include "tools/catalog/CatalogJson.h"
#include "tools/lint/ObjectExaminer.h"

namespace Kestrel::Lint {

using nlohmann::json;

namespace {

void WriteAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(descriptor, text.data(), text.size());
    if (count < 0 && errno != EINTR) {
      _exit(EXIT_FAILURE);
    }
    text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
}

void Send(int descriptor, const json& value) {
  WriteAll(descriptor, value.dump(-1, ' ', false, json::error_handler_t::replace) + "\n");
}

// A plug-in may read, print and complain, and a crash is expected.
void PrepareChild() {
  setpgid(0, 0);
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    dup2(nothing, stream);
  }
  const rlimit noCore = {0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
}

[[noreturn]] void RunChild(int descriptor, const std::string& file,
                           const std::vector<std::string>& before) {
  PrepareChild();
  ObjectExaminer examiner(
      [descriptor](const std::string& what) {
        Send(descriptor, {{"enter", what}});
      },
      [descriptor](const ObjectFault& fault) {
        Send(descriptor, {{"fault", json::array({fault.rule, fault.what, fault.advice})}});
      });
  try {
    const ObjectReport report = examiner.Run(file, before);
    Send(descriptor,
         {{"end", {{"tree", Catalog::WriteJson(report.tree)}, {"formatters", report.formatters}}}});
  } catch (...) {
    Send(descriptor, {{"fault", json::array({"object-exception",
                                             "it throws something that is not a KestrelException",
                                             "throw KestrelException"})}});
    _exit(EXIT_FAILURE);
  }
  _exit(EXIT_SUCCESS);
}

/// A child process and the pipe from it. The child and its own children are killed at the end.
class Child {
 public:
  Child(const std::string& file, const std::vector<std::string>& before) {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
      throw KestrelException(std::string("cannot make a pipe: ") + std::strerror(errno));
    }
    input_ = ends[0];
    id_ = fork();
    if (id_ == 0) {
      RunChild(ends[1], file, before);
    }
    close(ends[1]);
    if (id_ < 0) {
      close(input_);
      throw KestrelException(std::string("cannot start a process: ") + std::strerror(errno));
    }
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    Wait();
    close(input_);
  }

  /// Reads a line. Nothing at the end, or when nothing arrives for `patience`; see `IsLate`.
  std::optional<std::string> ReadLine(std::chrono::milliseconds patience) {
    while (true) {
      const std::size_t end = buffer_.find('\n');
      if (end != std::string::npos) {
        std::string line = buffer_.substr(0, end);
        buffer_.erase(0, end + 1);
        return line;
      }
      pollfd source = {input_, POLLIN, 0};
      const int ready = poll(&source, 1, static_cast<int>(patience.count()));
      isLate_ = ready == 0;
      char block[1 << 16];
      const ssize_t count = ready > 0 ? read(input_, block, sizeof(block)) : 0;
      if (count <= 0) {
        return std::nullopt;
      }
      buffer_.append(block, static_cast<std::size_t>(count));
    }
  }

  bool IsLate() const { return isLate_; }

  /// Kills the child if it is alive, and returns its wait status.
  int Wait() {
    if (id_ > 0) {
      if (isLate_) {
        kill(id_, SIGKILL);
      }
      while (waitpid(id_, &status_, 0) < 0 && errno == EINTR) {
      }
      kill(-id_, SIGKILL);
      id_ = -1;
    }
    return status_;
  }

 private:
  int input_ = -1;
  pid_t id_ = -1;
  int status_ = 0;
  bool isLate_ = false;
  std::string buffer_;
};

/// Reads the lines of a child into a report. Returns whether the last one was among them.
class Listener {
 public:
  explicit Listener(ObjectReport& report) : report_(report) {}

  void Take(const std::string& line) {
    const json value = json::parse(line);
    if (value.contains("enter")) {
      step = value["enter"].get<std::string>();
    } else if (value.contains("fault")) {
      const json& fault = value["fault"];
      report_.faults.push_back(
          {fault[0].get<std::string>(), fault[1].get<std::string>(), fault[2].get<std::string>()});
    } else if (value.contains("end")) {
      isComplete = true;
      report_.tree = Catalog::ReadJson(value["end"]["tree"].get<std::string>());
      report_.formatters = value["end"]["formatters"].get<std::vector<std::string>>();
    }
  }

  std::string step;
  bool isComplete = false;

 private:
  ObjectReport& report_;
};

std::string DescribeEnd(int status) {
  if (WIFSIGNALED(status)) {
    return std::string("it is ended by the signal ") + strsignal(WTERMSIG(status));
  }
  return "it ends the process with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

ObjectReport ExamineSharedObject(const std::string& file, const std::vector<std::string>& before,
                                 std::chrono::milliseconds patience) {
  ObjectReport report;
  Listener listener(report);
  Child child(file, before);
  while (const std::optional<std::string> line = child.ReadLine(patience)) {
    listener.Take(*line);
  }
  const int status = child.Wait();
  if (child.IsLate()) {
    report.faults.push_back({"object-hang",
                             "it makes no progress for " + std::to_string(patience.count()) +
                                 " ms at: " + listener.step,
                             "end every loop and wait"});
  } else if (!listener.isComplete) {
    report.faults.push_back({"object-crash", DescribeEnd(status) + " at: " + listener.step,
                             "run the tool with the plug-in in a debugger"});
  }
  return report;
}

}  // namespace Kestrel::Lint
