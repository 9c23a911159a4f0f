// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Fuzz {

using Value = std::shared_ptr<MetaObj::MetaObject>;

/// What a formatter prints of a result, `width` columns wide. Throws what the formatter throws.
std::string Print(AutoCli::Formatter& formatter, const Value& value,
                  AutoCli::FormatParameters params = {}, int width = 0);

/// Prints a value as json and reads the text by the grammar of that format: it must hold the value.
/// Field names are not escaped, so a value with one that would have to be is left out.
void RequireJsonReadsBack(const Value& value);

/// Prints a value as xml and has the library read it: it must be the same value. One with a text
/// that no document can hold is left out.
void RequireXmlReadsBack(const Value& value);

}  // namespace Kestrel::Fuzz
