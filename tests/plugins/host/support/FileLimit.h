// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Kestrel::Testing {

/// While an object of this class exists, this process may open at most `count` files in addition to
/// those that were open when the object was constructed.
class FileLimit {
 public:
  explicit FileLimit(rlim_t count) {
    EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before_), 0);
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(next);
    const rlimit lower = {static_cast<rlim_t>(next) + count, before_.rlim_max};
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &lower), 0);
  }
  FileLimit(const FileLimit&) = delete;
  FileLimit& operator=(const FileLimit&) = delete;
  ~FileLimit() { ::setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_ = {};
};

}  // namespace Kestrel::Testing
