// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <optional>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

/// A group, as in a line of /etc/group.
struct GroupLine {
  gid_t id;
  std::string_view name;
};

/// Parses the content of /etc/group; the names point into it. Skips empty lines and comments.
/// Returns nothing if any other line is not a plain group, because the C library has rules of its
/// own for damaged lines and for those that begin with + or -.
std::optional<std::vector<GroupLine>> ParseGroupFile(std::string_view text);

/// What /etc/nsswitch.conf says about groups.
struct GroupSources {
  /// Whether a number that occurs in /etc/group always means the first group there that has it.
  bool isFileFirst = false;
  /// Whether the system lists all groups. Directory services may not list theirs.
  bool isListComplete = false;
};

/// Parses the content of /etc/nsswitch.conf. Both members are false if there is not exactly one
/// line about groups, if /etc/group is not the first source in that line, or if the line contains
/// an action that could change the answer.
GroupSources ParseGroupSources(std::string_view text);

}  // namespace Kestrel::Host
