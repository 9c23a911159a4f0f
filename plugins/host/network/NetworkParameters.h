// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/InputSpec.h>

namespace Kestrel::Host {

/// Declares "family": 4 or 6.
void AddFamilyParameter(CallSpec::InputSpec& spec);

/// Declares "interface", a list of names of interfaces.
void AddInterfaceParameter(CallSpec::InputSpec& spec);

/// The regular expression for the name of an interface.
extern const char* const kInterfaceName;

}  // namespace Kestrel::Host
