// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/callspec/InputSpec.h>

#include <string>

namespace Kestrel::Host {

/// Declares "family": 4 or 6.
void AddFamilyParameter(CallSpec::InputSpec& spec);

/// Declares "interface", a list of names and patterns of interfaces.
void AddInterfaceParameter(CallSpec::InputSpec& spec);

/// The value of the meta-data "complete:interface": a command that lists the interfaces, and the
/// field that contains their names.
extern const char* const kInterfaceCompletion;

/// Returns `text`, or "none" if it is empty.
std::string TextOrNone(std::string text);

}  // namespace Kestrel::Host
