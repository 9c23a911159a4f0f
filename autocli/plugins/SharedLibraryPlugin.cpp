// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/SharedLibraryPlugin.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <utility>

#include "autocli/plugins/CheckedFile.h"
#include "autocli/plugins/SharedObjectFile.h"
#include "autocli/text/SystemError.h"
#include "kestrel/KestrelException.h"

#define KESTREL_NOT_A_PLUGIN
#include "kestrel/autocli/PluginEntryPoint.h"

namespace Kestrel::AutoCli {

namespace {

constexpr const char* kEntryPoint = "AutoCli_RegisterNamespaces";
constexpr const char* kAbiNumber = "AutoCli_PluginAbi";

std::string LoaderError() {
  const char* const text = dlerror();
  return text != nullptr ? text : "(null)";
}

// The dynamic loader searches its own folders for a path without "/".
bool HasFolder(const std::string& path) { return path.find('/') != std::string::npos; }

// A FIFO or a device would block the loader. The loader itself reports a file that does not exist.
bool IsKnownNotToBeAFile(const std::string& path) {
  struct stat status = {};
  return HasFolder(path) && stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

/// Where the loader finds a shared object.
struct ObjectFile {
  FileDescriptor descriptor;  // of the checked file; none if nothing is checked
  std::string name;
};

[[noreturn]] void Refuse(const std::string& path, const std::string& reason) {
  throw KestrelException("Unable to load plugin from " + path + " : " + reason);
}

CheckedFile OpenChecked(const std::string& path) {
  try {
    return OpenCheckedFile(path);
  } catch (const KestrelException& error) {
    Refuse(path, error.what());
  }
}

// The loader does not open a name that it already knows, even if the name now refers to another
// file. Because the numbers of file descriptors are reused, each name has one more slash than the
// last.
std::string NameForLoader(const FileDescriptor& descriptor) {
  static std::size_t slashes = 0;
  return "/proc/self/fd" + std::string(++slashes, '/') + std::to_string(descriptor.Get());
}

ObjectFile FindObject(const std::string& path, bool isInDefaultFolder) {
  if (!HasFolder(path) || !IsTrustRequired(isInDefaultFolder)) {
    return {FileDescriptor(), path};
  }
  CheckedFile file = OpenChecked(path);
  if (!file.descriptor.IsOpen()) {
    Refuse(path, path + ": cannot open shared object file: " + SystemErrorText(file.error));
  }
  const std::string name = NameForLoader(file.descriptor);
  return {std::move(file.descriptor), name};
}

// Returns the loader's message, with the path of the plug-in in place of the object's name.
std::string LoaderError(const std::string& name, const std::string& path) {
  std::string text = LoaderError();
  std::size_t at = text.find(name);
  while (at != std::string::npos && name != path) {
    text.replace(at, name.size(), path);
    at = text.find(name, at + path.size());
  }
  return text;
}

// Plug-ins that do not include PluginEntryPoint.h have no number.
void RequireOwnAbi(void* handle, const std::string& path) {
  const auto* const number = static_cast<const unsigned*>(dlsym(handle, kAbiNumber));
  dlerror();  // clears the message about a missing number
  if (number != nullptr && *number != KESTREL_PLUGIN_ABI) {
    Refuse(path, path + ": compiled for plug-in ABI " + std::to_string(*number) +
                     ", but this library has plug-in ABI " + std::to_string(KESTREL_PLUGIN_ABI));
  }
}

}  // namespace

void SharedLibraryPlugin::LibraryCloser::operator()(void* handle) const { dlclose(handle); }

std::shared_ptr<SharedLibraryPlugin> SharedLibraryPlugin::New(const std::string& path) {
  return std::make_shared<SharedLibraryPlugin>(path, FactoryFlag());
}

SharedLibraryPlugin::SharedLibraryPlugin(const std::string& path, FactoryFlag /*flag*/)
    : path_(path) {}

SharedLibraryPlugin::~SharedLibraryPlugin() = default;

void SharedLibraryPlugin::Initialize() {
  ObjectFile file = FindObject(path_, isInDefaultFolder_);
  if (IsKnownNotToBeAFile(file.name)) {
    Refuse(path_, "not a regular file");
  }
  if (HasFolder(path_) && IsSharedObjectCutShort(file.name)) {
    Refuse(path_, path_ + ": file too short");
  }
  // The loader derives $ORIGIN from the name. Using the path is safe: since the check, only trusted
  // users could have made it refer to another file.
  if (file.descriptor.IsOpen() && UsesOrigin(file.name)) {
    file.name = path_;
  }
  LibraryHandle handle(dlopen(file.name.c_str(), RTLD_LAZY | RTLD_GLOBAL));
  if (handle == nullptr) {
    Refuse(path_, LoaderError(file.name, path_));
  }
  dlerror();  // clears a message that an earlier call of other code has left
  void* const symbol = dlsym(handle.get(), kEntryPoint);
  if (symbol == nullptr) {
    // The message is made before the handle is closed: closing would replace the loader's text.
    throw KestrelException("Unable to get plugin registration point from " + path_ + " : " +
                           LoaderError(file.name, path_));
  }
  RequireOwnAbi(handle.get(), path_);
  handle_ = std::move(handle);
  file_ = std::make_shared<FileDescriptor>(std::move(file.descriptor));
  registerFunction_ = reinterpret_cast<RegisterFunction>(symbol);
}

const std::string& SharedLibraryPlugin::GetName() const { return path_; }

void SharedLibraryPlugin::RegisterNamespaces(std::shared_ptr<Namespace> root) {
  if (registerFunction_ != nullptr) {
    registerFunction_(std::move(root));
  }
}

bool SharedLibraryPlugin::HasFormatter(const std::string& /*name*/) { return false; }

std::shared_ptr<Formatter> SharedLibraryPlugin::GetFormatter(const std::string& /*name*/) {
  return nullptr;
}

const std::vector<std::shared_ptr<Formatter>>& SharedLibraryPlugin::GetFormatters() {
  static const std::vector<std::shared_ptr<Formatter>> none;
  return none;
}

}  // namespace Kestrel::AutoCli
