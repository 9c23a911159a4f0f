// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/GroupNames.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "plugins/host/frame/HostFile.h"
#include "plugins/host/system/Accounts.h"
#include "plugins/host/system/GroupFile.h"

namespace Kestrel::Host {
namespace {

// The groups of `root` and `nobody`, which systemd knows but does not list.
constexpr gid_t kNeverListed[] = {0, 65534};

bool IsNeverListed(gid_t id) {
  return std::find(std::begin(kNeverListed), std::end(kNeverListed), id) != std::end(kNeverListed);
}

}  // namespace

std::string_view GroupNames::Get(gid_t id) {
  if (!isRead_) {
    Read();
    isRead_ = true;
  }
  std::optional<std::string_view> name = Find(id);
  if (!name && !hasAll_) {
    ReadAll();
    name = Find(id);
  }
  return name ? *name : GetUnlisted(id);
}

void GroupNames::Read() {
  text_ = ReadRequiredFile(kGroupFile);
  const GroupSources sources = ParseGroupSources(ReadExistingFile(kSourcesFile).value_or(""));
  isListComplete_ = sources.isListComplete;
  auto groups = sources.isFileFirst ? ParseGroupFile(text_) : std::nullopt;
  if (!groups) {
    return ReadAll();
  }
  Use(std::move(*groups));
}

void GroupNames::ReadAll() {
  std::vector<std::pair<gid_t, std::size_t>> sizes;
  text_.clear();
  ForEachGroup([&](gid_t id, std::string_view name) {
    // Listing all groups also returns the lines of /etc/group that begin with "+" or "-". Looking
    // up their numbers finds nothing.
    const bool isSpecial = !name.empty() && (name[0] == '+' || name[0] == '-');
    if (!isSpecial) {
      sizes.emplace_back(id, name.size());
      text_ += name;
    }
  });
  std::vector<GroupLine> groups;
  groups.reserve(sizes.size());
  std::string_view rest = text_;
  for (const auto& [id, size] : sizes) {
    groups.push_back({id, rest.substr(0, size)});
    rest.remove_prefix(size);
  }
  Use(std::move(groups));
  hasAll_ = true;
}

void GroupNames::Use(std::vector<GroupLine>&& groups) {
  const auto isBefore = [](const GroupLine& left, const GroupLine& right) {
    return left.id < right.id;
  };
  groups_ = std::move(groups);
  if (!std::is_sorted(groups_.begin(), groups_.end(), isBefore)) {
    std::stable_sort(groups_.begin(), groups_.end(), isBefore);
  }
  next_ = 0;
}

std::optional<std::string_view> GroupNames::Find(gid_t id) {
  // Fast path: accounts are often in the order of their groups.
  const bool isNext = next_ < groups_.size() && groups_[next_].id == id &&
                      (next_ == 0 || groups_[next_ - 1].id != id);
  const auto found =
      isNext
          ? groups_.begin() + static_cast<std::ptrdiff_t>(next_)
          : std::lower_bound(groups_.begin(), groups_.end(), id,
                             [](const GroupLine& each, gid_t wanted) { return each.id < wanted; });
  if (found == groups_.end() || found->id != id) {
    return std::nullopt;
  }
  next_ = static_cast<std::size_t>(found - groups_.begin()) + 1;
  return found->name;
}

std::string_view GroupNames::GetUnlisted(gid_t id) {
  if (isListComplete_ && !IsNeverListed(id)) {
    digits_ = std::to_string(id);
    return digits_;
  }
  const auto [name, isNew] = unlisted_.try_emplace(id);
  if (isNew) {
    name->second = GroupName(id);
  }
  return name->second;
}

}  // namespace Kestrel::Host
