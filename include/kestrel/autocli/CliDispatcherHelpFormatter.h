// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"

namespace Kestrel::AutoCli {

/// The formatter "clihelp". Prints the contents of a namespace: a usage line, a table of namespaces
/// and a table of commands.
///
/// CliDispatcher uses it directly. No plug-in offers it, so users cannot choose it. The root
/// value of the output must be a structure of the type "VexilCommandPrint" with the fields
/// "Dispatcher" (string), "Path" (list of strings) and "NamespaceNodes" (list of structures with
/// the strings "Name", "Description" and "Type").
class KESTREL_API CliDispatcherHelpFormatter : public Formatter {
 public:
  CliDispatcherHelpFormatter();
  ~CliDispatcherHelpFormatter() override;

  /// Prints the tables to `out`, with descriptions wrapped to the width of `display`. Ignores
  /// `params`. Throws KestrelException, before anything is written, if the root is of another type.
  /// Without "Dispatcher", prints "<Dispatcher>"; without "Path", prints no path.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;

  /// Sets `value` to the string in `field` of `structure` and returns true. If there is no such
  /// field, its value is not a string, or `structure` is null, sets `value` to the name of the
  /// field in angle brackets and returns false.
  bool ExtractString(const std::string& field, std::shared_ptr<MetaObj::MetaStruct> structure,
                     std::string& value);

  /// Prints a heading and a table to `out`: name and description of each node whose "Type" is
  /// `typeName`, in the order of `nodes`. If `nodes` is null or has no structure type, prints an
  /// error message in place of the table and returns false.
  bool HandleList(const std::string& typeName, std::shared_ptr<MetaObj::MetaList> nodes,
                  DisplayContext& display, std::ostream& out);
};

}  // namespace Kestrel::AutoCli
