// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Accounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/support/PlainUser.h"
#include "plugins/host/system/GroupNames.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

namespace Kestrel::Host {
namespace {

using Testing::ScopedTempDir;
using ::testing::ThrowsMessage;

// A number that no account and no group has.
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

TEST(AccountsTest, RecognizesShellsThatRefuseLogins) {
  for (const char* const shell : {"/usr/sbin/nologin", "/bin/false", "/bin/sync", "nologin"}) {
    EXPECT_FALSE(IsLoginShell(shell)) << shell;
  }
  for (const char* const shell : {"/bin/bash", "", "/opt/nologin/sh", "/bin/falsey"}) {
    EXPECT_TRUE(IsLoginShell(shell)) << shell;
  }
}

TEST(AccountsTest, ListsTheAccountsThatGetentLists) {
  std::vector<std::string> names;
  ForEachAccount([&names](const AccountEntry& account) { names.emplace_back(account.name); });
  EXPECT_EQ(names, Testing::WitnessLines("getent passwd | cut -d: -f1"));
}

TEST(AccountsTest, AnInterruptedListingDoesNotShortenTheNextListing) {
  EXPECT_THROW(ForEachAccount([](const AccountEntry& account) {
                 if (account.id != 0) {
                   throw KestrelException("enough");
                 }
               }),
               KestrelException);
  std::size_t count = 0;
  ForEachAccount([&count](const AccountEntry&) { ++count; });
  EXPECT_EQ(count, Testing::WitnessLines("getent passwd").size());
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
  for (const std::string& name : Testing::WitnessLines("getent passwd | cut -d: -f1")) {
    const auto account = FindAccount(name);
    ASSERT_TRUE(account) << name;
    const auto groups = ReadGroups(*account);
    ASSERT_FALSE(groups.empty()) << name;
    EXPECT_EQ(groups[0], GroupName(account->groupId)) << name;
  }
}

TEST(AccountsTest, AnAccountWithoutAnEntryHasItsOwnGroupOnly) {
  Account account;
  account.name = "no such account";
  account.groupId = kUnknown;
  EXPECT_EQ(ReadGroups(account), std::vector<std::string>{"3999999999"});
}

// Lookups in a file. If it cannot be read, they must fail, because any answer could be wrong.
struct AccountQuestion {
  const char* name;
  const char* file;
  void (*ask)();
};

const AccountQuestion kQuestions[] = {
    {"AllAccounts", "/etc/passwd", [] { ForEachAccount([](const AccountEntry&) {}); }},
    {"Account", "/etc/passwd", [] { FindAccount("no such account"); }},
    {"User", "/etc/passwd", [] { UserNames().Get(kUnknown); }},
    {"Group", "/etc/group", [] { GroupName(kUnknown); }},
    {"AllGroups", "/etc/group", [] { GroupNames().Get(0); }},
    {"GroupsOfAnAccount", "/etc/group", [] { ReadGroups(Account()); }},
};

class AccountErrorTest : public ::testing::TestWithParam<AccountQuestion> {
 protected:
  static void ExpectError(const std::string& reason) {
    EXPECT_THAT(GetParam().ask, ThrowsMessage<KestrelException>(std::string("Unable to read ") +
                                                                GetParam().file + ": " + reason));
  }
};

TEST_P(AccountErrorTest, AFileThatMayNotBeReadIsAnError) {
  const ScopedTempDir folder;
  const std::string hidden = folder.Write("file", "");
  ASSERT_EQ(::chmod(hidden.c_str(), 0), 0);
  const std::string refusal = Testing::RunInNamespaces(CLONE_NEWNS, [&hidden] {
    ASSERT_EQ(::mount(hidden.c_str(), GetParam().file, nullptr, MS_BIND, nullptr), 0);
    if (::geteuid() != 0 || ::access(GetParam().file, R_OK) != 0) {
      ::_exit(0);
    }
    const Testing::PlainUser user;
    ExpectError("Permission denied");
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST_P(AccountErrorTest, TooManyOpenFilesAreAnError) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  const std::string refusal = Testing::RunInNamespaces(0, [] {
    const rlimit none = {0, 0};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    ExpectError("Too many open files");
  });
  EXPECT_EQ(refusal, "");
}

INSTANTIATE_TEST_SUITE_P(Questions, AccountErrorTest, ::testing::ValuesIn(kQuestions),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace Kestrel::Host
