// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The walk keeps a list of levels, one for each folder on the path from the top to the current
// folder. On entering a folder, it reads all of the folder's names, adds up its files and remembers
// its subfolders. It then enters these one after the other, and leaves the folder after the last
// one.

#include "plugins/host/storage/TreeUsage.h"

#include <dirent.h>
#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <deque>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/frame/LongPath.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

// How many folders, the innermost ones, remain open. The folders above them are closed, and opened
// again on the way back.
constexpr std::size_t kMaxOpenFolders = 32;
constexpr std::size_t kBufferSize = 1 << 16;
constexpr int kFolderFlags = O_DIRECTORY | O_NONBLOCK | O_NOCTTY;

// Identifies a file on this machine.
struct FileIdentity {
  dev_t device = 0;
  ino_t inode = 0;

  bool operator==(const FileIdentity& other) const {
    return inode == other.inode && device == other.device;
  }
};

struct HashIdentity {
  std::size_t operator()(const FileIdentity& identity) const {
    constexpr std::size_t kMultiplier = 0x9E3779B97F4A7C15;
    return (identity.inode ^ (identity.device << 32)) * kMultiplier;
  }
};

FileIdentity IdentityOf(const struct stat& status) { return {status.st_dev, status.st_ino}; }

SpaceUsage UsageOf(const struct stat& status) {
  constexpr long kBlockSize = 512;
  return {ClampedProduct(status.st_blocks, kBlockSize), status.st_size, 1};
}

struct Subfolder {
  std::string name;
  FileIdentity identity;
  SpaceUsage usage;
};

struct Level {
  std::optional<FileDescriptor> folder;  // none if it could not be opened or is temporarily closed
  FileIdentity identity;
  std::size_t parentPathSize = 0;
  std::vector<Subfolder> subfolders;  // those not yet entered
  TreeEntry entry;                    // without its path, which only the copy in the result has
  bool isReported = false;
};

[[noreturn]] void ThrowReadError(const std::string& path) {
  const int error = errno;
  throw KestrelException("Unable to read " + SanitizedText(path)->GetValue() + ": " +
                         std::strerror(error));
}

class TreeWalk {
 public:
  TreeWalk(const std::string& path, const TreeOptions& options)
      : options_(options), path_(path), buffer_(kBufferSize) {}

  TreeUsage Run() {
    EnterTop();
    while (!levels_.empty()) {
      std::vector<Subfolder>& subfolders = levels_.back().subfolders;
      if (subfolders.empty()) {
        Leave();
        continue;
      }
      const Subfolder next = std::move(subfolders.back());
      subfolders.pop_back();
      Enter(next);
    }
    return std::move(answer_);
  }

 private:
  void EnterTop() {
    FileDescriptor folder = OpenPath(path_, kFolderFlags);
    struct stat status = {};
    if (!folder.IsOpen() || ::fstat(folder.Get(), &status) != 0) {
      ThrowReadError(path_);
    }
    device_ = status.st_dev;
    met_.insert(IdentityOf(status));
    AddLevel(path_.size(), IdentityOf(status), UsageOf(status)).folder.emplace(std::move(folder));
    ReadNames();
  }

  void Enter(const Subfolder& subfolder) {
    Level& parent = levels_.back();
    FileDescriptor folder(::openat(parent.folder->Get(), subfolder.name.c_str(),
                                   kFolderFlags | O_NOFOLLOW | O_RDONLY | O_CLOEXEC));
    // ENOENT: it was removed. The other errors: something else has its name now.
    if (!folder.IsOpen() && (errno == ENOENT || errno == ENOTDIR || errno == ELOOP)) {
      return;
    }
    const int error = errno;
    const std::size_t parentPathSize = path_.size();
    AppendToPath(subfolder.name);
    AddLevel(parentPathSize, subfolder.identity, subfolder.usage);
    if (!folder.IsOpen()) {
      ReportUnread(error);
      return;
    }
    levels_.back().folder.emplace(std::move(folder));
    CloseDistantFolder();
    ReadNames();
  }

  Level& AddLevel(std::size_t parentPathSize, FileIdentity identity, const SpaceUsage& usage) {
    Level& level = levels_.emplace_back();
    level.identity = identity;
    level.parentPathSize = parentPathSize;
    level.entry.isFolder = true;
    level.entry.usage = usage;
    return level;
  }

