// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/text/SystemError.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstring>

namespace Kestrel::AutoCli {
namespace {

TEST(SystemErrorTest, IsTheMessageOfTheSystem) {
  EXPECT_EQ(SystemErrorText(ENOENT), "No such file or directory");
  EXPECT_EQ(SystemErrorText(EILSEQ), std::strerror(EILSEQ));
}

TEST(SystemErrorTest, TheMessageForAnUnknownNumberContainsIt) {
  EXPECT_EQ(SystemErrorText(INT_MAX), "Unknown error 2147483647");
  EXPECT_EQ(SystemErrorText(-5), "Unknown error -5");
}

}  // namespace
}  // namespace Kestrel::AutoCli
