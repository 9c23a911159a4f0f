// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaStruct.h>

#include <map>
#include <memory>
#include <string>

#include "plugins/host/frame/StructShape.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/RoutingNames.h"

namespace Kestrel::Host {

/// Returns the shape of a "NetworkAddress".
const StructShape& NetworkAddressShape();

/// Converts an address to such a structure. `linkNames` maps indexes to names of interfaces.
std::shared_ptr<MetaObj::MetaStruct> ToStruct(const NetworkAddress& address,
                                              const std::map<long, std::string>& linkNames,
                                              const NumberTable& scopes);

/// Formats the address with its prefix length, as in "127.0.0.1/8".
std::string FormatPrefix(const NetworkAddress& address);

}  // namespace Kestrel::Host
