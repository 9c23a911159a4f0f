// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

/// Appends `value.ToString()` to `text`, in linear time. The depth of the stack does not depend on
/// the depth of the value.
void AppendText(const MetaObject& value, std::string& text);

}  // namespace Kestrel::MetaObj
