// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/support/FileWatch.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <utility>

namespace Kestrel::Testing {
namespace {

FileWatch* currentWatch = nullptr;

// Returns whether the call that opens `path` must fail. If so, sets errno.
bool Fails(const char* path) {
  const int error = currentWatch == nullptr ? 0 : currentWatch->Note(path);
  if (error != 0) {
    errno = error;
  }
  return error != 0;
}

int OpenReally(const char* path, int flags, mode_t mode) {
  return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

}  // namespace

FileWatch::FileWatch() : FileWatch(std::string(), 0) {}

FileWatch::FileWatch(std::string path, int error) : path_(std::move(path)), error_(error) {
  EXPECT_EQ(currentWatch, nullptr);
  currentWatch = this;
}

FileWatch::~FileWatch() { currentWatch = nullptr; }

std::vector<std::string> FileWatch::GetOpened() const {
  std::vector<std::string> paths = opened_;
  std::sort(paths.begin(), paths.end());
  paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
  return paths;
}

int FileWatch::Note(const char* path) {
  opened_.emplace_back(path);
  if (hasFailed_ || error_ == 0 || path_ != path) {
    return 0;
  }
  hasFailed_ = true;
  return error_;
}

}  // namespace Kestrel::Testing

// These functions replace those of the C library in this program and in the plug-ins that it loads.
extern "C" {

__attribute__((visibility("default"))) int open(const char* path, int flags, ...) {
  if (Kestrel::Testing::Fails(path)) {
    return -1;
  }
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0) {
    va_list arguments;
    va_start(arguments, flags);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  return Kestrel::Testing::OpenReally(path, flags, mode);
}

__attribute__((visibility("default"))) DIR* opendir(const char* path) {
  if (Kestrel::Testing::Fails(path)) {
    return nullptr;
  }
  const int folder =
      Kestrel::Testing::OpenReally(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK, 0);
  return folder < 0 ? nullptr : ::fdopendir(folder);
}

}  // extern "C"
