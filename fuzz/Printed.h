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

/// Returns what a formatter prints for a result on a screen `width` columns wide. Throws what the
/// formatter throws.
std::string Print(AutoCli::Formatter& formatter, const Value& value,
                  AutoCli::FormatParameters params = {}, int width = 0);

/// Prints a value as json and requires that the text is valid and contains the same value.
/// Skips a value whose field names would need escapes, because the formatter does not escape them.
void RequireJsonReadsBack(const Value& value);

/// Prints a value as xml and requires that the library reads the same value back.
/// Skips a value that a value document cannot contain unchanged, such as a list of lists.
void RequireXmlReadsBack(const Value& value);

}  // namespace Kestrel::Fuzz
