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

/// The formatter "table": prints a list of structures, a row for each and a column for each chosen
/// field, under a header and a line of '-'. Texts stand to the left, integers to the right.
///
/// The columns are those of the first of these parameters that is present: "fields:<TypeName>",
/// "fields", "table-columns"; else all fields of the list's structure, in byte order. Names are
/// trimmed. "show-header" ("table-header" when that is absent or empty) and "header-line" switch
/// header and line off by the value "false". "wrap-last" = "true" fits the last column to the
/// width of the display. A byte takes one column of the screen.
class KESTREL_API TableFormatter : public Formatter {
 public:
  TableFormatter();
  ~TableFormatter() override;

  /// Writes the table of the root of `output` and leaves `out` in left alignment. A list without
  /// declared structure and elements prints nothing. A root that is no list of structures throws
  /// KestrelException before anything is written; a column that an element lacks becomes an error
  /// line on `out` in place of the table.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;
};

/// The value that `path` leads to: the field of that name or, in a path with '.', the field of the
/// last piece, where each piece before names a structure to step into. A piece that names nothing
/// is passed over, unless it is the last. Null when nothing is found.
KESTREL_API std::shared_ptr<MetaObj::MetaObject> GetSubField(
    std::shared_ptr<MetaObj::MetaStruct> record, const std::string& path);

}  // namespace Kestrel::AutoCli
