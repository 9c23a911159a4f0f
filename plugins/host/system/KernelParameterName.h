// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/InputSpec.h>

namespace Kestrel::Host {

/// Matches names: non-empty parts separated by "." or "/".
constexpr const char* kParameterNamePattern = "[^./]+([./][^./]+)*";

/// Declares "name", the required name of a kernel parameter.
void AddParameterName(CallSpec::InputSpec& spec);

}  // namespace Kestrel::Host
