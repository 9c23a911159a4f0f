// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaStruct.h>

#include "plugins/host/frame/StructShape.h"
#include "plugins/host/network/NetworkLinks.h"

namespace Kestrel::Host {

/// Returns whether the administrator has enabled the interface.
bool IsEnabled(const NetworkLink& link);

/// Declares the fields that the list of interfaces and the details of one interface share: "Index"
/// to "MAC Address".
void DeclareInterfaceFields(StructShape& shape);
/// Sets the values of these fields.
void SetInterfaceFields(const NetworkLink& link, MetaObj::MetaStruct& result);

}  // namespace Kestrel::Host
