// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Accounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

// Numbers that no account has.
constexpr unsigned kUnknown = 3999999999u;

TEST(AccountsTest, FindsAnAccountByName) {
  const auto root = FindAccount("root");
  ASSERT_TRUE(root);
  EXPECT_EQ(root->name, "root");
  EXPECT_EQ(root->id, 0u);
  EXPECT_FALSE(FindAccount("no such account"));
  EXPECT_FALSE(FindAccount(""));
}

TEST(AccountsTest, WritesANumberWithoutAnAccountInDigits) {
  UserNames names;
  EXPECT_EQ(names.Get(0), "root");
  EXPECT_EQ(names.Get(kUnknown), "3999999999");
  EXPECT_EQ(names.Get(kUnknown), "3999999999");
  EXPECT_EQ(GroupName(0), "root");
  EXPECT_EQ(GroupName(kUnknown), "3999999999");
}

TEST(AccountsTest, RecognizesShellsThatAllowNoLogin) {
  for (const char* const shell : {"/usr/sbin/nologin", "/bin/false", "/bin/sync", "nologin"}) {
    EXPECT_FALSE(IsLoginShell(shell)) << shell;
  }
  for (const char* const shell : {"/bin/bash", "", "/opt/nologin/sh", "/bin/falsey"}) {
    EXPECT_TRUE(IsLoginShell(shell)) << shell;
  }
}

TEST(AccountsTest, ListsTheAccountsThatGetentLists) {
  std::vector<std::string> names;
  for (const Account& account : ReadAccounts()) {
    names.push_back(account.name);
  }
  EXPECT_EQ(names, Testing::WitnessLines("getent passwd | cut -d: -f1"));
}

TEST(AccountsTest, AFullNameEndsAtTheFirstComma) {
  for (const std::string& line : Testing::WitnessLines("getent passwd | cut -d: -f1,5")) {
    const std::size_t colon = line.find(':');
    const std::string description = line.substr(colon + 1);
    const auto account = FindAccount(line.substr(0, colon));
    ASSERT_TRUE(account) << line;
    EXPECT_EQ(account->fullName, description.substr(0, description.find(','))) << line;
  }
}

TEST(AccountsTest, AnAccountsOwnGroupIsTheFirst) {
  for (const Account& account : ReadAccounts()) {
    const auto groups = ReadGroups(account);
    ASSERT_FALSE(groups.empty()) << account.name;
    EXPECT_EQ(groups[0], GroupName(account.groupId)) << account.name;
  }
}

TEST(AccountsTest, AnAccountWithoutAnEntryHasItsOwnGroupOnly) {
  Account account;
  account.name = "no such account";
  account.groupId = kUnknown;
  EXPECT_EQ(ReadGroups(account), std::vector<std::string>{"3999999999"});
}

}  // namespace
}  // namespace Kestrel::Host
