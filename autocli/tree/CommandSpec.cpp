// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CommandSpec.h"

#include "autocli/text/JoinWords.h"
#include "callspec/TextValue.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using CallSpec::TextOrEmpty;
using MetaObj::MetaList;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

constexpr const char* kNoChildren = "'. Commands cannot have sub-commands or sub-namespaces.";

std::string NotFoundMessage(const std::string& name, const std::string& path) {
  return "Unable to find a namespace or command with the name '" + name + "' on the command '" +
         path + kNoChildren;
}

std::shared_ptr<ParameterSpec> MakeHelpParameter() {
  std::shared_ptr<ParameterSpec> help = ParameterSpec::New("help", ParameterType::Bool);
  help->SetShortName("h");
  help->SetDescription("Show the help message.");
  help->SetRequired(false);
  return help;
}

std::shared_ptr<MetaStruct> MakeParameter(const std::string& name, const std::string& shortName,
                                          const std::string& description, bool required,
                                          bool secret) {
  std::shared_ptr<MetaStruct> structure = MetaStruct::New("VexilCommandParameter");
  structure->SetField("Name", name);
  structure->SetField("Short Name", shortName);
  structure->SetField("Description", description);
  structure->SetField("Required", required);
  structure->SetField("Secret", secret);
  return structure;
}

std::shared_ptr<MetaList> MakeParameterList(const InputSpec& spec) {
  std::shared_ptr<MetaList> list =
      MetaList::New(MetaType::Struct, MakeParameter("", "", "", false, false));
  for (const std::shared_ptr<ParameterSpec>& parameter : spec.GetParameters()) {
    list->Add(MakeParameter(parameter->GetName(), parameter->GetShortName(),
                            parameter->GetDescription(true), parameter->IsRequired(),
                            parameter->IsSecret()));
  }
  return list;
}

std::shared_ptr<MetaStruct> MakeExample(const std::string& description, const std::string& syntax) {
  std::shared_ptr<MetaStruct> structure = MetaStruct::New("VexilCommandExample");
  structure->SetField("Description", description);
  structure->SetField("Syntax", syntax);
  return structure;
}

}  // namespace

CommandSpec::CommandSpec() = default;

CommandSpec::~CommandSpec() = default;

std::shared_ptr<InputSpec> CommandSpec::GetInputSpec() {
  if (inputSpec_ != nullptr) {
    return inputSpec_;
  }
  std::shared_ptr<InputSpec> spec = GetInputSpecInternal();
  if (spec == nullptr) {
    throw KestrelException("The command '" + GetName() + "' has no input specification.");
  }
  // Stored before "help" is added: a command with a "help" of its own throws only on the first
  // call.
  inputSpec_ = std::move(spec);
  inputSpec_->AddParameter(MakeHelpParameter());
  return inputSpec_;
}

std::shared_ptr<OutputSpec> CommandSpec::GetOutputSpec() {
  if (outputSpec_ != nullptr) {
    return outputSpec_;
  }
  std::shared_ptr<OutputSpec> spec = GetOutputSpecInternal();
  if (spec == nullptr) {
    throw KestrelException("The command '" + GetName() + "' has no output specification.");
  }
  outputSpec_ = std::move(spec);
  return outputSpec_;
}

std::shared_ptr<NamespaceNode> CommandSpec::GetThis() { return shared_from_this(); }

bool CommandSpec::HasNamespaceNode(const std::string& /*name*/) { return false; }

std::shared_ptr<NamespaceNode> CommandSpec::GetNamespaceNode(const std::string& name) {
  throw KestrelException(NotFoundMessage(name, GetPathString(' ')));
}

void CommandSpec::RegisterNamespaceNode(std::shared_ptr<NamespaceNode> /*node*/, std::string name) {
  throw KestrelException("Attempt to register a command or namespace '" + name + "' on command '" +
                         GetPathString(' ') + kNoChildren);
}

void CommandSpec::RegisterNamespaceNode(std::shared_ptr<NamespaceNode> node, const char* name) {
  RegisterNamespaceNode(std::move(node), TextOrEmpty(name));
}

std::shared_ptr<NamespaceNode> CommandSpec::ResolveNode(std::list<std::string>& path) {
  throw KestrelException(NotFoundMessage(JoinWords(path), GetPathString(' ')));
}

Dispatcher* CommandSpec::GetDispatcher() {
  const std::shared_ptr<NamespaceNode> parent = GetParent();
  if (parent == nullptr) {
    throw KestrelException("Invalid state for command with name '" + GetName() +
                           "'. No parent node has been set.");
  }
  return parent->GetDispatcher();
}

void CommandSpec::SetParent(std::shared_ptr<NamespaceNode> parent) { parent_ = parent; }

std::shared_ptr<NamespaceNode> CommandSpec::GetParent() { return parent_.lock(); }

NodeType CommandSpec::GetType() { return NodeType::Command; }

void CommandSpec::AddExample(std::string arguments, std::string description) {
  examples_.emplace_back(std::move(arguments), std::move(description));
}

void CommandSpec::AddExample(const char* arguments, const char* description) {
  AddExample(TextOrEmpty(arguments), TextOrEmpty(description));
}

const std::vector<std::pair<std::string, std::string>>& CommandSpec::GetExamples() const {
  return examples_;
}

void CommandSpec::SetDefaultOutputFormatter(std::string name) {
  defaultFormatParameters_.SetFormatter(std::move(name));
}

void CommandSpec::SetDefaultOutputFormatter(const char* name) {
  defaultFormatParameters_.SetFormatter(name);
}

void CommandSpec::SetDefaultOutputParameter(std::string name, std::string value) {
  defaultFormatParameters_.SetParameter(std::move(name), std::move(value));
}

void CommandSpec::SetDefaultOutputParameter(const char* name, const char* value) {
  defaultFormatParameters_.SetParameter(name, value);
}

FormatParameters CommandSpec::GetDefaultOutputFormatParameters() const {
  return defaultFormatParameters_;
}

void CommandSpec::GenerateHelpOutput(const std::shared_ptr<Input>& input,
                                     const std::shared_ptr<Output>& output) {
  const std::shared_ptr<MetaStruct> help = MetaStruct::New("VexilCommandHelp");
  std::string prefix;
  if (const auto* const commandInput = dynamic_cast<const CommandInput*>(input.get())) {
    const std::string path = commandInput->GetCommandPathString();
    help->SetField("Dispatcher", commandInput->GetDispatcher());
    help->SetField("Path", path);
    prefix = commandInput->GetDispatcher() + " " + path;
  }
  help->SetField("Description", GetDescription());
  help->SetField("Param List", MakeParameterList(*GetInputSpec()));

  const std::shared_ptr<MetaList> examples = MetaList::New(MetaType::Struct, MakeExample("", ""));
  for (const auto& [arguments, description] : examples_) {
    examples->Add(MakeExample(description + " :", "# " + prefix + " " + arguments));
  }
  help->SetField("Example List", examples);

  output->SetRootObject(help);
  output->SetOutputType(Output::Help);
}

void CommandSpec::AddMetaData(const std::string& name, const std::string& value) {
  metaData_[name] = value;
}

const std::map<std::string, std::string>& CommandSpec::GetMetaData() const { return metaData_; }

}  // namespace Kestrel::AutoCli
