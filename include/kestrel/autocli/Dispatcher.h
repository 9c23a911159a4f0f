// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/autocli/Plugin.h"
#include "kestrel/autocli/RootNamespace.h"

namespace Kestrel::AutoCli {

/// Owns the command tree and the plug-ins that fill it; finds, validates and runs commands, and
/// formats their output. It does not deal with command lines or terminals.
///
/// Mistakes in a request become error messages of the output; mistakes of a plug-in throw
/// KestrelException. A dispatcher must outlive everything that its root was passed to. It must not
/// be a static object: static objects of plug-ins would be destroyed before it.
class KESTREL_API Dispatcher {
 public:
  /// Makes the root and registers the built-in plug-in. Does not load any file.
  Dispatcher();
  virtual ~Dispatcher();
  Dispatcher(const Dispatcher&) = delete;
  Dispatcher& operator=(const Dispatcher&) = delete;

  /// The root of the tree; never null. It must not be used after the dispatcher has been destroyed.
  std::shared_ptr<RootNamespace> GetRootNamespace() const;

  /// Loads and registers the plug-in in the file `path`. The suffix determines its kind: ".so" is a
  /// shared object, ".xml" is a descriptor; any other file is ignored.
  /// Throws KestrelException when the plug-in cannot be loaded or registered. Other exceptions of
  /// its entry point pass through.
  void AddPlugin(const std::string& path);

  /// Loads the plug-ins in the directory `dir` + "/lib64", which may be missing, then those in
  /// `dir`, as `AddExternalDirectoryInt` does.
  void AddExternalDirectory(const std::string& dir);

  /// Loads all plug-ins in the directory `dir`, in ascending byte order of their paths. A plug-in
  /// that throws KestrelException is reported on standard error and skipped; other exceptions pass
  /// through. A directory that cannot be opened is reported too if `reportMissing` is set.
  void AddExternalDirectoryInt(const std::string& dir, bool reportMissing);

  /// Loads the plug-ins in the default directory and in its subdirectory "ext", as
  /// `AddExternalDirectory` does. The default directory is set when the library is built, usually
  /// to "/usr/lib/norvane/vexil".
  ///
  /// If the effective user is root, skips each file that a user other than root and the owner of
  /// the running program could have written or replaced, and reports the reason. In a process with
  /// rights that its user does not have, such files are skipped in every directory, and `AddPlugin`
  /// throws KestrelException for them.
  void AddDefaultDirectories();

  /// Adds the namespaces, commands and formatters of `plugin`, which must be initialised, and
  /// shares its ownership.
  ///
  /// Throws KestrelException when `plugin` is null, when its RegisterNamespaces throws one, and
  /// when the name of one of its formatters is taken. In the last two cases none of its formatters
  /// is added and it is not listed, but what it has registered in the tree stays there and works.
  void RegisterPlugin(std::shared_ptr<Plugin> plugin);

  /// Empties the list of plug-ins. The tree and the formatters remain. The code of shared objects
  /// remains loaded, because commands in the tree need it.
  void ResetRegistrations();

  /// The names of the plug-ins in the order of registration; the built-in plug-in is the first.
  std::vector<std::string> GetPluginNames() const;

  /// Whether a registered plug-in has a formatter with exactly this name.
  bool HasFormatter(const std::string& name) const;

  /// The formatter with exactly this name, null when there is none.
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) const;

  /// All formatters in ascending byte order of their names.
  std::vector<std::shared_ptr<Formatter>> GetFormatters() const;

  /// Finds the command at the path of `input`. Returns null and adds error messages to `output`
  /// when there is no node at the path or the node is a namespace; returns null without a message
  /// when the node has the type `Command` but is not a Command. Here and in the operations below,
  /// no argument may be null.
  std::shared_ptr<Command> GetCommand(std::shared_ptr<CommandInput> input,
                                      std::shared_ptr<CommandOutput> output);

  /// Finds the command as `GetCommand` does, passes its declaration to `input`, validates the
  /// parameters, and runs the command if they are valid. Problems become error messages of
  /// `output`. Returns whether a command was found and `output` has no error. When the command's
  /// declaration is broken, throws KestrelException or, for a regular expression that does not
  /// compile, `std::runtime_error`.
  bool ExecuteCommand(std::shared_ptr<CommandInput> input, std::shared_ptr<CommandOutput> output);

  /// The default formatter and parameters of the command that `GetCommand` finds. If it finds none,
  /// the result is empty, and `output` has the error messages of `GetCommand`.
  FormatParameters GetDefaultOutputFormatParameters(std::shared_ptr<CommandInput> input,
                                                    std::shared_ptr<CommandOutput> output);

  /// Prints `output` to `out` with the formatter that `params` names; prints nothing when the name
  /// is empty. Returns false and adds an error message to `output` when there is no formatter of
  /// that name or when the formatter throws KestrelException.
  bool FormatOutput(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
                    DisplayContext& display, std::ostream& out);

 private:
  void RegisterNamespacesOf(Plugin& plugin);
  void RegisterFormattersOf(const std::shared_ptr<Plugin>& plugin);

  std::map<std::string, std::shared_ptr<Plugin>> formatterOwners_;
  std::vector<std::shared_ptr<Plugin>> plugins_;

  // Shared objects that are not listed, but contain code that commands in the tree may need.
  std::vector<std::shared_ptr<Plugin>> retained_;

  // Must be the last member: the tree is destroyed first, while the code of its commands is still
  // loaded.
  std::shared_ptr<RootNamespace> root_;
};

}  // namespace Kestrel::AutoCli
