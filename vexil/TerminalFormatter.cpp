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
                                     const Formats::CallFacts& facts)
    : ExactFormatter(Formats::kPrettyFormat, facts), dispatcher_(dispatcher), session_(session) {}

TerminalFormatter::~TerminalFormatter() = default;

void TerminalFormatter::Format(const std::shared_ptr<Output>& output,
                               AutoCli::FormatParameters& parameters,
                               AutoCli::DisplayContext& display, std::ostream& out) {
  if (output->GetOutputType() == Output::Ordinary && session_.IsPretty()) {
    return ExactFormatter::Format(output, parameters, display, out);
  }
  const std::string chosen = DefaultFormatter(*output);
  const auto formatter = dispatcher_.GetFormatter(chosen);
  if (formatter != nullptr) {
    formatter->Format(output, parameters, display, out);
  } else if (!chosen.empty()) {
    const std::string message = "Unable to find requested formatter: " + chosen;
    output->AddErrorMessage(message);
  }
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
  if (name != Formats::kPrettyFormat.name || !session_.HasAddedFormatter()) {
    return FormatsPlugin::GetFormatter(name);
  }
  const std::shared_ptr<TerminalFormatter> formatter(
      new TerminalFormatter(dispatcher_, session_, FactsOf(session_)));
  formatter->Describe();
  return formatter;
}

}  // namespace Kestrel::Vexil
