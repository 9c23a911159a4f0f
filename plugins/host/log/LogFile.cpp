// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogFile.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace Kestrel::Host {
namespace {

constexpr std::size_t kBlockSize = std::size_t{64} << 10;

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
  throw KestrelException("Unable to read " + path + ": " + reason);
}

[[noreturn]] void FailWithSystemText(const std::string& path) { Fail(path, std::strerror(errno)); }

// The kernel generates the content of such a file while it is read, so its size is not known in
// advance.
bool IsMadeByKernel(const std::string& path) {
  struct statfs system = {};
  return ::statfs(path.c_str(), &system) == 0 &&
         (system.f_type == PROC_SUPER_MAGIC || system.f_type == SYSFS_MAGIC);
}

// Checks before opening, because opening a device can have side effects.
void RequireRegularFile(const std::string& path) {
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) {
    FailWithSystemText(path);
  }
  if (S_ISDIR(status.st_mode)) {
    Fail(path, std::strerror(EISDIR));
  }
  if (!S_ISREG(status.st_mode) || IsMadeByKernel(path)) {
    Fail(path, "Not a regular file");
  }
}

// O_NONBLOCK, in case the path has become a named pipe since the check: opening must not wait.
FileDescriptor Open(const std::string& path) {
  RequireRegularFile(path);
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  if (!file.IsOpen()) {
    FailWithSystemText(path);
  }
  return file;
}

std::uint64_t SizeOf(const FileDescriptor& file, const std::string& path) {
  struct stat status = {};
  if (::fstat(file.Get(), &status) != 0) {
    FailWithSystemText(path);
  }
  return static_cast<std::uint64_t>(status.st_size);
}

// Returns the position of the last line feed in the first `size` bytes, otherwise npos.
std::size_t FindLastNewline(const std::string& text, std::size_t size) {
  const void* const found = ::memrchr(text.data(), '\n', size);
  return found == nullptr ? std::string::npos
                          : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

}  // namespace

LogFile::LogFile(const std::string& path)
    : path_(path), file_(Open(path)), offset_(SizeOf(file_, path)), hasFirstLine_(offset_ > 0) {}

std::optional<std::string_view> LogFile::PreviousLine() {
  if (!isStarted_) {
    Start();
  }
  std::size_t unsearched = end_;
  for (;;) {
    const std::size_t newline = FindLastNewline(buffer_, unsearched);
    if (newline != std::string::npos) {
      return TakeLine(newline + 1, newline);
    }
    if (offset_ == 0) {
      break;
    }
    unsearched = ReadBlockBefore();
  }
  if (!std::exchange(hasFirstLine_, false)) {
    return std::nullopt;
  }
  return TakeLine(0, 0);
}

// Returns the unreturned part from `first` on. What precedes `end` remains unreturned.
std::string_view LogFile::TakeLine(std::size_t first, std::size_t end) {
  RequireLineSize(end_ - first);
  return {buffer_.data() + first, std::exchange(end_, end) - first};
}

void LogFile::RequireLineSize(std::size_t size) const {
  if (size > kMaxLineSize) {
    Fail(path_, "A line is longer than " + std::to_string(kMaxLineSize >> 20) + " MiB");
  }
}

void LogFile::Start() {
  isStarted_ = true;
  if (offset_ > 0) {
    ReadBlockBefore();
    // This line feed ends the last line and does not start another.
    end_ -= buffer_[end_ - 1] == '\n' ? 1 : 0;
  }
}

// Returns the number of bytes added at the start of the buffer. Blocks become larger while a line
// extends over several of them, so that its bytes are moved only a few times.
std::size_t LogFile::ReadBlockBefore() {
  RequireLineSize(end_);
  const auto size =
      static_cast<std::size_t>(std::min<std::uint64_t>(offset_, std::max(kBlockSize, end_)));
  buffer_.resize(end_);
  buffer_.insert(0, size, '\0');
  ReadAt(buffer_.data(), size, offset_ - size);
  offset_ -= size;
  end_ += size;
  return size;
}

void LogFile::ReadAt(char* buffer, std::size_t size, std::uint64_t offset) const {
  while (size > 0) {
    const ssize_t count = ::pread(file_.Get(), buffer, size, static_cast<off_t>(offset));
    if (count == 0) {
      Fail(path_, "It became shorter while it was read");
    }
    if (count < 0 && errno != EINTR) {
      FailWithSystemText(path_);
    }
    const auto advance = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    buffer += advance;
    size -= advance;
    offset += advance;
  }
}

}  // namespace Kestrel::Host
