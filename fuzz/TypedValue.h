// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FuzzInput.h"
#include "Printed.h"
#include "kestrel/autocli/FormatParameters.h"

namespace Kestrel::Fuzz {

/// Takes format parameters "key=value", one per line, up to an empty line.
AutoCli::FormatParameters TakeParameters(FuzzInput& input);

/// Takes a value, each part on a line of its own:
///
///   i NUMBER    b or B (false or true)    s TEXT
///   { TYPE      a structure; its fields follow: for each, a line with the name, then a value
///   [ KIND      a list of i, b, s or {; its elements follow
///   }           ends the structure or list, as an empty line in it does
///
/// Any other line is a string, like a line of s. Returns null if the first line is empty or begins
/// with }.
Value TakeValue(FuzzInput& input);

}  // namespace Kestrel::Fuzz
