// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

extern const char* const kGroupFile;
/// The file that says where the system looks for accounts and groups.
extern const char* const kSourcesFile;

/// A user account from the machine's own files or from a directory service.
struct Account {
  std::string name;
  uid_t id = 0;
  gid_t groupId = 0;
  std::string fullName;
  std::string home;
  std::string shell;
};

/// An account in a list. Its strings are valid until the next account is read.
struct AccountEntry {
  std::string_view name;
  uid_t id;
  gid_t groupId;
  std::string_view fullName;
  std::string_view home;
  std::string_view shell;
};

// A system that cannot read its files does not say so, but answers that the account or group does
// not exist. The functions below that query the system detect this, and throw KestrelException with
// the name of the file.

/// Calls `use` for each account, in the order in which the system lists them. Some directory
/// services do not list their accounts. `use` must not list accounts itself.
void ForEachAccount(const std::function<void(const AccountEntry& account)>& use);

/// Calls `use` for each group, in the order in which the system lists them. Some directory services
/// do not list their groups. `use` must not list groups itself.
void ForEachGroup(const std::function<void(gid_t id, std::string_view name)>& use);

/// Returns the account of that name, if there is one.
std::optional<Account> FindAccount(const std::string& name);

/// Returns the names of the groups that the account belongs to, its primary group first.
std::vector<std::string> ReadGroups(const Account& account);

/// Returns whether the shell starts a session, unlike nologin or false.
bool IsLoginShell(std::string_view shell);

/// Looks up names of users, each only once.
class UserNames {
 public:
  /// Returns the name of the account, or the number in digits if there is no account.
  const std::string& Get(uid_t id);

 private:
  std::map<uid_t, std::string> names_;
};

/// Returns the name of a group, or the number in digits if the group has no name. For many groups,
/// GroupNames is faster.
std::string GroupName(gid_t id);

}  // namespace Kestrel::Host
