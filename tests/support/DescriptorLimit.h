// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/resource.h>

namespace Kestrel::Testing {

/// Restores the limit of file descriptors in its destructor. The default constructor does not
/// change the limit.
class DescriptorLimit {
 public:
  DescriptorLimit() { getrlimit(RLIMIT_NOFILE, &before_); }

  /// While this object exists, no file descriptor can be opened whose number is `limit` or
  /// greater.
  explicit DescriptorLimit(int limit) : DescriptorLimit() {
    rlimit limited = before_;
    limited.rlim_cur = static_cast<rlim_t>(limit);
    setrlimit(RLIMIT_NOFILE, &limited);
  }
  DescriptorLimit(const DescriptorLimit&) = delete;
  DescriptorLimit& operator=(const DescriptorLimit&) = delete;
  ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_;
};

}  // namespace Kestrel::Testing
