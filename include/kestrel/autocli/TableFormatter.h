// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

/// The formatter "table". Prints a list of structures as a table with one row per structure and one
/// column per field, below a header and a line of '-'. Integers are aligned right, everything else
/// left.
///
/// The first of these parameters that is present lists the columns: "fields:<TypeName>", "fields",
/// "table-columns". Without any, there is a column for each field of the list's structure type, in
/// byte order of the names. Names are trimmed. Three parameters switch parts of the layout:
/// - "show-header" (or "table-header", if "show-header" is absent or empty) = "false" omits the
///   header and the line.
/// - "header-line" = "false" omits the line.
/// - "wrap-last" = "true" wraps the last column to the width of the display.
///
/// "printf:<TypeName>.<Field>" and "units:<TypeName>.<Field>" are described at AutoCli_FormatField;
/// they do not apply to a wrapped column. A byte takes one column of the display.
class KESTREL_API TableFormatter : public Formatter {
 public:
  TableFormatter();
  ~TableFormatter() override;

  /// Writes the root of `output` as a table and leaves `out` set to left alignment. Writes nothing
  /// for an empty list without a declared structure type. Throws KestrelException, before anything
  /// is written, if the root is not a list of structures. If a row lacks a column, writes a line
  /// with an error message in place of the table.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;
};

/// Returns the value of the field `path`, null if there is none. Names separated by '.' lead
/// through nested structures. A name that is not found is skipped, unless it is the last one.
KESTREL_API std::shared_ptr<MetaObj::MetaObject> GetSubField(
    std::shared_ptr<MetaObj::MetaStruct> structure, const std::string& path);

}  // namespace Kestrel::AutoCli
