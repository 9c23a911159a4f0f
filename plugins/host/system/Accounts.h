// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// A user account from the machine's own files or from a directory service.
struct Account {
  std::string name;
  uid_t id = 0;
  gid_t groupId = 0;
  std::string fullName;
  std::string home;
  std::string shell;
};

// If the system cannot read its files, it answers as if an account or a group did not exist. In
// that case, each of the following functions throws KestrelException with the name of the file.

/// Calls `use` for each account, in the order in which the system lists them. Some directory
/// services do not list their accounts. `use` must not list accounts itself.
void ForEachAccount(const std::function<void(const Account& account)>& use);

/// Returns the account of that name, if there is one.
std::optional<Account> FindAccount(const std::string& name);

/// Returns the names of the groups that the account belongs to, its primary group first.
std::vector<std::string> ReadGroups(const Account& account);

/// Returns whether the shell starts a session, unlike nologin or false.
bool IsLoginShell(const std::string& shell);

/// Looks up names of users, each only once.
class UserNames {
 public:
  /// Returns the name of the account, or the number in digits if there is no account.
  const std::string& Get(uid_t id);

 private:
  std::map<uid_t, std::string> names_;
};

/// Returns the name of a group, or the number in digits if the group has no name.
std::string GroupName(gid_t id);

/// Looks up names of groups. Reads all groups at the first use, so it is for many names.
class GroupNames {
 public:
  /// Returns the name of the group, or the number in digits if the group has no name. It is valid
  /// until the next call.
  std::string_view Get(gid_t id);

 private:
  // Where the name of a group is in `text_`: a string for each would take several times the memory.
  struct Place {
    gid_t id;
    std::uint32_t start;
    std::uint32_t size;
  };

  void ReadAll();

  bool isRead_ = false;
  std::string text_;
  std::vector<Place> places_;  // by number; of those of one number the first counts
  std::map<gid_t, std::string> unlisted_;
};

}  // namespace Kestrel::Host
