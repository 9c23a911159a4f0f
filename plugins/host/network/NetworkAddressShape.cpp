// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkAddressShape.h"

#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/network/NetworkParameters.h"

namespace Kestrel::Host {

const StructShape& NetworkAddressShape() {
  static const StructShape shape =
      StructShape("NetworkAddress")
          .String("Interface", "The interface that has the address.")
          .Int("Family", "The version of the Internet protocol: 4 or 6.")
          .String("Address", "The address, without its prefix length.")
          .Int("Prefix Length", "How many leading bits belong to the network.")
          .String("CIDR", "The address with its prefix length, as in 192.0.2.5/24.")
          .String("Peer", "The other end of a point-to-point link; none for other links.")
          .String("Broadcast", "The broadcast address, or none.")
          .String("Scope", "How far the address is valid: global, site, link, host and others.")
          .String("Label", "The label of an IPv4 address, or none.")
          .Int("Valid Seconds", "The time until it expires, in seconds; -1 if it never does.")
          .Int("Preferred Seconds",
               "The time for which new connections use it, in seconds; -1 if there is no limit.")
          .Strings("Flags", "Its flags, such as dynamic, tentative or temporary.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const NetworkAddress& address,
                                              const std::map<long, std::string>& linkNames,
                                              const NumberTable& scopes) {
  auto result = NetworkAddressShape().NewStruct();
  result->SetField("Interface", SanitizedText(LinkName(linkNames, address.interfaceIndex)));
  result->SetField("Family", address.family);
  result->SetField("Address", address.address);
  result->SetField("Prefix Length", address.prefixLength);
  result->SetField("CIDR", FormatPrefix(address));
  result->SetField("Peer", TextOrNone(address.peer));
  result->SetField("Broadcast", TextOrNone(address.broadcast));
  result->SetField("Scope", SanitizedText(scopes.NameOf(address.scope)));
  result->SetField("Label", SanitizedText(TextOrNone(address.label)));
  result->SetField("Valid Seconds", address.validSeconds);
  result->SetField("Preferred Seconds", address.preferredSeconds);
  result->SetField("Flags", address.flags);
  return result;
}

std::string FormatPrefix(const NetworkAddress& address) {
  return address.address + "/" + std::to_string(address.prefixLength);
}

}  // namespace Kestrel::Host
