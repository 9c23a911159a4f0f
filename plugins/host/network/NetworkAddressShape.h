// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaStruct.h>

#include <map>
#include <memory>
#include <string>

#include "plugins/host/frame/RecordShape.h"
#include "plugins/host/network/NetworkLinks.h"

namespace Kestrel::Host {

/// The declared fields of a "NetworkAddress".
const RecordShape& NetworkAddressShape();

/// An address as such a record; `linkNames` are the names of the interfaces by index.
std::shared_ptr<MetaObj::MetaStruct> ToRecord(const NetworkAddress& address,
                                              const std::map<long, std::string>& linkNames);

/// The address with its prefix length, as in "127.0.0.1/8".
std::string PrefixText(const NetworkAddress& address);

}  // namespace Kestrel::Host
