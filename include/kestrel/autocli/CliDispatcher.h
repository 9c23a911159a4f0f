// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/autocli/OptionParser.h"

namespace Kestrel::AutoCli {

/// Turns a command line, or a stream of them, into one command each, runs it and prints what comes
/// of it: results, listings and help to standard output, messages to standard error.
///
/// A user's mistakes become messages. Only a word of the path that names nothing throws: the
/// KestrelException passes out of every operation here that handles a command line, with nothing
/// printed. The options before the path steer the dispatcher itself: --help, --plugin-dir,
/// --plugin, --formatter, --format-param, --screen-width and --input.
class KESTREL_API CliDispatcher : public Dispatcher {
 public:
  CliDispatcher();
  ~CliDispatcher() override;

  /// Handles the arguments of a process and ends it: exit(0) when all went well, else exit(1). An
  /// exception passes to the caller instead.
  [[noreturn]] void HandleArgvInput(int argc, const char* const* argv);

  /// Handles each line of `in` as a command line of its own, until a read fails; blank lines and
  /// comments are skipped. Whether the last line handled went well, true when there was none. What
  /// --screen-width and the plug-in options set stays for the lines that follow.
  bool ParseStreamInput(std::istream& in);

  /// Handles one parsed command line and returns whether a command ran and nothing was to complain
  /// about. Listing what lies below a namespace is false. Ends the process with exit(1) when the
  /// line asks for the dispatcher's own help, also within a stream. `fromArgv` allows --input.
  bool HandleOptions(OptionParser& parser, bool fromArgv);

  /// Applies the dispatcher options of `parser`: plug-ins are loaded at once, the choice of a
  /// formatter goes to `params`, mistakes go to `output`. False only when help was asked for, which
  /// is then printed.
  bool HandleDispatcherOptions(OptionParser& parser, FormatParameters& params,
                               const std::shared_ptr<CallSpec::Output>& output);

  /// Adds an error to `output` for each dispatcher option that does not exist. --input counts as
  /// one of those: it is honoured before anybody looks at the errors.
  void ValidateDispatcherParameters(OptionParser& parser,
                                    const std::shared_ptr<CallSpec::Output>& output);

  /// Takes width and height, in columns and rows, from the terminal on standard output; without one
  /// they stay as they are. A --screen-width from 1 to 9999 then replaces the width.
  void GetDisplayContext(DisplayContext& display) const;

  /// The choice of the formatter for help pages, "commandhelp", without parameters.
  FormatParameters GetHelpFormatParams() const;

  /// Prints the errors of `output`, one a line behind a heading, to standard error; nothing when
  /// there are none.
  void PrintError(const std::shared_ptr<CallSpec::Output>& output) const;

  /// Prints what lies below `node`, which becomes the root object of `output` as a structure of the
  /// type "VexilCommandPrint".
  void PrintChildren(std::shared_ptr<NamespaceNode> node, std::shared_ptr<CommandOutput> output);

 private:
  bool ReadInput(const std::vector<std::string>& names);
  bool HandlePath(OptionParser& parser, const FormatParameters& choices,
                  const std::shared_ptr<CommandOutput>& output);
  bool RunCommand(const std::shared_ptr<NamespaceNode>& node, OptionParser& parser,
                  const FormatParameters& choices, const std::shared_ptr<CommandOutput>& output);
  void LoadPlugins(const OptionParser& parser);
  void PrintUsage() const;

  std::string dispatcherName_;
  std::uint32_t screenWidth_ = 0;  // what --screen-width set last; 0 when it was never given
};

}  // namespace Kestrel::AutoCli
