// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "kestrel/autocli/OptionParser.h"

// What the tool does when it has rights that the user who started it does not have.

namespace Kestrel::Vexil {

/// Removes all variables from the environment except those of the language, the terminal and the
/// time zone whose values are short and plain, and sets PATH to the folders of the system. Also
/// sets the file mode creation mask so that only the owner may write the files that the tool
/// creates.
void CleanEnvironment();

/// Returns a message for each dispatcher option of `parser` that names files of the user.
std::vector<std::string> RefuseOptions(const AutoCli::OptionParser& parser);

}  // namespace Kestrel::Vexil
