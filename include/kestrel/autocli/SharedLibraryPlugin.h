// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/Plugin.h"

namespace Kestrel::AutoCli {

/// A plug-in in a shared object, which registers its namespaces and commands through the entry
/// point that PluginEntryPoint.h declares, and has no formatters.
///
/// The shared object stays loaded as long as this object lives. The commands that it registered
/// run its code, so this object must outlive the tree that holds them.
class KESTREL_API SharedLibraryPlugin : public Plugin {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// The entry point of a shared object.
  using RegisterFunction = void (*)(std::shared_ptr<Namespace> root);

  /// Makes a plug-in of the file `path`, which is also its name; nothing is opened yet.
  static std::shared_ptr<SharedLibraryPlugin> New(const std::string& path);

  SharedLibraryPlugin(const std::string& path, FactoryFlag flag);
  SharedLibraryPlugin(const SharedLibraryPlugin&) = delete;
  SharedLibraryPlugin& operator=(const SharedLibraryPlugin&) = delete;
  ~SharedLibraryPlugin() override;

  /// Opens the file, with its symbols bound lazily and open to later plug-ins, and finds the entry
  /// point. A path without "/" is searched for as the system's loader searches for libraries.
  /// Throws KestrelException with the loader's text when either fails, and when a path with "/"
  /// leads to something that is no regular file, or to one that was cut short, which the loader
  /// would not survive; nothing stays open then.
  void Initialize() override;

  const std::string& GetName() const override;

  /// Calls the entry point, whose exceptions pass; does nothing before `Initialize` succeeded.
  void RegisterNamespaces(std::shared_ptr<Namespace> root) override;

  /// Always false.
  bool HasFormatter(const std::string& name) override;

  /// Always null.
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) override;

  /// Always empty.
  const std::vector<std::shared_ptr<Formatter>>& GetFormatters() override;

 private:
  struct LibraryCloser {
    void operator()(void* handle) const;
  };
  using LibraryHandle = std::unique_ptr<void, LibraryCloser>;

  std::string path_;
  LibraryHandle handle_;
  RegisterFunction registerFunction_ = nullptr;
};

}  // namespace Kestrel::AutoCli
