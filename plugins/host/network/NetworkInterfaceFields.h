// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaStruct.h>

#include "plugins/host/frame/StructShape.h"
#include "plugins/host/network/NetworkLinks.h"

namespace Kestrel::Host {

/// Whether the administrator has switched the interface on.
bool IsSwitchedOn(const NetworkLink& link);

/// Declares the fields that a row of the list of interfaces and the details of one interface share,
/// from "Index" to "MAC Address".
void DeclareInterfaceFields(StructShape& shape);
/// Sets these fields.
void SetInterfaceFields(const NetworkLink& link, MetaObj::MetaStruct& result);

}  // namespace Kestrel::Host
