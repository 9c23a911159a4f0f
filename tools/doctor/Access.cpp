// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/doctor/Access.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include "autocli/plugins/TrustPolicy.h"

namespace Kestrel::Doctor {

namespace {

std::string NameOf(uid_t user) {
  constexpr std::size_t kMaxEntry = std::size_t{16} << 10U;
  std::vector<char> strings(kMaxEntry);
  passwd entry = {};
  passwd* found = nullptr;
  const int error = getpwuid_r(user, &entry, strings.data(), strings.size(), &found);
  return error != 0 || found == nullptr ? std::to_string(user) : entry.pw_name;
}

std::string OctalOf(mode_t mode) {
  char text[8];
  std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(mode & 07777));
  return text;
}

// Returns why a user other than root and the current one can change a file or folder, as the end of
// a sentence that begins with its path; nothing if no such user can. For the folder that contains a
// plug-in, this check is stricter than that of the loader: if the folder is sticky, other users can
// still add plug-ins to it.
std::optional<std::string> FindFault(const struct stat& status, bool mayBeSticky) {
  if (status.st_uid != 0 && status.st_uid != geteuid()) {
    return "belongs to the user " + NameOf(status.st_uid);
  }
  if (mayBeSticky && AutoCli::IsStickyFolder(status.st_mode)) {
    return std::nullopt;
  }
  return AutoCli::FindOtherWriters(status.st_mode);
}

Access ReadOne(const std::string& path, bool mayBeSticky, std::vector<std::string>& faults) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) {
    return {path, "", ""};
  }
  if (const std::optional<std::string> fault = FindFault(status, mayBeSticky)) {
    faults.push_back(path + " " + *fault);
  }
  return {path, NameOf(status.st_uid), OctalOf(status.st_mode)};
}

// Adds the folders above `path`, from the root folder on, unless they have been added before.
void AddFolders(const std::filesystem::path& path, FileAccess& access) {
  std::filesystem::path folder;
  for (const auto& name : path.parent_path()) {
    folder /= name;
    const std::string text = folder.string();
    const auto isSame = [&](const Access& other) { return other.path == text; };
    if (std::none_of(access.folders.begin(), access.folders.end(), isSame)) {
      access.folders.push_back(ReadOne(text, folder != path.parent_path(), access.faults));
    }
  }
}

}  // namespace

FileAccess ReadAccess(const std::string& file) {
  FileAccess access;
  std::error_code error;
  const std::filesystem::path real = std::filesystem::canonical(file, error);
  if (error) {
    return access;
  }
  AddFolders(real, access);
  // Anyone who can write to a folder of the path as given can replace a link in that folder.
  AddFolders(std::filesystem::absolute(file, error).lexically_normal(), access);
  access.file = ReadOne(real.string(), false, access.faults);
  return access;
}

}  // namespace Kestrel::Doctor
