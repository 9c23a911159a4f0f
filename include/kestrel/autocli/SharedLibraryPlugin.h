// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/Plugin.h"

namespace Kestrel::AutoCli {

class FileDescriptor;

/// A plug-in in a shared object. It registers its namespaces and commands through the entry point
/// that PluginEntryPoint.h declares, and has no formatters.
///
/// The shared object stays loaded as long as the SharedLibraryPlugin exists. The registered
/// commands run code of the shared object, so the SharedLibraryPlugin must outlive the tree that
/// contains them.
class KESTREL_API SharedLibraryPlugin : public Plugin {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// The type of the entry point.
  using RegisterFunction = void (*)(std::shared_ptr<Namespace> root);

  /// Makes a plug-in for the file `path`, which is not opened yet. The path is also the name of the
  /// plug-in.
  static std::shared_ptr<SharedLibraryPlugin> New(const std::string& path);

  /// For `New` only; no other caller can make the flag.
  SharedLibraryPlugin(const std::string& path, FactoryFlag flag);
  SharedLibraryPlugin(const SharedLibraryPlugin&) = delete;
  SharedLibraryPlugin& operator=(const SharedLibraryPlugin&) = delete;
  ~SharedLibraryPlugin() override;

  /// Opens the file and finds the entry point. Symbols are bound lazily and are visible to plug-ins
  /// opened later. A file whose path has no "/" is searched for in the folders of the system's
  /// loader.
  ///
  /// Throws KestrelException with the loader's message when the file cannot be opened or has no
  /// entry point; the file is closed then. Also throws it for:
  /// - a path with "/" that names something other than a regular file,
  /// - a path with "/" of a file that was cut short, because the loader would crash,
  /// - a path with "/" of a file that the process does not trust, if the process checks that (see
  ///   Dispatcher::AddDefaultDirectories),
  /// - a plug-in that was compiled with another KESTREL_PLUGIN_ABI; the message contains both
  ///   numbers.
  void Initialize() override;

  /// Returns the path of the file.
  const std::string& GetName() const override;

  /// Calls the entry point; its exceptions reach the caller. Does nothing before `Initialize` has
  /// succeeded.
  void RegisterNamespaces(std::shared_ptr<Namespace> root) override;

  /// Returns false.
  bool HasFormatter(const std::string& name) override;

  /// Returns null.
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) override;

  /// Returns an empty list.
  const std::vector<std::shared_ptr<Formatter>>& GetFormatters() override;

 private:
  friend struct DefaultFolder;

  struct LibraryCloser {
    void operator()(void* handle) const;
  };
  using LibraryHandle = std::unique_ptr<void, LibraryCloser>;

  std::string path_;
  bool isInDefaultFolder_ = false;
  // The loader knows a checked file by a name in /proc that refers to this file descriptor, which
  // therefore stays open.
  std::shared_ptr<const FileDescriptor> file_;
  LibraryHandle handle_;
  RegisterFunction registerFunction_ = nullptr;
};

}  // namespace Kestrel::AutoCli
