// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Vexil {

/// Returns the result that the command named by the arguments declares. Null if they do not name a
/// command, or if command lines are read from a file or standard input.
std::shared_ptr<MetaObj::MetaObject> FindDeclaredResult(const AutoCli::Dispatcher& dispatcher,
                                                        int argc, const char* const* argv);

}  // namespace Kestrel::Vexil
