// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <unistd.h>

#include "gtest/gtest.h"

namespace Kestrel::Testing {

/// While an object of this class exists, this process has no root privileges. Does nothing if the
/// process does not run as root.
class PlainUser {
 public:
  PlainUser() : user_(::geteuid()) {
    if (user_ == 0) {
      EXPECT_EQ(::setresuid(kNobody, kNobody, user_), 0);
    }
  }
  PlainUser(const PlainUser&) = delete;
  PlainUser& operator=(const PlainUser&) = delete;
  ~PlainUser() {
    if (user_ == 0) {
      EXPECT_EQ(::setresuid(user_, user_, user_), 0);
    }
  }

 private:
  static constexpr uid_t kNobody = 65534;

  uid_t user_;
};

}  // namespace Kestrel::Testing
