// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Kestrel::Host {

/// One account that the machine knows, be it from its own files or from a directory service.
struct Account {
  std::string name;
  uid_t id = 0;
  gid_t groupId = 0;
  std::string fullName;
  std::string home;
  std::string shell;
};

/// All accounts in the order of the machine's own list. A directory service may keep its accounts
/// to itself; those are left out.
std::vector<Account> ReadAccounts();

/// The account of that name; nothing when there is none.
std::optional<Account> FindAccount(const std::string& name);

/// The names of the groups that the account belongs to, its own group first.
std::vector<std::string> ReadGroups(const Account& account);

/// The shells that a person may log in with; those that let nobody in are not among them.
bool IsLoginShell(const std::string& shell);

/// Names of users, asked once for each number.
class UserNames {
 public:
  /// The name of the account with that number, or the number as a text when it has none.
  const std::string& Get(uid_t id);

 private:
  std::map<uid_t, std::string> names_;
};

/// The name of a group, or the number as a text when it has none.
std::string GroupName(gid_t id);

}  // namespace Kestrel::Host
