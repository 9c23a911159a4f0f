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

/// The formatter "simple". Prints any value as text, indented by three spaces per level. A
/// structure becomes a header line and one line per field. In a list of structures, each element
/// follows an empty line; the elements of other lists are on one line, separated by commas.
///
/// Parameters:
/// - "fields:<TypeName>" or "fields" lists the fields to print. Names are not trimmed.
/// - "header:<TypeName>" is the header of a structure; "<NONE>" omits it. If the header contains
///   placeholders "%<Field>%", the last one and its repetitions are replaced by the text of that
///   field; other placeholders stay.
/// - "align-fields" = "true" pads all field names to the same length.
/// - "printf:<TypeName>.<Field>" and "units:<TypeName>.<Field>" are described at
///   AutoCli_FormatField.
///
/// For a value that cannot be printed, the output contains an error message in its place. Nesting
/// is limited by memory only.
class KESTREL_API SimpleFormatter : public Formatter {
 public:
  SimpleFormatter();
  ~SimpleFormatter() override;

  /// Prints the root of `output`: a list at level -1, and anything else at level 0. Prints nothing
  /// for a null root.
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;

  /// Prints any value at `level`, which sets the indentation. Prints nothing for null.
  void Format(std::shared_ptr<MetaObj::MetaObject> value, FormatParameters& params,
              std::ostream& out, int level);

  /// Prints a structure. If a chosen field is missing, the output contains an error message in
  /// place of that field and those after it. This also applies to nested structures. Prints an
  /// error message for null.
  void FormatStruct(std::shared_ptr<MetaObj::MetaStruct> structure, FormatParameters& params,
                    std::ostream& out, int level);

  /// Prints a list: structures one level deeper, other elements on the current line. Prints an
  /// error message for null.
  void FormatList(std::shared_ptr<MetaObj::MetaList> list, FormatParameters& params,
                  std::ostream& out, int level);
};

/// Returns three spaces per level, nothing for a level below 1.
KESTREL_API std::string GetIndent(int level);

}  // namespace Kestrel::AutoCli
