// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace Kestrel::AutoCli {

/// Returns the system's message for `error`, an errno value, cut to 255 bytes. The system has a
/// message even for numbers that it does not know: "Unknown error 12345".
std::string SystemErrorText(int error);

}  // namespace Kestrel::AutoCli
