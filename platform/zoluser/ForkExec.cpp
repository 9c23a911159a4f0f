// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Starts a child with posix_spawn, because the time that it takes does not depend on the size of
// the parent, and because it reports that a program cannot be executed.

#include <fcntl.h>
#include <spawn.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <vector>

#include "kestrel/platform/Zoluser.h"

extern char** environ;

namespace {

class FileActions {
 public:
  FileActions() { posix_spawn_file_actions_init(&actions_); }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  void Duplicate(int from, int to) { Keep(posix_spawn_file_actions_adddup2(&actions_, from, to)); }
  void Close(int fd) { Keep(posix_spawn_file_actions_addclose(&actions_, fd)); }
  void CloseFrom(int fd) { Keep(posix_spawn_file_actions_addclosefrom_np(&actions_, fd)); }

  int Error() const { return error_; }
  const posix_spawn_file_actions_t* Get() const { return &actions_; }

 private:
  void Keep(int error) {
    if (error_ == 0) {
      error_ = error;
    }
  }

  posix_spawn_file_actions_t actions_;
  int error_ = 0;
};

/// In the child, SIGPIPE has its default action and no signal is blocked, whatever the settings of
/// the parent.
class SpawnAttributes {
 public:
  SpawnAttributes() {
    posix_spawnattr_init(&attributes_);
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes_, &defaults);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;

  const posix_spawnattr_t* Get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

using FdMap = std::vector<ZoluserForkFd>;

/// Whether one mapping may overwrite a file descriptor before another has copied it.
bool Overlaps(const FdMap& map) {
  for (const ZoluserForkFd& source : map) {
    for (const ZoluserForkFd& target : map) {
      if (&source != &target && source.parentFd == target.childFd) {
        return true;
      }
    }
  }
  return false;
}

int HighestFd(const FdMap& map) {
  int highest = -1;
  for (const ZoluserForkFd& entry : map) {
    highest = std::max({highest, entry.childFd, entry.parentFd});
  }
  return highest;
}

/// First duplicates every source to a number above all mapped file descriptors, so that no mapping
/// overwrites a source.
void MoveSourcesUp(FdMap& map, FileActions& actions) {
  int next = HighestFd(map) + 1;
  for (ZoluserForkFd& entry : map) {
    actions.Duplicate(entry.parentFd, next);
    entry.parentFd = next++;
  }
}

void CloseUnmapped(const FdMap& map, FileActions& actions) {
  int end = 0;
  for (const ZoluserForkFd& entry : map) {
    end = std::max(end, entry.childFd + 1);
  }
  for (int fd = 0; fd < end; ++fd) {
    const bool mapped = std::any_of(
        map.begin(), map.end(), [fd](const ZoluserForkFd& entry) { return entry.childFd == fd; });
    if (!mapped) {
      actions.Close(fd);
    }
  }
  actions.CloseFrom(end);
}

}  // namespace

ZoluserStatus ZoluserCompat_ForkExec(const char* path, const char* const* argv,
                                     const char* const* envp, const ZoluserForkFd* fdMap,
                                     std::size_t fdCount, pid_t* childPid) {
  FdMap map(fdMap, fdMap + fdCount);
  FileActions actions;
  if (Overlaps(map)) {
    MoveSourcesUp(map, actions);
  }
  for (const ZoluserForkFd& entry : map) {
    actions.Duplicate(entry.parentFd, entry.childFd);
  }
  CloseUnmapped(map, actions);
  if (actions.Error() != 0) {
    return actions.Error();
  }
  const SpawnAttributes attributes;
  return posix_spawn(childPid, path, actions.Get(), attributes.Get(),
                     const_cast<char* const*>(argv),
                     envp == nullptr ? environ : const_cast<char* const*>(envp));
}
