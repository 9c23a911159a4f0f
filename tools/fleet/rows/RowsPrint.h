// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/autocli/Command.h>

#include <istream>
#include <memory>

namespace Kestrel::Fleet {

/// Makes the command that returns the rows in `stream`, in the form that RowReader describes. The
/// stream must live as long as the command, and is read when the command is called or described.
std::shared_ptr<AutoCli::Command> NewRowsPrint(std::istream& stream);

}  // namespace Kestrel::Fleet
