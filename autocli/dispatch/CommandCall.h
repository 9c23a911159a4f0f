// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/autocli/Command.h"
#include "kestrel/autocli/CommandInput.h"
#include "kestrel/autocli/CommandOutput.h"

namespace Kestrel::AutoCli {

/// Passes the declaration of `command` to `input`, validates `input`, and runs the command if the
/// validation adds no error message to `output`.
///
/// Returns whether `output` has no error message afterwards.
/// Throws KestrelException when the command's declaration is broken, and `std::runtime_error` when
/// a regular expression in it does not compile.
bool CallCommand(Command& command, const std::shared_ptr<CommandInput>& input,
                 const std::shared_ptr<CommandOutput>& output);

}  // namespace Kestrel::AutoCli
