// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaStruct.h>

#include <map>
#include <memory>
#include <string>

#include "plugins/host/frame/StructShape.h"
#include "plugins/host/network/NetworkLinks.h"

namespace Kestrel::Host {

/// The declared fields of a "NetworkAddress".
const StructShape& NetworkAddressShape();

/// An address as such a record; `linkNames` are the names of the interfaces by index.
std::shared_ptr<MetaObj::MetaStruct> ToStruct(const NetworkAddress& address,
                                              const std::map<long, std::string>& linkNames);

/// The address with its prefix length, as in "127.0.0.1/8".
std::string FormatPrefix(const NetworkAddress& address);

}  // namespace Kestrel::Host
