// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/storage/MountTable.h"

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "plugins/host/frame/DeviceNumber.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

// Special bytes are written as a backslash and three octal digits.
std::string Unescape(std::string_view text) {
  const auto isOctal = [&](std::size_t index) { return text[index] >= '0' && text[index] <= '7'; };
  std::string plain;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool isEscape = text[index] == '\\' && index + 3 < text.size() && isOctal(index + 1) &&
                          isOctal(index + 2) && isOctal(index + 3);
    if (!isEscape) {
      plain += text[index];
      continue;
    }
    plain += static_cast<char>((text[index + 1] - '0') * 64 + (text[index + 2] - '0') * 8 +
                               (text[index + 3] - '0'));
    index += 3;
  }
  return plain;
}

// Removes and returns the first option, "name" or "name=value". Commas within double quotes are
// part of the value.
std::string_view TakeOption(std::string_view& options) {
  bool isQuoted = false;
  std::size_t end = 0;
  for (; end < options.size() && (isQuoted || options[end] != ','); ++end) {
    isQuoted = isQuoted != (options[end] == '"');
  }
  const std::string_view option = options.substr(0, end);
  options.remove_prefix(std::min(end + 1, options.size()));
  return option;
}

// Returns "ro" or "rw", then the other options of the mount and those of the file system. The mount
// is read-only if either list says so.
std::vector<std::string> MergeOptions(const std::string& ofMount, const std::string& ofFilesystem) {
  std::vector<std::string> merged = {"rw"};
  const auto append = [&merged](std::string_view options) {
    while (!options.empty()) {
      const std::string_view option = TakeOption(options);
      if (option == "ro") {
        merged[0] = "ro";
      } else if (option != "rw") {
        merged.emplace_back(option);
      }
    }
  };
  append(ofMount);
  if (ofFilesystem != ofMount) {
    append(ofFilesystem);
  }
  return merged;
}

// ID PARENT MAJOR:MINOR ROOT TARGET OPTIONS {TAG} "-" TYPE SOURCE OPTIONS
std::optional<Mount> ParseMount(std::string_view line) {
  const std::vector<std::string_view> columns = Split(line, ' ');
  const auto dash = std::find(columns.begin(), columns.end(), "-");
  if (dash - columns.begin() < 6 || columns.end() - dash < 4) {
    return std::nullopt;
  }
  const auto id = ParseNumber(columns[0]);
  const auto parentId = ParseNumber(columns[1]);
  const auto device = ParseDeviceNumber(columns[2]);
  if (!id || !parentId || !device) {
    return std::nullopt;
  }
  Mount mount;
  mount.id = *id;
  mount.parentId = *parentId;
  mount.device = *device;
  mount.root = Unescape(columns[3]);
  mount.target = Unescape(columns[4]);
  mount.type = Unescape(dash[1]);
  mount.source = dash[2].empty() ? "none" : Unescape(dash[2]);
  mount.options = MergeOptions(Unescape(columns[5]), Unescape(dash[3]));
  return mount;
}

// If the kernel itself mounted the root, the source is /dev/root, which does not exist. Replaces it
// by the path of the device, if `sysFolder` contains the device.
void NameRootDevice(const std::string& sysFolder, Mount& mount) {
  if (mount.source != "/dev/root") {
    return;
  }
  const auto folder = ReadLink(sysFolder + "/dev/block/" + FormatDeviceNumber(mount.device));
  if (folder) {
    std::string name = folder->substr(folder->rfind('/') + 1);
    std::replace(name.begin(), name.end(), '!', '/');
    mount.source = "/dev/" + name;
  }
}

// Finds the mounts that no path leads to. At each step of a path, a mount attached at that point
// replaces the current one. A mount on the root of another mount hides all of that mount.
class HiddenMounts {
 public:
  explicit HiddenMounts(std::vector<Mount>& mounts) : mounts_(mounts) {
    for (std::size_t index = 0; index < mounts_.size(); ++index) {
      byId_.emplace(mounts_[index].id, index);
      if (mounts_[index].parentId != mounts_[index].id) {
        attached_[mounts_[index].parentId].insert(mounts_[index].target);
      }
    }
  }

  void Mark() {
    covered_.assign(mounts_.size(), Answer::Unknown);
    for (std::size_t index = 0; index < mounts_.size(); ++index) {
      Mount& mount = mounts_[index];
      mount.isHidden = IsAttached(mount.id, mount.target) || IsCovered(index);
    }
  }

 private:
  enum class Answer { Unknown, No, Yes };

  bool IsAttached(long parentId, const std::string& target) const {
    const auto found = attached_.find(parentId);
    return found != attached_.end() && found->second.count(target) != 0;
  }

  // Returns whether a path to the target of this mount first enters another mount with the same
  // parent.
  bool IsPassedBy(const Mount& mount) const {
    const std::string& target = mount.target;
    for (std::size_t slash = target.rfind('/'); slash != std::string::npos && target.size() > 1;
         slash = target.rfind('/', slash - 1)) {
      if (IsAttached(mount.parentId, slash == 0 ? "/" : target.substr(0, slash))) {
        return true;
      }
      if (slash == 0) {
        break;
      }
    }
    return false;
  }

  // Returns whether IsPassedBy is true of this mount or of one of its ancestors. Walks up to the
  // first mount whose answer is known, then passes the answer down. The walk also ends at a parent
  // that is not listed, and at a cycle in a damaged file.
  bool IsCovered(std::size_t index) {
    std::vector<std::size_t> way;
    Answer answer = Answer::No;
    for (auto at = byId_.find(mounts_[index].id); at != byId_.end();
         at = byId_.find(mounts_[at->second].parentId)) {
      if (covered_[at->second] != Answer::Unknown) {
        answer = covered_[at->second];
        break;
      }
      covered_[at->second] = Answer::No;
      way.push_back(at->second);
    }
    for (auto step = way.rbegin(); step != way.rend(); ++step) {
      if (answer == Answer::No && IsPassedBy(mounts_[*step])) {
        answer = Answer::Yes;
      }
      covered_[*step] = answer;
    }
    return answer == Answer::Yes;
  }

  std::vector<Mount>& mounts_;
  std::vector<Answer> covered_;
  std::unordered_map<long, std::size_t> byId_;
  std::unordered_map<long, std::set<std::string>> attached_;
};

}  // namespace

bool Mount::HasOption(const std::string& option) const {
  return std::find(options.begin(), options.end(), option) != options.end();
}

std::vector<Mount> ReadMounts(const std::string& path, const std::string& sysFolder) {
  const std::optional<std::string> text = ReadFile(path);
  if (!text.has_value()) {
    throw KestrelException("Unable to read the mounts in " + path + ": " + std::strerror(errno));
  }
  std::vector<Mount> mounts;
  for (const std::string_view line : SplitLines(*text)) {
    if (std::optional<Mount> mount = ParseMount(line)) {
      mounts.push_back(std::move(*mount));
    }
  }
  for (Mount& mount : mounts) {
    NameRootDevice(sysFolder, mount);
  }
  HiddenMounts(mounts).Mark();
  return mounts;
}

}  // namespace Kestrel::Host
