// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

/// The formatter "commandhelp". Prints the help page of one command, fitted to the width of the
/// display. It has no parameters.
///
/// The root value of the output must be a structure of the type "VexilCommandHelp" with these
/// fields:
/// - the strings "Dispatcher", "Path" and "Description";
/// - "Param List", a list of structures with the strings "Name", "Short Name" and "Description" and
///   the booleans "Required" and "Secret";
/// - "Example List", a list of structures with the strings "Description" and "Syntax".
///
/// A string field that is absent or of another kind counts as empty; a boolean field that is absent
/// or of another kind counts as false. Elements that are not structures are skipped.
class KESTREL_API CommandHelpFormatter : public Formatter {
 public:
  CommandHelpFormatter();
  ~CommandHelpFormatter() override;

  /// Writes the page. If it lists parameters, `out` has no alignment flag set afterwards. Throws
  /// KestrelException, before anything is written, if the root is not a structure of that type.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;
};

/// Returns the string in the field `name` of `s`. Empty if the field is absent or not a string, or
/// if `s` is null.
KESTREL_API std::string GetStringField(std::shared_ptr<MetaObj::MetaStruct> s,
                                       const std::string& name);

}  // namespace Kestrel::AutoCli
