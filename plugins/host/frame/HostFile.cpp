// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>

#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

// Large enough for most of the kernel's files.
constexpr std::size_t kFirstReadSize = 1 << 12;

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

[[noreturn]] void ThrowUnreadable(const std::string& path, int error) {
  throw KestrelException("Unable to read " + path + ": " + std::strerror(error));
}

}  // namespace

const char* const kProc = "/proc";
const char* const kSys = "/sys";

std::optional<std::string> ReadFile(const std::string& path) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (!file.IsOpen()) {
    return std::nullopt;
  }
  std::string text(kFirstReadSize, '\0');
  std::size_t size = 0;
  for (;;) {
    const ssize_t count = file.Read(&text[size], text.size() - size);
    if (count < 0) {
      return std::nullopt;
    }
    if (count == 0) {
      text.resize(size);
      return text;
    }
    size += static_cast<std::size_t>(count);
    if (size == text.size()) {
      text.resize(2 * size);
    }
  }
}

std::optional<std::string> ReadExistingFile(const std::string& path) {
  auto text = ReadFile(path);
  if (!text && errno != ENOENT && errno != ENOTDIR) {
    throw KestrelException("Unable to read " + path + ": " + std::strerror(errno));
  }
  return text;
}

std::string ReadRequiredFile(const std::string& path) {
  auto text = ReadFile(path);
  if (!text) {
    ThrowUnreadable(path, errno);
  }
  return std::move(*text);
}

std::optional<std::string> ReadOptionalFile(const std::string& path) {
  auto text = ReadFile(path);
  if (!text && !IsAbsence(errno)) {
    ThrowUnreadable(path, errno);
  }
  return text;
}

void RequireReadable(const std::string& path) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (!file.IsOpen()) {
    ThrowUnreadable(path, errno);
  }
}

bool IsAbsence(int error) {
  return error == ENOENT || error == ENOTDIR || error == ESRCH || error == ENODEV;
}

std::string ReadLine(const std::string& path) {
  const auto text = ReadFile(path);
  return text ? std::string(Trim(*text)) : std::string();
}

std::vector<std::string> ListFolder(const std::string& path) {
  return ReadFolder(path).value_or(std::vector<std::string>());
}

std::optional<std::vector<std::string>> ReadFolder(const std::string& path) {
  const std::unique_ptr<DIR, CloseFolder> folder(::opendir(path.c_str()));
  if (folder == nullptr) {
    return std::nullopt;
  }
  std::vector<std::string> names;
  for (;;) {
    errno = 0;  // readdir returns null at the end and on errors
    const dirent* const entry = ::readdir(folder.get());
    if (entry == nullptr) {
      break;
    }
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      names.emplace_back(name);
    }
  }
  if (errno != 0) {
    return std::nullopt;
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> ListRequiredFolder(const std::string& path) {
  auto names = ReadFolder(path);
  if (!names) {
    ThrowUnreadable(path, errno);
  }
  return std::move(*names);
}

std::optional<std::vector<std::string>> ListOptionalFolder(const std::string& path) {
  auto names = ReadFolder(path);
  if (!names && !IsAbsence(errno)) {
    ThrowUnreadable(path, errno);
  }
  return names;
}

bool Exists(const std::string& path) {
  struct stat status = {};
  if (::lstat(path.c_str(), &status) == 0) {
    return true;
  }
  if (!IsAbsence(errno)) {
    ThrowUnreadable(path, errno);
  }
  return false;
}

void RequireEntries(const std::string& folder) {
  if (ListRequiredFolder(folder).empty()) {
    throw KestrelException("Unable to read " + folder + ": nothing is there");
  }
}

std::optional<std::string> ReadLink(const std::string& path) {
  std::string target(256, '\0');
  for (;;) {
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    if (length < 0) {
      return std::nullopt;
    }
    if (static_cast<std::size_t>(length) < target.size()) {
      target.resize(static_cast<std::size_t>(length));
      return target;
    }
    target.resize(2 * target.size());
  }
}

}  // namespace Kestrel::Host
