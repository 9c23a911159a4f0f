// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <linux/rtnetlink.h>

#include <algorithm>
#include <limits>
#include <map>
#include <string>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkParameters.h"
#include "plugins/host/network/NetworkRoutes.h"

namespace Kestrel::Host {
namespace {

using LinkNameMap = std::map<long, std::string>;

const StructShape& NextHopShape() {
  static const StructShape shape =
      StructShape("NetworkNextHop")
          .String("Gateway", "The router that forwards the packets; empty for none.")
          .String("Interface", "The interface through which they are sent.")
          .Int("Weight", "The share of the traffic, relative to the other weights.");
  return shape;
}

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("NetworkRoute")
          .String("Destination", "The network that it leads to, or default.")
          .Int("Family", "The version of the Internet protocol: 4 or 6.")
          .Int("Prefix Length", "How many leading bits belong to the network.")
          .String("Gateway", "The gateway of the first next hop; may be empty.")
          .String("Interface", "The interface of the first next hop; may be empty.")
          .Structs("Next Hops", NextHopShape(), "All next hops.")
          .String("Protocol", "What created it: kernel, boot, static, dhcp, ra and others.")
          .String("Scope", "How far the destination is: global, link, host and others.")
          .String("Type", "What happens to its packets: unicast, local, blackhole and others.")
          .String("Source", "The preferred local address; empty for none.")
          .Int("Metric", "The kernel prefers the route with the lowest metric.")
          .Int("Table", "The number of its routing table; 254 is the main table.");
  return shape;
}

std::string DestinationText(const NetworkRoute& route) {
  return route.destination == "default"
             ? route.destination
             : route.destination + "/" + std::to_string(route.prefixLength);
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const NextHop& nextHop, const LinkNameMap& links) {
  auto result = NextHopShape().NewStruct();
  result->SetField("Gateway", nextHop.gateway);
  result->SetField("Interface", SanitizedText(LinkName(links, nextHop.interfaceIndex)));
  result->SetField("Weight", nextHop.weight);
  return result;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const NetworkRoute& route, const LinkNameMap& links) {
  const NextHop first = route.nextHops.empty() ? NextHop() : route.nextHops.front();
  const auto nextHops = NextHopShape().NewList();
  for (const NextHop& nextHop : route.nextHops) {
    nextHops->Add(ToStruct(nextHop, links));
  }
  auto result = Shape().NewStruct();
  result->SetField("Destination", DestinationText(route));
  result->SetField("Family", route.family);
  result->SetField("Prefix Length", route.prefixLength);
  result->SetField("Gateway", first.gateway);
  result->SetField("Interface", SanitizedText(LinkName(links, first.interfaceIndex)));
  result->SetField("Next Hops", nextHops);
  result->SetField("Protocol", route.protocol);
  result->SetField("Scope", route.scope);
  result->SetField("Type", route.type);
  result->SetField("Source", route.source);
  result->SetField("Metric", route.metric);
  result->SetField("Table", route.table);
  return result;
}

bool LeavesThrough(const NetworkRoute& route, const StringFilter& interfaces,
                   const LinkNameMap& links) {
  return !interfaces.IsGiven() ||
         std::any_of(route.nextHops.begin(), route.nextHops.end(), [&](const NextHop& nextHop) {
           return interfaces.Accepts(LinkName(links, nextHop.interfaceIndex));
         });
}

class NetworkRouteList final : public ListCommand {
 public:
  NetworkRouteList()
      : ListCommand("List the routes by which packets are sent.", Shape,
                    "The routes, in the kernel's order.") {
    ShowColumns("Destination,Gateway,Interface,Protocol,Metric,Source");
    AddExample("", "List the routes of the main table");
    AddExample("--family 6 --interface eth0", "List the IPv6 routes through one interface");
    AddExample("--table 255 --table 254", "List the routes of two tables by number");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddFamilyParameter(spec);
    AddInterfaceParameter(spec);
    Parameter("table", CallSpec::IntList,
              "List the routes of the table with this number; the default is 254 (main); %ENUM%.")
        .Short("t")
        .Between(1, std::numeric_limits<std::uint32_t>::max())
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "List the routes of all tables.").Short("a").AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const IntFilter families(input, "family");
    const StringFilter interfaces(input, "interface");
    const IntFilter tables(input, "table");
    const bool isEveryTableListed = input.IsFlagSet("all");
    const LinkNameMap links = LinkNames(ReadLinks());
    for (const NetworkRoute& route : ReadRoutes()) {
      const bool isTableChosen =
          tables.IsGiven() ? tables.Accepts(route.table) : route.table == RT_TABLE_MAIN;
      if ((isEveryTableListed || isTableChosen) && families.Accepts(route.family) &&
          LeavesThrough(route, interfaces, links)) {
        rows.Add(ToStruct(route, links));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkRouteList() {
  return std::make_shared<NetworkRouteList>();
}

}  // namespace Kestrel::Host
