// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/formats/DisplayText.h"
#include "vexil/formats/Palette.h"
#include "vexil/formats/Selection.h"

namespace Kestrel::Formats {

/// Lines, one below the other.
using Block = std::vector<DisplayLine>;

/// The space for a block.
struct Room {
  std::size_t width = kUnlimitedWidth;  ///< in columns, at least 1
  unsigned depth = 0;                   ///< how many values contain the block
  bool hasTables = true;                ///< false inside the cell of a table
};

/// Prints values as indented trees for people. No line is wider than its room.
///
/// A field is a line with its name and its value. A structure, or a list of structures, follows the
/// line with its name, indented. A list of structures is a table if there is room for all columns,
/// unless it is in the cell of a table. The operations on values throw ValueFault if a value is not
/// of the class of its kind.
class PrettyPrinter {
 public:
  PrettyPrinter(const Palette& palette, bool isHuman) : palette_(palette), isHuman_(isHuman) {}

  /// Returns the lines of `value`, which is in the field `name`. `choice` selects what is printed
  /// of a structure; null means all of it.
  Block Print(const MetaObj::MetaObject& value, const std::string& name, const FieldChoice* choice,
              const Room& room) const;

  /// Returns the fields of a structure.
  Block PrintTree(const MetaObj::MetaStruct& structure, const FieldChoice* choice,
                  const Room& room) const;

  /// Returns lines with that text.
  Block PrintText(std::string_view text, Style style, std::size_t width) const;

  /// Returns the columns that a value takes: on one line or, if it is nested, in its widest line.
  TextWidth Measure(const MetaObj::MetaObject& value, const std::string& name,
                    const Room& room) const;

 private:
  Block PrintList(const MetaObj::MetaList& list, const Room& room) const;
  Block PrintElements(const MetaObj::MetaList& list, const Room& room) const;

  Palette palette_;
  bool isHuman_;
};

/// Appends `added` to `line`, after as many spaces as are needed for it to begin in `column`.
void AppendAt(std::size_t column, const DisplayLine& added, DisplayLine& line);

}  // namespace Kestrel::Formats
