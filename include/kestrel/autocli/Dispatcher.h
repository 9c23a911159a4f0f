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

/// Owns the command tree and the plug-ins that fill it; finds, checks and runs commands, and
/// prints their output. It knows nothing of command lines and terminals.
///
/// Mistakes in a request become error messages of the output; a plug-in's mistakes are thrown as
/// KestrelException. A dispatcher must outlive everything that its root was handed to, and must
/// not be a static object: plug-ins have statics of their own, which would die before it.
class KESTREL_API Dispatcher {
 public:
  /// Makes the root and registers the built-in plug-in; loads no file.
  Dispatcher();
  virtual ~Dispatcher();
  Dispatcher(const Dispatcher&) = delete;
  Dispatcher& operator=(const Dispatcher&) = delete;

  /// The root of the tree; never null. Not to be kept beyond the dispatcher's life.
  std::shared_ptr<RootNamespace> GetRootNamespace() const;

  /// Loads and registers the plug-in in the file `path`, whose suffix tells its kind: ".so" is a
  /// shared object, ".xml" a descriptor; any other file is passed over in silence.
  /// Throws KestrelException when the plug-in cannot be loaded or registered; whatever else its
  /// entry point throws passes.
  void AddPlugin(const std::string& path);

  /// Loads the plug-ins of the directory `dir` + "/lib64", which may be missing, then those of
  /// `dir`, as `AddExternalDirectoryInt` does.
  void AddExternalDirectory(const std::string& dir);

  /// Loads every plug-in in the directory `dir`, in ascending byte order of the paths. One that
  /// throws KestrelException is reported on standard error and the next one follows; exceptions of
  /// other types pass. A directory that cannot be opened is reported there if `reportMissing`.
  void AddExternalDirectoryInt(const std::string& dir, bool reportMissing);

  /// Loads the plug-ins of the built-in directory and of its subdirectory "ext", as
  /// `AddExternalDirectory` does. The build sets that directory; "/usr/lib/norvane/vexil" is usual.
  void AddDefaultDirectories();

  /// Adds the namespaces, commands and formatters of `plugin`, which is initialised, and keeps it.
  /// Throws KestrelException when it is null, when it throws one while it registers, and when one
  /// of its formatters has a name that is taken: none of its formatters is known then and it is
  /// not listed, but what it put in the tree stays and works.
  void RegisterPlugin(std::shared_ptr<Plugin> plugin);

  /// Empties the list of plug-ins. Tree and formatters stay, and so does the code of shared
  /// objects, which the commands in the tree run.
  void ResetRegistrations();

  /// The names of the registered plug-ins in the order of registration; the built-in one is first.
  std::vector<std::string> GetPluginNames() const;

  /// Whether a registered plug-in offers a formatter of exactly this name.
  bool HasFormatter(const std::string& name) const;

  /// The formatter of exactly this name, null when there is none.
  std::shared_ptr<Formatter> GetFormatter(const std::string& name) const;

  /// All formatters in ascending byte order of their names.
  std::vector<std::shared_ptr<Formatter>> GetFormatters() const;

  /// The command that the path of `input` leads to. Null, with error messages on `output`, when it
  /// leads nowhere or to a namespace; null without a message for a node of the kind `Command` that
  /// is no Command. Neither argument may be null, here and below.
  std::shared_ptr<Command> GetCommand(std::shared_ptr<CommandInput> input,
                                      std::shared_ptr<CommandOutput> output);

  /// Finds the command of `input`, gives `input` the command's specification, and runs the command
  /// if the parameters raise no objection; objections are error messages on `output`. Returns
  /// whether a command was found and `output` has no error.
  /// Throws KestrelException when the command's own specification is broken.
  bool ExecuteCommand(std::shared_ptr<CommandInput> input, std::shared_ptr<CommandOutput> output);

  /// The default formatter and parameters of the command that `input` leads to; empty when there
  /// is none, with the error messages of `GetCommand`.
  FormatParameters GetDefaultOutputFormatParameters(std::shared_ptr<CommandInput> input,
                                                    std::shared_ptr<CommandOutput> output);

  /// Prints `output` to `out` with the formatter that `params` names; prints nothing when it names
  /// none. Returns false, with an error message added to `output`, when there is no formatter of
  /// that name or when it throws KestrelException.
  bool FormatOutput(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
                    DisplayContext& display, std::ostream& out);

 private:
  void RegisterNamespacesOf(Plugin& plugin);
  void RegisterFormattersOf(const std::shared_ptr<Plugin>& plugin);

  std::map<std::string, std::shared_ptr<Plugin>> formatterOwners_;
  std::vector<std::shared_ptr<Plugin>> plugins_;

  // Shared objects that are not listed, but whose code the tree may still run.
  std::vector<std::shared_ptr<Plugin>> retained_;

  // Stays the last member: the tree goes first, while the code of its commands is still loaded.
  std::shared_ptr<RootNamespace> root_;
};

}  // namespace Kestrel::AutoCli
