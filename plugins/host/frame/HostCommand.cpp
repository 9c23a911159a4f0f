// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/HostCommand.h"

#include <kestrel/KestrelException.h>

#include <string>

namespace Kestrel::Host {

HostCommand::HostCommand(const char* description) { SetDescription(description); }

HostCommand::~HostCommand() = default;

std::shared_ptr<CallSpec::InputSpec> HostCommand::GetInputSpecInternal() {
  auto spec = CallSpec::InputSpec::New();
  DeclareParameters(*spec);
  DeclareCommonParameters(*spec);
  return spec;
}

std::shared_ptr<CallSpec::OutputSpec> HostCommand::GetOutputSpecInternal() {
  auto spec = CallSpec::OutputSpec::New();
  DeclareResult(*spec);
  return spec;
}

void HostCommand::ExecuteInternal(const std::shared_ptr<CallSpec::Input>& input,
                                  const std::shared_ptr<CallSpec::Output>& output) {
  if (input == nullptr) {
    throw KestrelException("The command needs an input");
  }
  ChooseFormat(*input);
  // Execute puts "Error on command" before the message of an exception. A failure to get the result
  // is not a defect of the program, so its message has no such prefix.
  try {
    Run(*input, *output);
  } catch (const KestrelException& error) {
    output->AddErrorMessage(error.what());
  }
}

void HostCommand::ShowAsTable(const std::string& columns,
                              std::initializer_list<FormatParameter> parameters) {
  SetFormat("table", parameters);
  // Does not set "fields:<TypeName>", which would take precedence over "fields" chosen by the user.
  SetDefaultOutputParameter("fields", columns);
}

void HostCommand::ShowAsLines(const char* typeName, const char* fields,
                              std::initializer_list<FormatParameter> parameters) {
  SetFormat("simple", parameters);
  SetDefaultOutputParameter("align-fields", "true");
  SetDefaultOutputParameter(std::string("fields:") + typeName, fields);
}

void HostCommand::ShowAsValue() { SetFormat("simple", {}); }

void HostCommand::DeclareCommonParameters(CallSpec::InputSpec&) const {}

void HostCommand::ChooseFormat(const CallSpec::Input&) {}

void HostCommand::DeclareParameters(CallSpec::InputSpec&) const {}

void HostCommand::SetFormat(const char* formatter,
                            std::initializer_list<FormatParameter> parameters) {
  SetDefaultOutputFormatter(formatter);
  for (const FormatParameter& parameter : parameters) {
    SetDefaultOutputParameter(parameter.name, parameter.value);
  }
}

std::shared_ptr<AutoCli::NamespaceNode> AddNamespace(
    const std::shared_ptr<AutoCli::NamespaceNode>& parent, const char* name,
    const char* description) {
  auto node = parent->SubNamespace(name);
  if (node->GetDescription().empty()) {
    node->SetDescription(description);
  }
  return node;
}

}  // namespace Kestrel::Host
