// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/TerminalFormatter.h"

#include <iostream>
#include <utility>

#include "kestrel/autocli/FormatParameters.h"

namespace Kestrel::Vexil {

using AutoCli::Formatter;
using CallSpec::Output;

namespace {

Formats::CallFacts FactsOf(const Session& session) {
  return {[&session] { return session.FindDeclaredResult(); },
          [&session](const std::string& key) { return session.HasFormatParameter(key); },
          &std::cout};
}

}  // namespace

TerminalFormatter::TerminalFormatter(AutoCli::CliDispatcher& dispatcher, const Session& session,
                                     std::shared_ptr<Formatter> pretty)
    : Formatter(pretty->GetName()),
      dispatcher_(dispatcher),
      session_(session),
      pretty_(std::move(pretty)) {
  description = pretty_->GetDescription();
  params = pretty_->GetParams();
}

TerminalFormatter::~TerminalFormatter() = default;

void TerminalFormatter::Format(const std::shared_ptr<Output>& output,
                               AutoCli::FormatParameters& parameters,
                               AutoCli::DisplayContext& display, std::ostream& out) {
  if (output->GetOutputType() == Output::Ordinary && session_.IsPretty()) {
    pretty_->Format(output, parameters, display, out);
    return;
  }
  AutoCli::FormatParameters others = parameters;
  others.SetFormatter(DefaultFormatter(*output));
  dispatcher_.FormatOutput(output, others, display, out);
}

// Returns the formatter that the dispatcher would choose; empty if nothing is printed.
std::string TerminalFormatter::DefaultFormatter(const Output& output) const {
  if (output.GetOutputType() == Output::Help) {
    return dispatcher_.GetHelpFormatParams().GetFormatter();
  }
  const auto command = session_.FindCommand();
  const bool isOrdinary = output.GetOutputType() == Output::Ordinary;
  return isOrdinary && command != nullptr
             ? command->GetDefaultOutputFormatParameters().GetFormatter()
             : std::string();
}

ToolFormats::ToolFormats(AutoCli::CliDispatcher& dispatcher, const Session& session)
    : FormatsPlugin(FactsOf(session)), dispatcher_(dispatcher), session_(session) {}

ToolFormats::~ToolFormats() = default;

std::shared_ptr<Formatter> ToolFormats::GetFormatter(const std::string& name) {
  std::shared_ptr<Formatter> formatter = FormatsPlugin::GetFormatter(name);
  const bool isReplaced = formatter != nullptr && name == "pretty" && session_.HasAddedFormatter();
  return isReplaced ? std::make_shared<TerminalFormatter>(dispatcher_, session_, formatter)
                    : formatter;
}

}  // namespace Kestrel::Vexil
