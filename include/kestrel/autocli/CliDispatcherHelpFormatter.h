// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"

namespace Kestrel::AutoCli {

/// Prints what lies below a namespace: a usage line, then a table of namespaces and one of
/// commands.
///
/// It is called "clihelp". The front end uses it itself; no plug-in offers it, so a user cannot
/// choose it. The root object must be a structure of the type "VexilCommandPrint" with the fields
/// "Dispatcher" (string), "Path" (list of strings) and "NamespaceNodes" (list of structures with
/// the strings "Name", "Description" and "Type").
class KESTREL_API CliDispatcherHelpFormatter : public Formatter {
 public:
  CliDispatcherHelpFormatter();
  ~CliDispatcherHelpFormatter() override;

  /// Prints the listing to `out`, descriptions wrapped to the width of `display`; asks no format
  /// parameter. Throws KestrelException when the root object is of another type, before anything is
  /// written. A missing field shows as its name in angle brackets, a missing path as none.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;

  /// Takes the text of a string field of `record`. Without such a field, or without a record,
  /// `value` becomes the field's name in angle brackets, and the result is false.
  bool ExtractString(const std::string& field, std::shared_ptr<MetaObj::MetaStruct> record,
                     std::string& value);

  /// Prints one table to `out`: the name and the description of every node whose "Type" is
  /// `typeName`, in the order of `nodes`. Says so on `out` and returns false when there is no list,
  /// or a list that is not one of structures.
  bool HandleList(const std::string& typeName, std::shared_ptr<MetaObj::MetaList> nodes,
                  DisplayContext& display, std::ostream& out);
};

}  // namespace Kestrel::AutoCli
