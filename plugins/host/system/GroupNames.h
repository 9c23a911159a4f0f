// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plugins/host/system/GroupFile.h"

namespace Kestrel::Host {

/// Looks up names of groups. Reads the whole file /etc/group at the first use, so it is meant for
/// many look-ups.
///
/// Usually /etc/group alone has the answers. The name service is asked for all groups if a number
/// is missing there or the file alone cannot be relied on, and for single groups if the service may
/// know more groups than it lists.
class GroupNames {
 public:
  /// Returns the name of the group, or the number in digits if the group has no name. The view is
  /// valid until the next call. Throws KestrelException as the functions of Accounts.h do.
  std::string_view Get(gid_t id);

 private:
  void Read();
  void ReadAll();
  void Use(std::vector<GroupLine>&& groups);
  std::optional<std::string_view> Find(gid_t id);
  std::string_view GetUnlisted(gid_t id);

  bool isRead_ = false;
  bool hasAll_ = false;          // not only those in /etc/group
  bool isListComplete_ = false;  // whether a group that is not listed does not exist
  std::string text_;  // with all names: a string for each would take several times the memory
  std::vector<GroupLine> groups_;  // by number; the first of each number is used
  std::size_t next_ = 0;           // the group after the one found last
  std::map<gid_t, std::string> unlisted_;
  std::string digits_;
};

}  // namespace Kestrel::Host
