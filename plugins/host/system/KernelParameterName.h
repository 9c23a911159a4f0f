// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/InputSpec.h>

namespace Kestrel::Host {

/// The form of a parameter's name: parts with '.' or '/' between them, none of them empty.
constexpr const char* kParameterNamePattern = "[^./]+([./][^./]+)*";

/// Declares "name", the required name of one parameter of the kernel.
void AddParameterName(CallSpec::InputSpec& spec);

}  // namespace Kestrel::Host
