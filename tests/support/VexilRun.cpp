// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/VexilRun.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <thread>
#include <utility>

#include "support/MemoryFile.h"

namespace Kestrel::Testing {

namespace {

constexpr std::chrono::minutes kMaxRunTime(2);
constexpr int kUnableToStart = 127;

int OpenWithoutReader() {
  std::array<int, 2> ends;
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("Unable to create a pipe");
  }
  close(ends[0]);
  return ends[1];
}

int Wait(pid_t tool) {
  const auto deadline = std::chrono::steady_clock::now() + kMaxRunTime;
  int status = 0;
  while (waitpid(tool, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      ADD_FAILURE() << "The tool is still running and will be killed.";
      kill(tool, SIGKILL);
      waitpid(tool, &status, 0);
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return status;
}

std::string GetMissingFolderLines() {
  std::string lines;
  for (const std::string& folder : GetDefaultPluginFolders()) {
    if (!std::filesystem::is_directory(folder)) {
      lines += "Unable to open directory " + folder + " for plugin registration\n";
    }
  }
  return lines;
}

std::string WithoutMissingFolderLines(std::string text) {
  const std::string lines = GetMissingFolderLines();
  if (text.compare(0, lines.size(), lines) != 0) {
    ADD_FAILURE() << "Standard error should begin with\n" << lines << "but is\n" << text;
    return text;
  }
  return text.substr(lines.size());
}

[[noreturn]] void ExitWithError(const char* what) {
  dprintf(STDERR_FILENO, "%s: %s\n", what, strerror(errno));
  _exit(kUnableToStart);
}

}  // namespace

std::vector<std::string> GetDefaultPluginFolders() {
  return {KESTREL_PLUGIN_DIR, KESTREL_PLUGIN_DIR "/ext"};
}

VexilRun::VexilRun(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {
  WithEnvironment("OPR_USERNAME", std::nullopt);
}

VexilRun& VexilRun::WithInput(std::string_view text) {
  input_ = text;
  return *this;
}

VexilRun& VexilRun::WithEnvironment(const std::string& name,
                                    const std::optional<std::string>& value) {
  environment_[name] = value;
  return *this;
}

VexilRun& VexilRun::InDirectory(const std::string& path) {
  directory_ = path;
  return *this;
}

VexilRun& VexilRun::CalledAs(const std::string& name) {
  name_ = name;
  return *this;
}

VexilRun& VexilRun::CalledByNoName() {
  name_.reset();
  return *this;
}

VexilRun& VexilRun::WithOutputTo(const std::string& path) {
  outputPath_ = path;
  return *this;
}

VexilRun& VexilRun::WithoutReader() {
  hasReader_ = false;
  return *this;
}

VexilRun& VexilRun::IgnoringBrokenPipes() {
  ignoresBrokenPipes_ = true;
  return *this;
}

VexilRun& VexilRun::WithoutDescriptor(int descriptor) {
  closed_.push_back(descriptor);
  return *this;
}

VexilResult VexilRun::Run() const {
  // Files, unlike pipes, need no reader while the tool writes.
  const MemoryFile input;
  const MemoryFile output;
  const MemoryFile error;
  input.Write(input_);
  const pid_t tool = fork();
  if (tool == -1) {
    throw std::runtime_error("Unable to fork");
  }
  if (tool == 0) {
    ExecWith(input.GetDescriptor(), output.GetDescriptor(), error.GetDescriptor());
  }
  const int status = Wait(tool);
  VexilResult result;
  result.out = output.Read();
  result.err = WithoutMissingFolderLines(error.Read());
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  return result;
}

void VexilRun::Exec() const { ExecWith(STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO); }

void VexilRun::ExecWith(int input, int output, int error) const {
  if (!outputPath_.empty() && (output = open(outputPath_.c_str(), O_WRONLY | O_CLOEXEC)) == -1) {
    ExitWithError(outputPath_.c_str());
  }
  if (!hasReader_) {
    output = OpenWithoutReader();
  }
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(error, STDERR_FILENO);
  if (!directory_.empty() && chdir(directory_.c_str()) != 0) {
    ExitWithError(directory_.c_str());
  }
  for (const auto& [name, value] : environment_) {
    if (value) {
      setenv(name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
  }
  signal(SIGPIPE, ignoresBrokenPipes_ ? SIG_IGN : SIG_DFL);
  std::vector<char*> words;
  if (name_) {
    words.push_back(const_cast<char*>(name_->c_str()));
  }
  for (const std::string& argument : arguments_) {
    words.push_back(const_cast<char*>(argument.c_str()));
  }
  words.push_back(nullptr);
  for (const int descriptor : closed_) {
    close(descriptor);
  }
  execv(KESTREL_TOOL, words.data());
  ExitWithError(KESTREL_TOOL);
}

}  // namespace Kestrel::Testing
