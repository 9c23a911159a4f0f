#include "plugins/host/MountTable.h"

#include <libmount/libmount.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <unordered_map>

#include "kestrel/KestrelException.h"

namespace Kestrel::Host {
namespace {

struct Unreference {
  void operator()(libmnt_table* table) const { mnt_unref_table(table); }
  void operator()(libmnt_iter* iterator) const { mnt_free_iter(iterator); }
};

std::string Text(const char* text) { return text == nullptr ? std::string() : text; }

// An option is "name" or "name=value"; commas within double quotes belong to the value.
std::vector<std::string> SplitOptions(const char* options) {
  std::vector<std::string> split;
  std::string rest = Text(options);
  char* next = rest.data();
  char* name = nullptr;
  std::size_t nameSize = 0;
  char* value = nullptr;
  std::size_t valueSize = 0;
  while (mnt_optstr_next_option(&next, &name, &nameSize, &value, &valueSize) == 0) {
    const char* const end = value == nullptr ? name + nameSize : value + valueSize;
    split.emplace_back(name, static_cast<std::size_t>(end - name));
  }
  return split;
}

Mount ToMount(libmnt_fs* entry) {
  Mount mount;
  mount.id = mnt_fs_get_id(entry);
  mount.parentId = mnt_fs_get_parent_id(entry);
  mount.device = mnt_fs_get_devno(entry);
  mount.source = Text(mnt_fs_get_source(entry));
  mount.target = Text(mnt_fs_get_target(entry));
  mount.type = Text(mnt_fs_get_fstype(entry));
  mount.root = Text(mnt_fs_get_root(entry));
  mount.options = SplitOptions(mnt_fs_get_options(entry));
  mount.isPseudo = mnt_fs_is_pseudofs(entry) != 0;
  mount.isNetwork = mnt_fs_is_netfs(entry) != 0;
  return mount;
}

// Finds the mounts that no path leads to any more. A path steps from a mount to another one at the
// first place on its way where one is attached, and at the root of a mount that is covered whole it
// steps on at once.
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

  // Whether another mount with the same parent lies on the way to this one's target.
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

  // Walks up to the first mount with a known answer, and hands the answer down the same way. A
  // parent that is not listed ends the walk, and so does a circle in a damaged file.
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

std::vector<Mount> ReadMounts(const std::string& path) {
  const std::unique_ptr<libmnt_table, Unreference> table(mnt_new_table());
  const std::unique_ptr<libmnt_iter, Unreference> iterator(mnt_new_iter(MNT_ITER_FORWARD));
  if (table == nullptr || iterator == nullptr) {
    throw std::bad_alloc();
  }
  const int status = mnt_table_parse_file(table.get(), path.c_str());
  if (status != 0) {
    throw KestrelException("Unable to read the mounts in " + path + ": " +
                           std::strerror(status < 0 ? -status : EINVAL));
  }
  std::vector<Mount> mounts;
  libmnt_fs* entry = nullptr;
  while (mnt_table_next_fs(table.get(), iterator.get(), &entry) == 0) {
    mounts.push_back(ToMount(entry));
  }
  HiddenMounts(mounts).Mark();
  return mounts;
}

}  // namespace Kestrel::Host
