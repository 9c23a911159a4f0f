// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::AutoCli {

/// The formatter "simple": prints any value as indented text, three blanks a level. A structure is
/// a header line and a line per field, a list its elements, each behind an empty line.
///
/// The parameters "fields:<TypeName>" or "fields" choose a structure's fields, whose names are not
/// trimmed; "header:<TypeName>" sets its header, in which the last "%<Field>%" becomes the text of
/// that field, and "<NONE>" leaves it out; "align-fields" = "true" pads the names to one length.
///
/// Nothing is thrown for a bad value: a text in its place tells what is wrong. Values may nest as
/// deep as memory allows.
class KESTREL_API SimpleFormatter : public Formatter {
 public:
  SimpleFormatter();
  ~SimpleFormatter() override;

  /// Prints the root of `output`: a list at level -1, all else at level 0; a null root is nothing.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;

  /// Prints any value; null prints nothing.
  void Format(std::shared_ptr<MetaObj::MetaObject> value, FormatParameters& params,
              std::ostream& out, int level);

  /// Prints a structure. A field that it lacks ends it with an error line.
  void FormatStruct(std::shared_ptr<MetaObj::MetaStruct> record, FormatParameters& params,
                    std::ostream& out, int level);

  /// Prints a list: scalars on the line that was begun, structures one level deeper.
  void FormatList(std::shared_ptr<MetaObj::MetaList> list, FormatParameters& params,
                  std::ostream& out, int level);
};

/// Three blanks per level; nothing for a level below 1.
KESTREL_API std::string GetIndent(int level);

}  // namespace Kestrel::AutoCli
