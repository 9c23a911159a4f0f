// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/SharedLibraryPlugin.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <utility>

#include "autocli/plugins/SharedObjectFile.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

namespace {

constexpr const char* kEntryPoint = "AutoCli_RegisterNamespaces";

std::string LoaderError() {
  const char* const text = dlerror();
  return text != nullptr ? text : "(null)";
}

// The loader searches its own folders for a path without "/".
bool HasFolder(const std::string& path) { return path.find('/') != std::string::npos; }

// A FIFO or a device would block the loader. The loader itself reports a file that does not exist.
bool IsKnownNotToBeAFile(const std::string& path) {
  struct stat status = {};
  return HasFolder(path) && stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
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
  if (IsKnownNotToBeAFile(path_)) {
    throw KestrelException("Unable to load plugin from " + path_ + " : not a regular file");
  }
  if (HasFolder(path_) && IsSharedObjectCutShort(path_)) {
    throw KestrelException("Unable to load plugin from " + path_ + " : " + path_ +
                           ": file too short");
  }
  LibraryHandle handle(dlopen(path_.c_str(), RTLD_LAZY | RTLD_GLOBAL));
  if (handle == nullptr) {
    throw KestrelException("Unable to load plugin from " + path_ + " : " + LoaderError());
  }
  dlerror();  // clears a message that an earlier call of other code has left
  void* const symbol = dlsym(handle.get(), kEntryPoint);
  if (symbol == nullptr) {
    // The message is made before the handle is closed, which would replace the loader's text.
    throw KestrelException("Unable to get plugin registration point from " + path_ + " : " +
                           LoaderError());
  }
  handle_ = std::move(handle);
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
