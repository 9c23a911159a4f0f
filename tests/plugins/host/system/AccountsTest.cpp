// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Accounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Kestrel::Host {
namespace {

// Numbers that no distribution gives.
constexpr unsigned kUnknown = 3999999999u;

TEST(AccountsTest, FindsAnAccountByName) {
  const auto root = FindAccount("root");
  ASSERT_TRUE(root);
  EXPECT_EQ(root->name, "root");
  EXPECT_EQ(root->id, 0u);
  EXPECT_FALSE(FindAccount("no such account"));
  EXPECT_FALSE(FindAccount(""));
}

TEST(AccountsTest, NamesANumberWithoutAccountByItsDigits) {
  UserNames names;
  EXPECT_EQ(names.Get(0), "root");
  EXPECT_EQ(names.Get(kUnknown), "3999999999");
  EXPECT_EQ(names.Get(kUnknown), "3999999999");
  EXPECT_EQ(GroupName(0), "root");
  EXPECT_EQ(GroupName(kUnknown), "3999999999");
}

TEST(AccountsTest, TellsShellsThatLetNobodyIn) {
  for (const char* const shell : {"/usr/sbin/nologin", "/bin/false", "/bin/sync", "nologin"}) {
    EXPECT_FALSE(IsLoginShell(shell)) << shell;
  }
  for (const char* const shell : {"/bin/bash", "", "/opt/nologin/sh", "/bin/falsey"}) {
    EXPECT_TRUE(IsLoginShell(shell)) << shell;
  }
}

}  // namespace
}  // namespace Kestrel::Host
