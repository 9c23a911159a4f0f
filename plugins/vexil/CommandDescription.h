// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaStruct.h>

#include <memory>

#include "plugins/host/frame/StructShape.h"
#include "tools/catalog/Catalog.h"
#include "tools/catalog/PluginOrigins.h"

namespace Kestrel::Vexil {

/// The shape of a command's description as the result of a command.
const Host::StructShape& DescriptionShape();

/// What a command declares, as a structure of that shape. `plugin` is null if it is not known. A
/// string that is not declared is the word "none", because strings of a result are not left empty.
std::shared_ptr<MetaObj::MetaStruct> MakeDescription(const Catalog::Command& command,
                                                     const Catalog::Plugin* plugin);

}  // namespace Kestrel::Vexil
