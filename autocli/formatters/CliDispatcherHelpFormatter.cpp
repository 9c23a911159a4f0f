// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CliDispatcherHelpFormatter.h"

#include <utility>

#include "autocli/text/WriteUnpadded.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/TableFormatter.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

namespace {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;

std::shared_ptr<MetaStruct> GetListing(const std::shared_ptr<CallSpec::Output>& output) {
  std::shared_ptr<MetaStruct> listing =
      output == nullptr ? nullptr : std::dynamic_pointer_cast<MetaStruct>(output->GetRootObject());
  if (listing == nullptr || listing->GetTypeName() != "VexilCommandPrint") {
    throw KestrelException(
        "Error: Unexpected type for help output, formatter expected a struct with help data");
  }
  return listing;
}

// Returns the list in the field `name`, null if there is none.
std::shared_ptr<MetaList> GetList(const MetaStruct& structure, const std::string& name) {
  return structure.HasField(name) ? std::dynamic_pointer_cast<MetaList>(structure.GetField(name))
                                  : nullptr;
}

// Returns a new list of the nodes whose "Type" is `typeName`, null if `nodes` has no declared
// structure.
std::shared_ptr<MetaList> Filter(const MetaList& nodes, const std::string& typeName) {
  if (nodes.GetListStructure() == nullptr) {
    return nullptr;
  }
  std::shared_ptr<MetaList> filtered =
      MetaList::New(MetaObj::MetaType::Struct, nodes.GetListStructure());
  for (const std::shared_ptr<MetaObject>& node : nodes.GetObjects()) {
    const auto structure = std::static_pointer_cast<MetaStruct>(node);
    if (structure->HasField("Type") && structure->GetField("Type")->ToString() == typeName) {
      filtered->Add(structure);
    }
  }
  return filtered;
}

}  // namespace

CliDispatcherHelpFormatter::CliDispatcherHelpFormatter() : Formatter("clihelp") {
  description = "Format the --help output for all commands.";
}

CliDispatcherHelpFormatter::~CliDispatcherHelpFormatter() = default;

void CliDispatcherHelpFormatter::Format(const std::shared_ptr<CallSpec::Output>& output,
                                        FormatParameters& /*params*/, DisplayContext& display,
                                        std::ostream& out) {
  const std::shared_ptr<MetaStruct> listing = GetListing(output);
  std::string tool;
  ExtractString("Dispatcher", listing, tool);
  std::string head = "Usage: " + tool + " [disp options]";
  if (const auto path = GetList(*listing, "Path"); path != nullptr) {
    for (const std::shared_ptr<MetaObject>& word : path->GetObjects()) {
      head += " " + word->ToString();
    }
  }
  head += " <namespaces> <command>\n\nFor help please run " + tool + " --help\n\n";
  WriteUnpadded(out, head);
  const std::shared_ptr<MetaList> nodes = GetList(*listing, "NamespaceNodes");
  HandleList("Namespace", nodes, display, out);
  HandleList("Command", nodes, display, out);
}

bool CliDispatcherHelpFormatter::ExtractString(const std::string& field,
                                               std::shared_ptr<MetaStruct> structure,
                                               std::string& value) {
  const auto text = structure != nullptr && structure->HasField(field)
                        ? std::dynamic_pointer_cast<MetaString>(structure->GetField(field))
                        : nullptr;
  value = text == nullptr ? "<" + field + ">" : text->GetValue();
  return text != nullptr;
}

bool CliDispatcherHelpFormatter::HandleList(const std::string& typeName,
                                            std::shared_ptr<MetaList> nodes,
                                            DisplayContext& display, std::ostream& out) {
  WriteUnpadded(out, "Available " + typeName + "s: \n\n");
  if (nodes == nullptr) {
    WriteUnpadded(out, "ERROR, list is bad\n");
    return false;
  }
  const std::shared_ptr<MetaList> filtered = Filter(*nodes, typeName);
  if (filtered == nullptr) {
    WriteUnpadded(out, "Unable to get Descriptions for this command.  Implementation error.\n");
    return false;
  }
  const std::shared_ptr<CallSpec::Output> table = CallSpec::Output::New();
  table->SetRootObject(filtered);
  FormatParameters layout;
  layout.SetFormatter("table");
  layout.SetParameter("fields", "Name,Description");
  layout.SetParameter("table-header", "false");
  layout.SetParameter("wrap-last", "true");
  TableFormatter().Format(table, layout, display, out);
  WriteUnpadded(out, "\n");
  return true;
}

}  // namespace Kestrel::AutoCli
