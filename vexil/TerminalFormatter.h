// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <iosfwd>
#include <memory>
#include <string>

#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/autocli/Formatter.h"
#include "vexil/Session.h"
#include "vexil/formats/FormatsPlugin.h"

namespace Kestrel::Vexil {

/// The formatter of lines that choose none, if the environment requests pretty on terminals. Prints
/// a result as pretty if the command prints it as table or simple by default; prints everything
/// else, such as help, as if there were no request.
class TerminalFormatter : public Formats::ExactFormatter {
 public:
  /// `dispatcher` and `session` must exist as long as the formatter. `facts` are those of the
  /// session.
  TerminalFormatter(AutoCli::CliDispatcher& dispatcher, const Session& session,
                    const Formats::CallFacts& facts);
  ~TerminalFormatter() override;

  void Format(const std::shared_ptr<CallSpec::Output>& output, AutoCli::FormatParameters& params,
              AutoCli::DisplayContext& display, std::ostream& out) override;

 private:
  std::string DefaultFormatter(const CallSpec::Output& output) const;

  AutoCli::CliDispatcher& dispatcher_;
  const Session& session_;
};

/// The formatters of the tool, which know the current line.
class ToolFormats : public Formats::FormatsPlugin {
 public:
  /// Both must exist as long as results are printed.
  ToolFormats(AutoCli::CliDispatcher& dispatcher, const Session& session);
  ~ToolFormats() override;

  /// If the session has chosen pretty, returns a TerminalFormatter for that name.
  std::shared_ptr<AutoCli::Formatter> GetFormatter(const std::string& name) override;

 private:
  AutoCli::CliDispatcher& dispatcher_;
  const Session& session_;
};

}  // namespace Kestrel::Vexil
