// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

namespace Kestrel::Host {

/// Owns a file descriptor and closes it. A negative number means that it owns none.
class FileDescriptor {
 public:
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&&) = delete;
  ~FileDescriptor() {
    const int error = errno;  // closing must not replace the caller's error
    Close();
    errno = error;
  }

  bool IsOpen() const { return number_ >= 0; }
  int Get() const { return number_; }

  /// Closes it; returns 0 or the error number.
  int Close() {
    const int number = std::exchange(number_, -1);
    return number < 0 || ::close(number) == 0 ? 0 : errno;
  }

  /// read(2), retried after a signal.
  ssize_t Read(void* buffer, std::size_t size) const {
    ssize_t count = 0;
    do {
      count = ::read(number_, buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
  }

  /// write(2), retried after a signal.
  ssize_t Write(const void* bytes, std::size_t size) const {
    ssize_t count = 0;
    do {
      count = ::write(number_, bytes, size);
    } while (count < 0 && errno == EINTR);
    return count;
  }

 private:
  int number_;
};

}  // namespace Kestrel::Host
