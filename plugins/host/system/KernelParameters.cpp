// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/system/KernelParameters.h"

#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/frame/HostFile.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

std::string SwapSeparators(std::string name) {
  for (char& letter : name) {
    letter = letter == '.' ? '/' : letter == '/' ? '.' : letter;
  }
  return name;
}

// Returns the path of a parameter's file: "net/ipv4/conf/eth0.1/mtu" for that name and for the name
// "net.ipv4.conf.eth0/1.mtu".
std::string RelativePath(const std::string& name) {
  const std::size_t separator = name.find_first_of("./");
  const bool isPath = separator != std::string::npos && name[separator] == '/';
  return isPath ? name : SwapSeparators(name);
}

// The user chooses the name, so it must not lead out of the folder of parameters.
bool IsInside(const std::string& relative) {
  const auto parts = Split(relative, '/');
  return std::none_of(
             parts.begin(), parts.end(),
             [](std::string_view part) { return part.empty() || part == "." || part == ".."; }) &&
         relative.find('\0') == std::string::npos;
}

std::string PathOf(const std::string& proc, const std::string& name) {
  const std::string relative = RelativePath(name);
  if (!IsInside(relative)) {
    throw KestrelException("There is no parameter '" + name + "'");
  }
  return proc + "/sys/" + relative;
}

std::string WithoutLineEnd(std::string text) {
  if (!text.empty() && text.back() == '\n') {
    text.pop_back();
  }
  return text;
}

[[noreturn]] void ThrowReadError(const std::string& name, int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
      throw KestrelException("There is no parameter '" + name + "'");
    case EISDIR:
      throw KestrelException("'" + name + "' is a group of parameters");
    case EACCES:
    case EPERM:
      throw KestrelException("You do not have permission to read the parameter '" + name + "'");
    default:
      throw KestrelException("Unable to read the parameter '" + name +
                             "': " + std::strerror(error));
  }
}

[[noreturn]] void ThrowWriteError(const std::string& name, const std::string& value, int error) {
  switch (error) {
    case EACCES:
    case EPERM:
      throw KestrelException("You do not have permission to change the parameter '" + name +
                             "'; usually only root may, and some are read-only");
    case EROFS:
      throw KestrelException("The parameter '" + name +
                             "' cannot be changed from here: " + std::strerror(error));
    case EINVAL:
    case ERANGE:
    case E2BIG:
      throw KestrelException("The kernel refuses the value '" + value + "' for the parameter '" +
                             name + "': " + std::strerror(error));
    default:
      throw KestrelException("Unable to change the parameter '" + name +
                             "': " + std::strerror(error));
  }
}

// Writes the value with a single call, as the kernel requires. Returns 0 or an error number; a
// partial write is an error.
int WriteAtOnce(const std::string& path, const std::string& text) {
  FileDescriptor file(::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC | O_NOCTTY));
  if (!file.IsOpen()) {
    return errno;
  }
  const ssize_t count = file.Write(text.data(), text.size());
  if (count < 0) {
    return errno;
  }
  return static_cast<std::size_t>(count) < text.size() ? E2BIG : file.Close();
}

// Returns whether `relative` is `prefix` or a path below it.
bool IsBelow(const std::string& relative, const std::string& prefix) {
  return prefix.empty() || (StartsWith(relative, prefix) &&
                            (relative.size() == prefix.size() || relative[prefix.size()] == '/'));
}

[[noreturn]] void ThrowUnreadable(const std::string& path, int error) {
  throw KestrelException("Unable to read " + path + ": " + std::strerror(error));
}

// Throws for any error except that the file no longer exists.
void RequireAbsence(const std::string& path, int error) {
  if (!IsAbsence(error)) {
    ThrowUnreadable(path, error);
  }
}

// Throws for an error that is caused by a lack of resources and not by the file.
void RequireResources(const std::string& path, int error) {
  if (error == EMFILE || error == ENFILE || error == ENOMEM) {
    ThrowUnreadable(path, error);
  }
}

class ParameterWalk {
 public:
  ParameterWalk(std::string root, std::string prefix)
      : root_(std::move(root)), prefix_(std::move(prefix)) {}

  std::vector<KernelParameter> Run() {
    Visit("");
    std::sort(found_.begin(), found_.end(),
              [](const KernelParameter& left, const KernelParameter& right) {
                return left.name < right.name;
              });
    return std::move(found_);
  }

 private:
  // Skips links, so that the walk ends.
  void Visit(const std::string& relative) {
    struct stat status = {};
    if (::lstat((root_ + relative).c_str(), &status) != 0) {
      RequireAbsence(root_ + relative, errno);
      return;
    }
    if (S_ISREG(status.st_mode)) {
      AddFile(relative, status.st_mode);
    } else if (S_ISDIR(status.st_mode)) {
      for (const std::string& name :
           ListOptionalFolder(root_ + relative).value_or(std::vector<std::string>())) {
        VisitChild(relative.empty() ? name : relative + "/" + name);
      }
    }
  }

  void VisitChild(const std::string& relative) {
    if (IsBelow(relative, prefix_) || IsBelow(prefix_, relative)) {
      Visit(relative);
    }
  }

  void AddFile(const std::string& relative, mode_t mode) {
    if (!IsBelow(relative, prefix_)) {
      return;
    }
    KernelParameter parameter;
    if ((mode & (S_IRUSR | S_IRGRP | S_IROTH)) != 0 && !ReadValue(root_ + relative, parameter)) {
      return;
    }
    parameter.name = SwapSeparators(relative);
    parameter.isWritable = (mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0;
    found_.push_back(std::move(parameter));
  }

  // Returns whether the parameter exists. Throws only if resources are lacking. Other errors do not
  // matter, because some kernels report an arbitrary error when a parameter without a value is
  // read.
  static bool ReadValue(const std::string& path, KernelParameter& parameter) {
    auto text = ReadFile(path);
    if (!text) {
      RequireResources(path, errno);
      return !IsAbsence(errno);
    }
    parameter.isReadable = true;
    parameter.value = WithoutLineEnd(std::move(*text));
    return true;
  }

  std::string root_;
  std::string prefix_;
  std::vector<KernelParameter> found_;
};

}  // namespace

std::vector<KernelParameter> ReadParameters(const std::string& proc, const std::string& prefix) {
  auto parameters = ParameterWalk(proc + "/sys/", RelativePath(prefix)).Run();
  if (parameters.empty()) {
    RequireEntries(proc + "/sys");
  }
  return parameters;
}

std::string ReadParameter(const std::string& proc, const std::string& name) {
  auto text = ReadFile(PathOf(proc, name));
  if (!text) {
    ThrowReadError(name, errno);
  }
  return WithoutLineEnd(std::move(*text));
}

void WriteParameter(const std::string& proc, const std::string& name, const std::string& value) {
  const std::string path = PathOf(proc, name);
  struct stat status = {};
  if (::stat(path.c_str(), &status) != 0) {
    ThrowReadError(name, errno);
  }
  if (S_ISDIR(status.st_mode)) {
    ThrowReadError(name, EISDIR);
  }
  const int error = WriteAtOnce(path, value + "\n");
  if (error != 0) {
    ThrowWriteError(name, value, error);
  }
}

std::string OnOneLine(std::string value) {
  std::replace(value.begin(), value.end(), '\t', ' ');
  std::replace(value.begin(), value.end(), '\n', ' ');
  return value;
}

}  // namespace Kestrel::Host
