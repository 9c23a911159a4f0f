// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

#include "kestrel/metaobj/MetaObject.h"
#include "vexil/formats/Palette.h"

namespace Kestrel::Formats {

/// Whether a value needs lines of its own: a structure, or a list of structures. Throws ValueFault
/// if a value is not of the class of its kind, as the operations below do.
bool IsNested(const MetaObj::MetaObject& value);

/// Returns the text of a value that is in the field `name` and is not nested. The elements of a
/// list are separated by commas. `isHuman` adds units to sizes. The text is valid until `storage`
/// or the value changes.
std::string_view CellText(const MetaObj::MetaObject& value, const std::string& name, bool isHuman,
                          std::string& storage);

/// Returns how that text is printed. This depends on the kind of the value and, if the field is for
/// a state and the text is a known word for one, on how bad that state is.
Style CellStyle(const MetaObj::MetaObject& value, const std::string& name);

/// Returns any value on one line, for nesting that is too deep for trees: {A: 1, B: [x, y]}.
std::string ShortText(const MetaObj::MetaObject& value);

}  // namespace Kestrel::Formats