  void AppendToPath(std::string_view name) {
    if (path_.empty() || path_.back() != '/') {
      path_ += '/';
    }
    path_ += name;
  }

  void CloseDistantFolder() {
    if (levels_.size() > kMaxOpenFolders) {
      levels_[levels_.size() - 1 - kMaxOpenFolders].folder.reset();
    }
  }

  void ReadNames() {
    const int folder = levels_.back().folder->Get();
    for (;;) {
      const ssize_t size = ::getdents64(folder, buffer_.data(), buffer_.size());
      if (size <= 0) {
        // ENOENT: the folder was removed.
        if (size < 0 && errno != ENOENT) {
          ReportUnread(errno);
        }
        return;
      }
      for (ssize_t at = 0; at < size;) {
        const auto* const name = reinterpret_cast<const dirent64*>(buffer_.data() + at);
        at += name->d_reclen;
        AddName(folder, name->d_name);
      }
    }
  }

  void AddName(int folder, const char* name) {
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) {
      return;
    }
    struct stat status = {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT) != 0) {
      if (errno != ENOENT) {
        ReportUnread(errno);
      }
      return;
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    if (!options_.crossesFilesystems && status.st_dev != device_) {
      return;
    }
    // A file with several names is counted once, and so is a folder that a bind mount shows again.
    if ((isFolder || status.st_nlink > 1) && !met_.insert(IdentityOf(status)).second) {
      return;
    }
    if (isFolder) {
      levels_.back().subfolders.push_back({name, IdentityOf(status), UsageOf(status)});
    } else {
      AddFile(name, UsageOf(status));
    }
  }

  void AddFile(const char* name, const SpaceUsage& usage) {
    levels_.back().entry.usage.Add(usage);
    if (options_.listsFiles && static_cast<long>(levels_.size()) <= options_.depth) {
      const std::size_t size = path_.size();
      AppendToPath(name);
      answer_.entries.push_back({path_, false, true, usage});
      path_.resize(size);
    }
  }

  // Reports the current folder, once.
  void ReportUnread(int error) {
    Level& level = levels_.back();
    level.entry.isComplete = false;
    if (!level.isReported) {
      level.isReported = true;
      answer_.unread.push_back({path_, error});
    }
  }

  void Leave() {
    const Level level = std::move(levels_.back());
    levels_.pop_back();
    if (static_cast<long>(levels_.size()) <= options_.depth) {
      answer_.entries.push_back(level.entry);
      answer_.entries.back().path = path_;
    }
    path_.resize(level.parentPathSize);
    if (levels_.empty()) {
      return;
    }
    TreeEntry& parent = levels_.back().entry;
    parent.usage.Add(level.entry.usage);
    parent.isComplete = parent.isComplete && level.entry.isComplete;
    if (!levels_.back().folder) {
      Reopen(*level.folder);
    }
  }

  // Opens the current folder again, starting from a folder in it.
  void Reopen(const FileDescriptor& child) {
    Level& level = levels_.back();
    FileDescriptor folder(::openat(child.Get(), "..", kFolderFlags | O_RDONLY | O_CLOEXEC));
    struct stat status = {};
    int error = 0;
    if (!folder.IsOpen() || ::fstat(folder.Get(), &status) != 0) {
      error = errno;
    } else if (!(IdentityOf(status) == level.identity)) {
      error = ESTALE;  // the child was moved to another folder
    }
    if (error == 0) {
      level.folder.emplace(std::move(folder));
      return;
    }
    ThrowMoved(error);
  }

  // Throws because the walk cannot return to the current folder from a folder in it.
  [[noreturn]] void ThrowMoved(int error) const {
    errno = error;
    ThrowReadError(path_);
  }

  const TreeOptions options_;
  std::string path_;  // of the current folder
  std::vector<char> buffer_;
  dev_t device_ = 0;
  std::deque<Level> levels_;
  std::unordered_set<FileIdentity, HashIdentity> met_;
  TreeUsage answer_;
};

}  // namespace

void SpaceUsage::Add(const SpaceUsage& other) {
  diskSize = ClampedSum(diskSize, other.diskSize);
  apparentSize = ClampedSum(apparentSize, other.apparentSize);
  files += other.files;
}

TreeUsage MeasureTree(const std::string& path, const TreeOptions& options) {
  return TreeWalk(path, options).Run();
}

}  // namespace Kestrel::Host
