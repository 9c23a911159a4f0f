// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/NetworkInterfaceFields.h"

#include <net/if.h>

#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/network/NetworkParameters.h"

namespace Kestrel::Host {

bool IsEnabled(const NetworkLink& link) { return (link.flags & IFF_UP) != 0; }

void DeclareInterfaceFields(StructShape& shape) {
  shape.Int("Index", "The index of the interface.")
      .String("State", "Whether it can transmit packets: UP, DOWN, UNKNOWN and others.")
      .Bool("Up", "Whether the administrator has enabled it.")
      .String("Type", "The type of its link: ether, loopback and others.")
      .String("Kind",
              "The kind of a virtual interface: veth, bridge and others; none for hardware.")
      .Int("MTU", "The size of its largest packet, in bytes.")
      .String("MAC Address", "Its link-layer address, or none.");
}

void SetInterfaceFields(const NetworkLink& link, MetaObj::MetaStruct& result) {
  result.SetField("Index", link.index);
  result.SetField("State", link.state);
  result.SetField("Up", IsEnabled(link));
  result.SetField("Type", link.type);
  result.SetField("Kind", SanitizedText(TextOrNone(link.kind)));
  result.SetField("MTU", link.mtu);
  result.SetField("MAC Address", TextOrNone(link.address));
}

}  // namespace Kestrel::Host
