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

/// The formatter "commandhelp": lays out the help page of one command, fitted to the width of the
/// display. It takes no parameters.
///
/// The page is a structure "VexilCommandHelp": the texts "Dispatcher", "Path" and "Description", a
/// "Param List" of structures with the texts "Name", "Short Name" and "Description" and the
/// booleans "Required" and "Secret", and an "Example List" of structures with the texts
/// "Description" and "Syntax". A text that is absent or of another kind reads as empty, a boolean
/// as false; list elements that are no structures are passed over.
class KESTREL_API CommandHelpFormatter : public Formatter {
 public:
  CommandHelpFormatter();
  ~CommandHelpFormatter() override;

  /// Writes the page. A root of another type throws KestrelException before anything is written.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;
};

/// The text of the field, or the empty text when it is absent or no string.
KESTREL_API std::string GetStringField(std::shared_ptr<MetaObj::MetaStruct> s,
                                       const std::string& name);

}  // namespace Kestrel::AutoCli
