// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/Accounts.h"

#include <grp.h>
#include <kestrel/KestrelException.h>
#include <pwd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "plugins/host/frame/HostFile.h"

namespace Kestrel::Host {
namespace {

constexpr char kAccountFile[] = "/etc/passwd";

// The program that a login starts if the account names none.
constexpr char kDefaultShell[] = "/bin/sh";

// Programs, in any folder, that end immediately instead of starting a session.
constexpr std::string_view kRefusingShells[] = {"nologin", "false", "true",
                                                "sync",    "halt",  "shutdown"};

// The full name is the part of the description before the first comma.
std::string_view FullName(const char* description) {
  const std::string_view text = description == nullptr ? "" : description;
  return text.substr(0, text.find(','));
}

AccountEntry ToEntry(const passwd& entry) {
  return {entry.pw_name, entry.pw_uid,
          entry.pw_gid,  FullName(entry.pw_gecos),
          entry.pw_dir,  *entry.pw_shell == '\0' ? kDefaultShell : entry.pw_shell};
}

// Throws if the last call to the name service failed. Only the error numbers below are failures:
// the service also sets others when there is no such name, or after the last entry.
void RequireSuccess(const std::string& file) {
  const int error = errno;
  if (error == ENOMEM || error == EMFILE || error == ENFILE || error == EIO) {
    throw KestrelException("Unable to read " + file + ": " + std::strerror(error));
  }
}

// Throws if the name service could not read its files. Must be called when it does not find a name,
// or lists no names at all.
void RequireAnswer(const std::string& file) {
  RequireSuccess(file);
  RequireReadable(file);
  ReadExistingFile(kSourcesFile);  // throws if it is unreadable; the service then reports no error
}

// Calls a function of the name service. Sets `errno` to 0 first, because the function leaves it
// unchanged when it succeeds.
template <typename Function, typename... Arguments>
auto* Ask(Function function, Arguments... arguments) {
  errno = 0;
  return function(arguments...);
}

// Looks up an account or a group. The service may try a second source after the first one failed
// and report that the second one does not have it, so a lookup without a result is repeated.
template <typename Function, typename Key>
auto* Find(Function function, Key key) {
  auto* const entry = Ask(function, key);
  return entry == nullptr ? Ask(function, key) : entry;
}

/// Opens the system's list of accounts, to be read from its start. The destructor closes it.
class AccountListing {
 public:
  AccountListing() { ::setpwent(); }
  AccountListing(const AccountListing&) = delete;
  AccountListing& operator=(const AccountListing&) = delete;
  ~AccountListing() { ::endpwent(); }
};

/// Opens the system's list of groups, to be read from its start. The destructor closes it.
class GroupListing {
 public:
  GroupListing() { ::setgrent(); }
  GroupListing(const GroupListing&) = delete;
  GroupListing& operator=(const GroupListing&) = delete;
  ~GroupListing() { ::endgrent(); }
};

// Calls `use` for each account, and returns their number.
std::size_t ListAccounts(const std::function<void(const AccountEntry& account)>& use) {
  const AccountListing listing;
  std::size_t count = 0;
  while (const passwd* const entry = Ask(::getpwent)) {
    use(ToEntry(*entry));
    ++count;
  }
  RequireSuccess(kAccountFile);
  return count;
}

std::string NameOfUser(uid_t id) {
  const passwd* const entry = Find(::getpwuid, id);
  if (entry == nullptr) {
    RequireAnswer(kAccountFile);
    return std::to_string(id);
  }
  return entry->pw_name;
}

void RequireNoAccounts() {
  if (!ReadRequiredFile(kAccountFile).empty()) {
    throw KestrelException(std::string("Unable to read ") + kAccountFile +
                           ": the name service returned no account");
  }
}

}  // namespace

const char* const kGroupFile = "/etc/group";
const char* const kSourcesFile = "/etc/nsswitch.conf";

void ForEachAccount(const std::function<void(const AccountEntry& account)>& use) {
  RequireReadable(kAccountFile);
  // A list without entries may be the result of a failure, so it is requested again.
  if (ListAccounts(use) == 0 && ListAccounts(use) == 0) {
    RequireAnswer(kAccountFile);
    RequireNoAccounts();
  }
}

void ForEachGroup(const std::function<void(gid_t id, std::string_view name)>& use) {
  RequireReadable(kGroupFile);
  const GroupListing listing;
  while (const group* const entry = Ask(::getgrent)) {
    use(entry->gr_gid, entry->gr_name);
  }
  RequireSuccess(kGroupFile);
}

std::optional<Account> FindAccount(const std::string& name) {
  const passwd* const entry = Find(::getpwnam, name.c_str());
  if (entry == nullptr) {
    RequireAnswer(kAccountFile);
    return std::nullopt;
  }
  const AccountEntry found = ToEntry(*entry);
  Account account;
  account.name = found.name;
  account.id = found.id;
  account.groupId = found.groupId;
  account.fullName = found.fullName;
  account.home = found.home;
  account.shell = found.shell;
  return account;
}

std::vector<std::string> ReadGroups(const Account& account) {
  RequireReadable(kGroupFile);
  std::vector<gid_t> ids(64);
  int count = static_cast<int>(ids.size());
  errno = 0;
  while (::getgrouplist(account.name.c_str(), account.groupId, ids.data(), &count) < 0) {
    // `count` is now the size needed, unless the name service does not report it.
    count = std::max(count, 2 * static_cast<int>(ids.size()));
    ids.resize(static_cast<std::size_t>(count));
    errno = 0;
  }
  RequireSuccess(kGroupFile);
  ids.resize(static_cast<std::size_t>(count));
  std::vector<std::string> names;
  names.reserve(ids.size());
  for (const gid_t id : ids) {
    names.push_back(GroupName(id));
  }
  return names;
}

bool IsLoginShell(std::string_view shell) {
  const std::string_view program = shell.substr(shell.rfind('/') + 1);
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
  const group* const entry = Find(::getgrgid, id);
  if (entry == nullptr) {
    RequireAnswer(kGroupFile);
    return std::to_string(id);
  }
  return entry->gr_name;
}

}  // namespace Kestrel::Host
