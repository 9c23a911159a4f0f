// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkAddressShape.h"

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/ValueList.h"

namespace Kestrel::Host {

const RecordShape& NetworkAddressShape() {
  static const RecordShape shape =
      RecordShape("NetworkAddress")
          .Text("Interface", "The interface that has the address.")
          .Number("Family", "The version of the Internet protocol: 4 or 6.")
          .Text("Address", "The address, without its prefix length.")
          .Number("Prefix Length", "How many leading bits belong to the network.")
          .Text("Peer", "The other end of a point-to-point link; empty for other links.")
          .Text("Broadcast", "The address that reaches every neighbor; empty for none.")
          .Text("Scope", "How far the address is valid: global, site, link or host.")
          .Text("Label", "The name that an IPv4 address was given.")
          .Number("Valid Seconds", "For how long it stays, in seconds; -1 without end.")
          .Number("Preferred Seconds",
                  "For how long it is used for new connections, in seconds; -1 without end.")
          .Texts("Flags", "What else is true of it, such as dynamic, tentative or temporary.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToRecord(const NetworkAddress& address,
                                              const std::map<long, std::string>& linkNames) {
  auto record = NetworkAddressShape().NewRecord();
  record->SetField("Interface", OutsideText(LinkName(linkNames, address.interfaceIndex)));
  record->SetField("Family", address.family);
  record->SetField("Address", address.address);
  record->SetField("Prefix Length", address.prefixLength);
  record->SetField("Peer", address.peer);
  record->SetField("Broadcast", address.broadcast);
  record->SetField("Scope", address.scope);
  record->SetField("Label", OutsideText(address.label));
  record->SetField("Valid Seconds", address.validSeconds);
  record->SetField("Preferred Seconds", address.preferredSeconds);
  record->SetField("Flags", address.flags);
  return record;
}

std::string PrefixText(const NetworkAddress& address) {
  return address.address + "/" + std::to_string(address.prefixLength);
}

}  // namespace Kestrel::Host
