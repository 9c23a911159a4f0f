// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/autocli/CommandSpec.h"
#include "kestrel/autocli/OptionParser.h"
#include "kestrel/metaobj/MetaObject.h"
#include "vexil/Words.h"

namespace Kestrel::Vexil {

/// Handles the command lines of one run of the tool: the arguments, or the lines of --input. Keeps
/// the current line, because the dispatcher does not pass all of it to a formatter.
class Session {
 public:
  /// `dispatcher` must exist as long as the session.
  explicit Session(AutoCli::CliDispatcher& dispatcher);

  /// Does what CliDispatcher::HandleOptions does for the arguments of the process. If a line
  /// chooses no formatter, the session chooses pretty for it if the environment requests that and
  /// standard output is a terminal; see TerminalFormatter. Hints follow the output of each line.
  bool HandleArguments(int argc, const char* const* argv);

  /// The tokens of the last line that was handled, or that an exception has ended. They include the
  /// option that the session has added only if it decides how the command prints its result.
  const Words& GetWords() const { return words_; }

  /// The command of the current line; null if the line names none, or if no line is being handled.
  std::shared_ptr<AutoCli::CommandSpec> FindCommand() const;

  /// What that command declares as its result, or null.
  std::shared_ptr<MetaObj::MetaObject> FindDeclaredResult() const;

  /// Whether the current line contains --format-param with that key.
  bool HasFormatParameter(const std::string& key) const;

  /// Whether the session has chosen the formatter pretty for the current line.
  bool HasAddedFormatter() const { return hasAddedFormatter_; }

  /// Whether the result of the current line is printed as pretty: the session has chosen that
  /// formatter, and the command prints its result for people by default.
  bool IsPretty() const;

 private:
  bool ReadInput(AutoCli::OptionParser& parser);
  bool ReadStandardInput();
  bool ReadFile(const std::string& name);
  template <typename ReadLine>
  bool HandleLines(const ReadLine& readLine);
  bool HandleText(const std::string& line, AutoCli::OptionParser& parser);
  bool HandleLine(AutoCli::OptionParser& parser, bool isOfArguments);
  bool IsFormatterWanted(const AutoCli::OptionParser& parser) const;

  AutoCli::CliDispatcher& dispatcher_;
  bool isPrettyWanted_;
  const AutoCli::OptionParser* line_ = nullptr;
  bool hasAddedFormatter_ = false;
  Words words_;
};

}  // namespace Kestrel::Vexil
