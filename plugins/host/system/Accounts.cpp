// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Accounts.h"

#include <grp.h>
#include <pwd.h>

#include <algorithm>
#include <string_view>

#include "plugins/host/frame/HostFile.h"

namespace Kestrel::Host {
namespace {

constexpr char kAccountFile[] = "/etc/passwd";
constexpr char kGroupFile[] = "/etc/group";

// The program that a login starts if the account names none.
constexpr char kDefaultShell[] = "/bin/sh";

// Programs that end at once instead of starting a session, in any folder.
constexpr std::string_view kRefusingShells[] = {"nologin", "false", "true",
                                                "sync",    "halt",  "shutdown"};

// The full name is the part of the description before the first comma.
std::string FullName(const char* description) {
  const std::string_view text = description == nullptr ? "" : description;
  return std::string(text.substr(0, text.find(',')));
}

Account MakeAccount(const passwd& entry) {
  Account account;
  account.name = entry.pw_name;
  account.id = entry.pw_uid;
  account.groupId = entry.pw_gid;
  account.fullName = FullName(entry.pw_gecos);
  account.home = entry.pw_dir;
  account.shell = *entry.pw_shell == '\0' ? kDefaultShell : entry.pw_shell;
  return account;
}

std::string NameOfUser(uid_t id) {
  const passwd* const entry = ::getpwuid(id);
  if (entry == nullptr) {
    RequireReadable(kAccountFile);
    return std::to_string(id);
  }
  return entry->pw_name;
}

}  // namespace

std::vector<Account> ReadAccounts() {
  RequireReadable(kAccountFile);
  std::vector<Account> accounts;
  ::setpwent();
  while (const passwd* const entry = ::getpwent()) {
    accounts.push_back(MakeAccount(*entry));
  }
  ::endpwent();
  return accounts;
}

std::optional<Account> FindAccount(const std::string& name) {
  const passwd* const entry = ::getpwnam(name.c_str());
  if (entry == nullptr) {
    RequireReadable(kAccountFile);
    return std::nullopt;
  }
  return MakeAccount(*entry);
}

std::vector<std::string> ReadGroups(const Account& account) {
  RequireReadable(kGroupFile);
  std::vector<gid_t> ids(64);
  int count = static_cast<int>(ids.size());
  while (::getgrouplist(account.name.c_str(), account.groupId, ids.data(), &count) < 0) {
    // `count` is now the size needed, unless the name service does not report it.
    count = std::max(count, 2 * static_cast<int>(ids.size()));
    ids.resize(static_cast<std::size_t>(count));
  }
  ids.resize(static_cast<std::size_t>(count));
  std::vector<std::string> names;
  names.reserve(ids.size());
  for (const gid_t id : ids) {
    names.push_back(GroupName(id));
  }
  return names;
}

bool IsLoginShell(const std::string& shell) {
  const std::string_view program = std::string_view(shell).substr(shell.rfind('/') + 1);
  return std::find(std::begin(kRefusingShells), std::end(kRefusingShells), program) ==
         std::end(kRefusingShells);
}

const std::string& UserNames::Get(uid_t id) {
  const auto [place, isNew] = names_.try_emplace(id);
  if (isNew) {
    place->second = NameOfUser(id);
  }
  return place->second;
}

std::string GroupName(gid_t id) {
  const group* const entry = ::getgrgid(id);
  if (entry == nullptr) {
    RequireReadable(kGroupFile);
    return std::to_string(id);
  }
  return entry->gr_name;
}

const std::string& GroupNames::Get(gid_t id) {
  if (!isRead_) {
    ReadAll();
    isRead_ = true;
  }
  const auto [place, isNew] = names_.try_emplace(id);
  if (isNew) {
    place->second = GroupName(id);
  }
  return place->second;
}

void GroupNames::ReadAll() {
  RequireReadable(kGroupFile);
  ::setgrent();
  while (const group* const entry = ::getgrent()) {
    names_.emplace(entry->gr_gid, entry->gr_name);
  }
  ::endgrent();
}

}  // namespace Kestrel::Host
