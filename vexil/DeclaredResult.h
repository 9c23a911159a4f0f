// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "kestrel/autocli/Dispatcher.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Vexil {

/// What the command that the arguments name declares as its result. Null if they name no command,
/// or if command lines are read from elsewhere.
std::shared_ptr<MetaObj::MetaObject> FindDeclaredResult(const AutoCli::Dispatcher& dispatcher,
                                                        int argc, const char* const* argv);

}  // namespace Kestrel::Vexil
