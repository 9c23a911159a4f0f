// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// Returns the system's text for `error`, an errno value; at most 255 bytes, a longer text is cut.
/// A number that the system does not know has a text too: "Unknown error 12345".
std::string SystemErrorText(int error);

}  // namespace Kestrel::AutoCli
