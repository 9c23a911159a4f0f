// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CommandList.h"

#include <string>
#include <vector>

#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/Output.h"
#include "kestrel/callspec/OutputSpec.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"

namespace Kestrel::AutoCli {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using MetaObj::MetaList;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

constexpr const char* kNamespaceFilter = "namespace-filter";
constexpr const char* kCommandFilter = "command-filter";
constexpr const char* kDescriptionFilter = "description-filter";

struct Filters {
  std::string path;
  std::string name;
  std::string description;
};

void AddFilterParameter(InputSpec& spec, const char* name, const char* shortName,
                        const char* description) {
  const std::shared_ptr<ParameterSpec> parameter = ParameterSpec::New(name, ParameterType::String);
  parameter->SetShortName(shortName);
  parameter->SetDescription(description);
  parameter->SetRequired(false);
  spec.AddParameter(parameter);
}

std::string ReadFilter(const Input* input, const char* name) {
  return input != nullptr && input->HasParameter(name) ? input->GetParameter(name) : std::string();
}

// Every string contains the empty filter.
bool Passes(const std::string& text, const std::string& filter) {
  return text.find(filter) != std::string::npos;
}

void AddRow(MetaList& list, const std::string& path, const NamespaceNode& command) {
  const std::shared_ptr<MetaStruct> row = CommandList::GetOutputStructure();
  row->SetField("Command", command.GetName());
  row->SetField("Namespace", path);
  row->SetField("Description", command.GetDescription());
  list.Add(row);
}

void ListCommands(NamespaceNode& node, const Filters& filters, MetaList& list) {
  const std::string path = node.GetPathString('.');
  const bool pathPasses = Passes(path, filters.path);
  const std::vector<std::shared_ptr<NamespaceNode>> children = node.GetNamespaceNodes();
  list.EnsureCapacity(children.size());
  for (const std::shared_ptr<NamespaceNode>& child : children) {
    const NodeType kind = child->GetType();
    if (kind == NodeType::Namespace) {
      ListCommands(*child, filters, list);
    } else if (kind == NodeType::Command && pathPasses && Passes(child->GetName(), filters.name) &&
               Passes(child->GetDescription(), filters.description)) {
      AddRow(list, path, *child);
    }
  }
}

}  // namespace

std::shared_ptr<CommandList> CommandList::New(std::shared_ptr<Namespace> root) {
  return std::make_shared<CommandList>(root.get(), FactoryFlag());
}

CommandList::CommandList(Namespace* root, FactoryFlag /*flag*/) : root_(root) {
  SetDescription("List all of the vexil commands.");
  SetDefaultOutputFormatter("table");
  SetDefaultOutputParameter("fields:VexilCommand", "Namespace,Command,Description");
  SetDefaultOutputParameter("wrap-last", "true");
}

CommandList::~CommandList() = default;

std::shared_ptr<InputSpec> CommandList::GetInputSpecInternal() {
  std::shared_ptr<InputSpec> spec = InputSpec::New();
  AddFilterParameter(*spec, kNamespaceFilter, "n",
                     "Show only commands containing the specified string in their namespace path.");
  AddFilterParameter(*spec, kCommandFilter, "c",
                     "Show only commands containing the specified string in their name.");
  AddFilterParameter(*spec, kDescriptionFilter, "d",
                     "Show only commands containing the specified string in their description.");
  return spec;
}

std::shared_ptr<OutputSpec> CommandList::GetOutputSpecInternal() {
  std::shared_ptr<OutputSpec> spec = OutputSpec::New();
  spec->SetRootObject(MetaList::New(MetaType::Struct, GetOutputStructure()));
  return spec;
}

std::shared_ptr<MetaStruct> CommandList::GetOutputStructure() {
  std::shared_ptr<MetaStruct> structure = MetaStruct::New("VexilCommand");
  structure->SetField("Namespace", MetaString::New());
  structure->SetField("Command", MetaString::New());
  structure->SetField("Description", MetaString::New());
  return structure;
}

void CommandList::ExecuteInternal(const std::shared_ptr<Input>& input,
                                  const std::shared_ptr<Output>& output) {
  const Filters filters = {ReadFilter(input.get(), kNamespaceFilter),
                           ReadFilter(input.get(), kCommandFilter),
                           ReadFilter(input.get(), kDescriptionFilter)};
  const std::shared_ptr<MetaList> list = MetaList::New(MetaType::Struct, GetOutputStructure());
  ListCommands(*root_, filters, *list);
  output->SetRootObject(list);
}

}  // namespace Kestrel::AutoCli
