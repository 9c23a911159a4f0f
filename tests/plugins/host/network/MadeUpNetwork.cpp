// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/network/MadeUpNetwork.h"

#include "support/Witness.h"

namespace Kestrel::Testing {

void Configure(const std::string& commands) { Witness("set -e; " + commands); }

void MakeNetwork() {
  Configure(
      "ip link set lo up;"
      "ip link add inside address 02:00:00:00:00:01 type veth peer name outside"
      "  address 02:00:00:00:00:02;"
      "ip link add bridge0 address 02:00:00:00:00:03 type bridge;"
      "ip link set outside master bridge0 mtu 1400 alias 'to the lab';"
      "ip link set inside txqueuelen 77 promisc on;"
      "for name in inside outside bridge0; do ip link set $name addrgenmode none; done;"
      "ip link set inside up; ip link set outside up; ip link set bridge0 up");
}

void MakeAddresses() {
  Configure(
      "ip address add 192.0.2.5/24 brd + label inside:one dev inside;"
      "ip address add 192.0.2.6/24 dev inside;"
      "ip address add 198.51.100.1 peer 198.51.100.2/32 dev bridge0;"
      "ip address add 203.0.113.1/25 dev bridge0 scope site valid_lft 5000 preferred_lft 4000;"
      "ip address add 2001:db8::5/64 dev inside nodad noprefixroute;"
      "ip address add 2001:db8:1::6/112 dev bridge0 nodad preferred_lft 0");
}

void MakeRoutes() {
  Configure(
      "ip route add default via 192.0.2.1 dev inside metric 50 src 192.0.2.6;"
      "ip route add 10.1.0.0/16 proto static scope link dev inside;"
      "ip route add 10.2.0.0/16 nexthop via 192.0.2.2 dev inside weight 3"
      "  nexthop via 203.0.113.9 dev bridge0;"
      "ip route add 10.3.0.7/32 via 192.0.2.1 table 1000 proto dhcp;"
      "ip route add 10.5.0.0/16 via inet6 2001:db8:1::9 dev bridge0;"
      "ip route add blackhole 10.4.0.0/16;"
      "ip route add unreachable 10.6.0.0/16 metric 9;"
      "ip route add prohibit 10.7.0.0/16;"
      "ip route add throw 10.8.0.0/16;"
      "ip -6 route add default via 2001:db8:1::1 dev bridge0 metric 20;"
      "ip -6 route add 2001:db8:9::/48 dev inside proto 200;"
      "ip -6 route add 2001:db8:8::/48 nexthop via 2001:db8:1::7 dev bridge0 weight 2"
      "  nexthop via 2001:db8:1::8 dev bridge0;"
      "ip -6 route add unreachable 2001:db8:7::/48");
}

void MakeNeighbors() {
  Configure(
      "ip neighbor add 192.0.2.77 lladdr 02:00:00:00:00:77 dev inside nud permanent;"
      "ip neighbor add 192.0.2.78 lladdr 02:00:00:00:00:78 dev inside nud noarp;"
      "ip neighbor add 192.0.2.79 lladdr 02:00:00:00:00:79 dev inside nud stale;"
      "ip neighbor add 2001:db8::77 lladdr 02:00:00:00:01:77 dev inside nud permanent router");
}

}  // namespace Kestrel::Testing
