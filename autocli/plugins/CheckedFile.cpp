// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "autocli/plugins/CheckedFile.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "autocli/plugins/TrustPolicy.h"
#include "autocli/text/SystemError.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

namespace {

constexpr int kMaxLinks = 40;  // the kernel's limit

// Opening a file with these flags needs no permission to read it, and has no effect on a device.
constexpr int kFlags = O_PATH | O_NOFOLLOW | O_CLOEXEC;

/// Returns the owner of the running program; root when there is no /proc.
uid_t FindOwnerOfProgram() {
  struct stat status = {};
  return stat("/proc/self/exe", &status) == 0 ? status.st_uid : 0;
}

// Returns "/" for a relative path if the working folder has been deleted.
std::string MakeAbsolute(const std::string& path) {
  if (!path.empty() && path[0] == '/') {
    return path;
  }
  std::error_code error;
  const std::string folder = std::filesystem::current_path(error).string();
  return error ? "/" : folder + "/" + path;
}

/// Follows a path from the root folder, one name after the other, and checks all that it opens.
class PathWalk {
 public:
  explicit PathWalk(const std::string& path) : left_(MakeAbsolute(path)) {}

  CheckedFile Open() {
    bool isOpen = Restart();
    while (isOpen && !left_.empty()) {
      isOpen = Enter(TakeName());
    }
    return isOpen ? CheckedFile{std::move(at_), 0} : CheckedFile{FileDescriptor(), errno};
  }

 private:
  /// Removes the next name from the path and returns it. The name is empty between two slashes.
  std::string TakeName() {
    const std::size_t end = std::min(left_.find('/'), left_.size());
    std::string name = left_.substr(0, end);
    left_.erase(0, end + 1);
    return name;
  }

  bool Restart() {
    shown_.clear();
    at_ = FileDescriptor(open("/", kFlags));
    return at_.IsOpen() && (Check(at_, "/"), true);
  }

  bool Enter(const std::string& name) {
    if (name.empty() || name == ".") {
      return true;
    }
    FileDescriptor entered(openat(at_.Get(), name.c_str(), kFlags));
    if (!entered.IsOpen()) {
      return false;
    }
    const std::string path =
        name == ".." ? shown_.substr(0, shown_.rfind('/')) : shown_ + "/" + name;
    if (S_ISLNK(Check(entered, path.empty() ? "/" : path))) {
      return Follow(entered);
    }
    at_ = std::move(entered);
    shown_ = path;
    return true;
  }

  bool Follow(const FileDescriptor& link) {
    std::array<char, PATH_MAX> target;
    const ssize_t size = readlinkat(link.Get(), "", target.data(), target.size());
    if (++links_ > kMaxLinks) {
      errno = ELOOP;
    }
    if (size <= 0 || links_ > kMaxLinks) {
      return false;
    }
    left_ = std::string(target.data(), static_cast<std::size_t>(size)) + "/" + left_;
    return target[0] != '/' || Restart();
  }

  /// Returns the mode of what `descriptor` refers to. Throws KestrelException when it is not
  /// trusted, or when that cannot be determined.
  mode_t Check(const FileDescriptor& descriptor, const std::string& path) const {
    struct stat status = {};
    if (fstat(descriptor.Get(), &status) != 0) {
      throw KestrelException(path + ": " + SystemErrorText(errno));
    }
    if (const std::optional<std::string> reason = FindDistrust(status, owner_)) {
      throw KestrelException(path + " " + *reason);
    }
    return status.st_mode;
  }

  const uid_t owner_ = FindOwnerOfProgram();
  std::string left_;   // the names that follow
  FileDescriptor at_;  // the folder that the walk has reached, in the end the file
  std::string shown_;  // its path without links; empty for the root folder
  int links_ = 0;
};

}  // namespace

bool IsTrustRequired(bool isInDefaultFolder) {
  return IsTrustRequired(GetProcessRights(), isInDefaultFolder);
}

CheckedFile OpenCheckedFile(const std::string& path) {
  CheckedFile file = PathWalk(path).Open();
  struct stat status = {};
  if (file.descriptor.IsOpen() &&
      stat(PathOfDescriptor(file.descriptor.Get()).c_str(), &status) != 0) {
    throw KestrelException("it can be loaded safely only where /proc is mounted");
  }
  return file;
}

std::string PathOfDescriptor(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

}  // namespace Kestrel::AutoCli
