// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/InputSpec.h>

namespace Kestrel::Host {

/// Adds "family": 4 or 6.
void AddFamilyParameter(CallSpec::InputSpec& spec);

/// Adds "interface": the names of interfaces, one for each time that it is given.
void AddInterfaceParameter(CallSpec::InputSpec& spec);

/// What the name of an interface may be.
extern const char* const kInterfaceName;

}  // namespace Kestrel::Host
