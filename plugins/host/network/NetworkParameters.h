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

/// The meta-data "complete:interface": the command and field that list the values.
extern const char* const kInterfaceCompletion;

/// Returns `text`, or "none" if it is empty.
std::string TextOrNone(std::string text);

}  // namespace Kestrel::Host
