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

/// Handles a command line or a stream of command lines: finds and runs the command of each, and
/// prints results, listings and help to standard output, and messages to standard error.
///
/// A user's mistakes become messages, with one exception: if a word of the path names nothing,
/// every operation that handles a command line throws KestrelException instead. The options before
/// the path control the dispatcher itself: --help, --plugin-dir, --plugin, --formatter,
/// --format-param, --screen-width and --input.
class KESTREL_API CliDispatcher : public Dispatcher {
 public:
  CliDispatcher();
  ~CliDispatcher() override;

  /// Handles the arguments of a process and ends it with `exit`: status 0 if `HandleOptions`
  /// returns true, otherwise 1. Exceptions pass to the caller.
  [[noreturn]] void HandleArgvInput(int argc, const char* const* argv);

  /// Handles each line of `in` as a command line, up to the end of the stream; skips blank lines
  /// and comments. Returns the result of the last line handled, true when there was none.
  /// --screen-width and the options for plug-ins apply to the following lines too.
  bool ParseStreamInput(std::istream& in);

  /// Handles one parsed command line. Returns whether the line names a command and there was no
  /// error message; false when the children of a namespace were listed. If the line requests the
  /// dispatcher's own help, even in a stream, ends the process with `exit(1)`. `fromArgv` enables
  /// --input, with which the result is that of `ParseStreamInput`, or false if the input cannot be
  /// read or --input was given more than once.
  bool HandleOptions(OptionParser& parser, bool fromArgv);

  /// Applies the dispatcher options of `parser`: sets the screen width, loads plug-ins, and sets
  /// the chosen formatter and its parameters in `params`. Adds error messages to `output` for
  /// unknown options and for mistakes in --formatter and --format-param; a plug-in that cannot be
  /// loaded is reported on standard error. Returns false only if help was requested; then prints
  /// the help and applies no option.
  bool HandleDispatcherOptions(OptionParser& parser, FormatParameters& params,
                               const std::shared_ptr<CallSpec::Output>& output);

  /// Adds an error message to `output` for each unknown dispatcher option. --input is reported as
  /// unknown too. In the arguments of a process it nevertheless works, because it takes effect
  /// before the errors are checked.
  void ValidateDispatcherParameters(OptionParser& parser,
                                    const std::shared_ptr<CallSpec::Output>& output);

  /// Sets width and height, in columns and rows, to the size of the terminal on standard output; if
  /// there is none, leaves them unchanged. A --screen-width from 1 to 9999 then replaces the width.
  void GetDisplayContext(DisplayContext& display) const;

  /// The formatter for help pages, "commandhelp", without parameters.
  FormatParameters GetHelpFormatParams() const;

  /// Prints a heading and the error messages of `output`, each on its own line, to standard error;
  /// prints nothing if there are none.
  void PrintError(const std::shared_ptr<CallSpec::Output>& output) const;

  /// Prints a list of the children of `node`. The root object of `output` becomes the same list, in
  /// a structure "VexilCommandPrint".
  void PrintChildren(std::shared_ptr<NamespaceNode> node, std::shared_ptr<CommandOutput> output);

 private:
  bool ReadInput(const std::vector<std::string>& names);
  bool HandlePath(OptionParser& parser, const FormatParameters& choices,
                  const std::shared_ptr<CommandOutput>& output);
  bool RunCommand(const std::shared_ptr<NamespaceNode>& node, OptionParser& parser,
                  const FormatParameters& choices, const std::shared_ptr<CommandOutput>& output);
  void LoadPlugins(const OptionParser& parser);
  void PrintUsage() const;

  // What --screen-width set last; 0 when it was never given. It holds for the whole process.
  [[gnu::visibility("hidden")]] static std::uint32_t screenWidth_;

  std::string dispatcherName_;
};

}  // namespace Kestrel::AutoCli
