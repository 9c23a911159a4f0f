// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "e2e/ThrowAwayRoot.h"

#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "support/MemoryFile.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::Testing {

namespace {

namespace fs = std::filesystem;

constexpr int kUnableToPrepare = 126;

void Require(bool isDone, const std::string& what) {
  if (!isDone) {
    throw std::runtime_error(what + ": " + strerror(errno));
  }
}

void Bind(const std::string& source, const std::string& target) {
  fs::create_directories(target);
  Require(mount(source.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0, target);
}

// Adds the loader, the libraries, the programs and the devices of this machine, and an empty /tmp.
void AddSystem(const std::string& root) {
  Bind("/usr", root + "/usr");
  const unsigned long flags = MS_BIND | MS_REMOUNT | MS_RDONLY;
  Require(mount(nullptr, (root + "/usr").c_str(), nullptr, flags, nullptr) == 0, "/usr");
  for (const char* const folder : {"/bin", "/sbin", "/lib", "/lib64"}) {
    if (fs::is_symlink(folder)) {
      fs::copy_symlink(folder, root + folder);
    } else if (fs::is_directory(folder)) {
      Bind(folder, root + folder);
    }
  }
  Bind("/dev", root + "/dev");
  fs::create_directory(root + "/tmp");
  fs::permissions(root + "/tmp", fs::perms::all | fs::perms::sticky_bit);
}

void AddTool(const std::string& root) {
  const fs::path libraries = fs::path(KESTREL_LIBRARY).parent_path();
  fs::create_directories(root + libraries.string());
  for (const fs::directory_entry& entry : fs::directory_iterator(libraries)) {
    if (entry.path().filename().string().rfind("libkestrel.so", 0) == 0) {
      fs::copy(entry.path(), root + entry.path().string(), fs::copy_options::copy_symlinks);
    }
  }
  const fs::path modules = fs::path(KESTREL_XML_MODULE).parent_path();
  fs::copy(modules, root + modules.string());
  fs::create_directories(root + fs::path(KESTREL_TOOL).parent_path().string());
  fs::copy_file(KESTREL_TOOL, root + KESTREL_TOOL);
#ifdef KESTREL_COUNTED_OBJECTS
  // The run-time library for coverage writes its data beside the object files.
  Bind(KESTREL_COUNTED_OBJECTS, root + KESTREL_COUNTED_OBJECTS);
#endif
  fs::create_directories(root + KESTREL_PLUGIN_DIR "/ext");
  fs::create_directories(root + "/samples/helpers");
  for (const char* const sample :
       {"EchoPlugin.so", "OriginPlugin.so", "helpers/libOriginHelper.so"}) {
    fs::copy_file(fs::path(KESTREL_TEST_PLUGIN_DIR) / sample, root + "/samples/" + sample);
  }
}

bool CanMount() {
  const pid_t child = fork();
  if (child == 0) {
    _exit(unshare(CLONE_NEWNS) == 0 &&
                  mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
              ? 0
              : 1);
  }
  int status = 0;
  return waitpid(child, &status, 0) == child && status == 0;
}

// Removes the messages of the run-time library for coverage, which can write its data only as root.
std::string WithoutProfiling(const std::string& text) {
  std::string kept;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
    if (text.compare(at, 10, "profiling:") != 0) {
      kept += text.substr(at, end - at);
    }
    at = end;
  }
  return kept;
}

}  // namespace

std::optional<std::string> WhyNoThrowAwayRoot() {
  if (geteuid() != 0) {
    return "Only root can create files of several users.";
  }
  if (std::string(KESTREL_PLUGIN_DIR).rfind("/usr/", 0) == 0) {
    return "The default folder of this build is in /usr, which the runs share.";
  }
  if (!CanMount()) {
    return "The kernel denies this process mounts of its own.";
  }
  return std::nullopt;
}

ThrowAwayRoot& ThrowAwayRoot::As(uid_t real, uid_t effective) {
  real_ = real;
  effective_ = effective;
  return *this;
}

ThrowAwayRoot& ThrowAwayRoot::WithEnvironment(const std::string& name, const std::string& value) {
  environment_[name] = value;
  return *this;
}

ThrowAwayRoot& ThrowAwayRoot::WithoutProc() {
  hasProc_ = false;
  return *this;
}

VexilResult ThrowAwayRoot::Run(const std::vector<std::string>& arguments) const {
  const ScopedTempDir folder;
  const MemoryFile output;
  const MemoryFile error;
  const pid_t tool = fork();
  Require(tool != -1, "fork");
  if (tool == 0) {
    dup2(output.GetDescriptor(), STDOUT_FILENO);
    dup2(error.GetDescriptor(), STDERR_FILENO);
    try {
      Enter(folder.GetPath());
      Exec(arguments);
    } catch (const std::exception& problem) {
      dprintf(STDERR_FILENO, "%s\n", problem.what());
    }
    _exit(kUnableToPrepare);
  }
  int status = 0;
  Require(waitpid(tool, &status, 0) == tool, "waitpid");
  VexilResult result;
  result.out = output.Read();
  result.err = WithoutProfiling(error.Read());
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  return result;
}

void ThrowAwayRoot::Enter(const std::string& folder) const {
  umask(S_IWGRP | S_IWOTH);
  Require(unshare(CLONE_NEWNS) == 0, "unshare");
  Require(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private mounts");
  Require(mount("none", folder.c_str(), "tmpfs", 0, "mode=755") == 0, folder);
  AddSystem(folder);
  AddTool(folder);
  if (hasProc_) {
    Bind("/proc", folder + "/proc");
  }
  Require(chroot(folder.c_str()) == 0 && chdir("/") == 0, "chroot");
  prepare_();
}

void ThrowAwayRoot::Exec(const std::vector<std::string>& arguments) const {
  Require(setgroups(0, nullptr) == 0, "setgroups");
  Require(setresgid(real_, real_, real_) == 0, "setresgid");
  Require(setresuid(real_, effective_, effective_) == 0, "setresuid");
  clearenv();
  for (const auto& [name, value] : environment_) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  std::vector<std::string> words = {"vexil"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  pointers.push_back(nullptr);
  execv(KESTREL_TOOL, pointers.data());
  throw std::runtime_error(KESTREL_TOOL);
}

void Own(const std::string& path, uid_t user, gid_t group) {
  Require(lchown(path.c_str(), user, group) == 0, path);
}

void SetMode(const std::string& path, mode_t mode) {
  Require(chmod(path.c_str(), mode) == 0, path);
}

void MakeLink(const std::string& target, const std::string& path) {
  fs::create_symlink(target, path);
}

void MakeFolder(const std::string& path) { fs::create_directories(path); }

void MakePipe(const std::string& path) { Require(mkfifo(path.c_str(), 0644) == 0, path); }

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  file.close();
  Require(file.good(), path);
}

void Move(const std::string& from, const std::string& to) { fs::rename(from, to); }

}  // namespace Kestrel::Testing
