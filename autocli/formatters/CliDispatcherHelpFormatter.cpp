// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CliDispatcherHelpFormatter.h"

#include <utility>

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

// Unlike operator<<, not affected by a width that somebody left on the stream.
void Write(const std::string& text, std::ostream& out) {
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

std::shared_ptr<MetaStruct> GetListing(const std::shared_ptr<CallSpec::Output>& output) {
  std::shared_ptr<MetaStruct> listing =
      output == nullptr ? nullptr : std::dynamic_pointer_cast<MetaStruct>(output->GetRootObject());
  if (listing == nullptr || listing->GetTypeName() != "VexilCommandPrint") {
    throw KestrelException(
        "Error: Unexpected type for help output, formatter expected a struct with help data");
  }
  return listing;
}

// The list in the field `name`, null when there is none.
std::shared_ptr<MetaList> GetList(const MetaStruct& record, const std::string& name) {
  return record.HasField(name) ? std::dynamic_pointer_cast<MetaList>(record.GetField(name))
                               : nullptr;
}

// A new list of those nodes whose "Type" reads `typeName`; null when `nodes` holds no structures.
std::shared_ptr<MetaList> Filter(const MetaList& nodes, const std::string& typeName) {
  if (nodes.GetListStructure() == nullptr) {
    return nullptr;
  }
  std::shared_ptr<MetaList> filtered =
      MetaList::New(MetaObj::MetaType::Struct, nodes.GetListStructure());
  for (const std::shared_ptr<MetaObject>& node : nodes.GetObjects()) {
    const auto record = std::static_pointer_cast<MetaStruct>(node);
    if (record->HasField("Type") && record->GetField("Type")->ToString() == typeName) {
      filtered->Add(record);
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
  Write(head, out);
  const std::shared_ptr<MetaList> nodes = GetList(*listing, "NamespaceNodes");
  HandleList("Namespace", nodes, display, out);
  HandleList("Command", nodes, display, out);
}

bool CliDispatcherHelpFormatter::ExtractString(const std::string& field,
                                               std::shared_ptr<MetaStruct> record,
                                               std::string& value) {
  const auto text = record != nullptr && record->HasField(field)
                        ? std::dynamic_pointer_cast<MetaString>(record->GetField(field))
                        : nullptr;
  value = text == nullptr ? "<" + field + ">" : text->GetValue();
  return text != nullptr;
}

bool CliDispatcherHelpFormatter::HandleList(const std::string& typeName,
                                            std::shared_ptr<MetaList> nodes,
                                            DisplayContext& display, std::ostream& out) {
  Write("Available " + typeName + "s: \n\n", out);
  if (nodes == nullptr) {
    Write("ERROR, list is bad\n", out);
    return false;
  }
  const std::shared_ptr<MetaList> filtered = Filter(*nodes, typeName);
  if (filtered == nullptr) {
    Write("Unable to get Descriptions for this command.  Implementation error.\n", out);
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
  Write("\n", out);
  return true;
}

}  // namespace Kestrel::AutoCli
