// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

/// Appends what `value.ToString()` gives to `text`: in linear time and on a flat stack, however
/// deep the value nests.
void AppendText(const MetaObject& value, std::string& text);

}  // namespace Kestrel::MetaObj
