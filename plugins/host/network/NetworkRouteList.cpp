// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <linux/rtnetlink.h>

#include <algorithm>
#include <limits>
#include <map>
#include <string>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkParameters.h"
#include "plugins/host/network/NetworkRoutes.h"

namespace Kestrel::Host {
namespace {

using LinkNameMap = std::map<long, std::string>;

const RecordShape& NextHopShape() {
  static const RecordShape shape =
      RecordShape("NetworkNextHop")
          .Text("Gateway", "The neighbor that passes the packets on; empty for none.")
          .Text("Interface", "The interface that they leave through.")
          .Number("Weight", "How much of the traffic takes this way, against the other weights.");
  return shape;
}

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("NetworkRoute")
          .Text("Destination", "The network that it leads to, or default for everything else.")
          .Number("Family", "The version of the Internet protocol: 4 or 6.")
          .Number("Prefix Length", "How many leading bits belong to the network.")
          .Text("Gateway", "The neighbor that passes packets on, of the first way; may be empty.")
          .Text("Interface", "The interface of the first way; may be empty.")
          .Records("Next Hops", NextHopShape(), "Every way that its packets may take.")
          .Text("Protocol", "Who made it: kernel, boot, static, dhcp, ra and others.")
          .Text("Scope", "How far the destination is: global, link, host and others.")
          .Text("Type", "What happens to packets: unicast, local, blackhole and others.")
          .Text("Source", "The local address that it prefers; empty for none.")
          .Number("Metric", "Of several routes the one with the least metric is taken.")
          .Number("Table", "The routing table that it stands in; 254 is the main one.");
  return shape;
}

std::string DestinationText(const NetworkRoute& route) {
  return route.destination == "default"
             ? route.destination
             : route.destination + "/" + std::to_string(route.prefixLength);
}

std::shared_ptr<MetaObj::MetaStruct> ToRecord(const NextHop& nextHop, const LinkNameMap& links) {
  auto record = NextHopShape().NewRecord();
  record->SetField("Gateway", nextHop.gateway);
  record->SetField("Interface", OutsideText(LinkName(links, nextHop.interfaceIndex)));
  record->SetField("Weight", nextHop.weight);
  return record;
}

std::shared_ptr<MetaObj::MetaStruct> ToRecord(const NetworkRoute& route, const LinkNameMap& links) {
  const NextHop first = route.nextHops.empty() ? NextHop() : route.nextHops.front();
  const auto nextHops = NextHopShape().NewList();
  for (const NextHop& nextHop : route.nextHops) {
    nextHops->Add(ToRecord(nextHop, links));
  }
  auto record = Shape().NewRecord();
  record->SetField("Destination", DestinationText(route));
  record->SetField("Family", route.family);
  record->SetField("Prefix Length", route.prefixLength);
  record->SetField("Gateway", first.gateway);
  record->SetField("Interface", OutsideText(LinkName(links, first.interfaceIndex)));
  record->SetField("Next Hops", nextHops);
  record->SetField("Protocol", route.protocol);
  record->SetField("Scope", route.scope);
  record->SetField("Type", route.type);
  record->SetField("Source", route.source);
  record->SetField("Metric", route.metric);
  record->SetField("Table", route.table);
  return record;
}

bool LeavesThrough(const NetworkRoute& route, const TextFilter& interfaces,
                   const LinkNameMap& links) {
  return !interfaces.IsGiven() ||
         std::any_of(route.nextHops.begin(), route.nextHops.end(), [&](const NextHop& nextHop) {
           return interfaces.Accepts(LinkName(links, nextHop.interfaceIndex));
         });
}

class NetworkRouteList final : public HostCommand {
 public:
  NetworkRouteList() : HostCommand("List the routes by which packets are sent.") {
    ShowAsTable("NetworkRoute", "Destination,Gateway,Interface,Protocol,Metric,Source");
    AddExample("", "List the routes of the main table");
    AddExample("--family 6 --interface eth0", "List the IPv6 routes through one interface");
    AddExample("--table 255 --table 254", "List the routes of two tables by number");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddFamilyParameter(spec);
    AddInterfaceParameter(spec);
    Parameter("table", CallSpec::IntList,
              "List the routes of the table of this number, 254 (main) unless given; %ENUM%.")
        .Short("t")
        .Between(1, std::numeric_limits<std::uint32_t>::max())
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "List the routes of every table.").Short("a").AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The routes, in the kernel's order.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const NumberFilter families(input, "family");
    const TextFilter interfaces(input, "interface");
    const NumberFilter tables(input, "table");
    const bool isEveryTableListed = input.IsFlagSet("all");
    const LinkNameMap links = LinkNames(ReadLinks());
    const auto list = Shape().NewList();
    for (const NetworkRoute& route : ReadRoutes()) {
      const bool isTableChosen =
          tables.IsGiven() ? tables.Accepts(route.table) : route.table == RT_TABLE_MAIN;
      if ((isEveryTableListed || isTableChosen) && families.Accepts(route.family) &&
          LeavesThrough(route, interfaces, links)) {
        list->Add(ToRecord(route, links));
      }
    }
    output.SetRootObject(list);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkRouteList() {
  return std::make_shared<NetworkRouteList>();
}

}  // namespace Kestrel::Host
