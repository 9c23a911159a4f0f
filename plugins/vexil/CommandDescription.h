// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaStruct.h>

#include <memory>

#include "plugins/host/frame/StructShape.h"
#include "tools/catalog/Catalog.h"
#include "tools/catalog/PluginOrigins.h"

namespace Kestrel::Vexil {

/// Returns the shape of a command's description, the result of `vexil command describe`.
const Host::StructShape& DescriptionShape();

/// Returns what a command declares, as a structure of that shape. `plugin` is null if it is not
/// known. An optional string that is empty or not declared becomes the word "none".
std::shared_ptr<MetaObj::MetaStruct> MakeDescription(const Catalog::Command& command,
                                                     const Catalog::Plugin* plugin);

}  // namespace Kestrel::Vexil
