// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Testing {

/// Returns "<length>:<bytes>,".
std::string Netstring(const std::string& text);

/// Encodes a value, which may be null, for values.py:
///
///   n                        nothing
///   b0 b1                    a boolean
///   i<digits>,               an integer
///   s<netstring>             a string
///   x<kind>,<netstring>      a value whose class does not match its kind, and its text
///   r<netstring><count>,     a structure: its type name, then the name and value of each field
///   l<kind>,<count>,         a list of scalars: its elements
///   t<shape><count>,         a list of structures: its shape, then its elements. The shape is n or
///                            the declared structure as in r, but without the values of its fields
std::string EncodeValue(const MetaObj::MetaObject* value);

}  // namespace Kestrel::Testing
