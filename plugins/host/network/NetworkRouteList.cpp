// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <linux/rtnetlink.h>

#include <algorithm>
#include <map>
#include <string>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkParameters.h"
#include "plugins/host/network/NetworkRoutes.h"
#include "plugins/host/network/RoutingNames.h"
#include "plugins/host/network/WordFilter.h"

namespace Kestrel::Host {
namespace {

/// The names for the numbers in a route.
struct RouteNames {
  std::map<long, std::string> links;
  RoutingNames routing;
};

const StructShape& NextHopShape() {
  static const StructShape shape =
      StructShape("NetworkNextHop")
          .String("Gateway", "The router that forwards the packets, or none.")
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
          .String("Type", "What happens to its packets: unicast, local, blackhole and others.")
          .String("Via", "Each next hop: its gateway, interface and weight; or none.")
          .String("Gateway", "The gateway of the first next hop, or none.")
          .String("Interface", "The interface of the first next hop, or none.")
          .Structs("Next Hops", NextHopShape(), "All next hops.")
          .String("Protocol", "What created it: kernel, boot, static, dhcp, ra and others.")
          .String("Scope", "How far the destination is: global, link, host and others.")
          .String("Source", "The preferred local address, or none.")
          .Int("Metric", "The kernel prefers the route with the lowest metric.")
          .String("Table",
                  "The name of its routing table, such as main; its number if it has none.")
          .Int("Table Number", "The number of its routing table; 254 is the main table.");
  return shape;
}

std::string DestinationText(const NetworkRoute& route) {
  return route.destination == "default"
             ? route.destination
             : route.destination + "/" + std::to_string(route.prefixLength);
}

std::string HopText(const NextHop& nextHop, const RouteNames& names, bool hasWeight) {
  std::string text = nextHop.gateway;
  if (nextHop.interfaceIndex != 0) {
    text += (text.empty() ? "dev " : " dev ") + LinkName(names.links, nextHop.interfaceIndex);
  }
  return hasWeight ? text + " weight " + std::to_string(nextHop.weight) : text;
}

std::string ViaText(const NetworkRoute& route, const RouteNames& names) {
  std::string text;
  for (const NextHop& nextHop : route.nextHops) {
    text += (text.empty() ? "" : ", ") + HopText(nextHop, names, route.nextHops.size() > 1);
  }
  return TextOrNone(std::move(text));
}

/// Makes the rows. Most strings are equal to those of the previous route, so rows share them.
class RouteRows {
 public:
  /// `names` must outlive this object.
  explicit RouteRows(const RouteNames& names) : names_(names) {}

  std::shared_ptr<MetaObj::MetaStruct> Make(const NetworkRoute& route) {
    const NextHop first = route.nextHops.empty() ? NextHop() : route.nextHops.front();
    const RoutingNames& routing = names_.routing;
    auto result = Shape().NewStruct();
    result->SetField("Destination", DestinationText(route));
    result->SetField("Family", route.family);
    result->SetField("Prefix Length", route.prefixLength);
    result->SetField("Type", RouteTypeName(route.type));
    result->SetField("Via", via_.Get(ViaText(route, names_)));
    result->SetField("Gateway", TextOrNone(first.gateway));
    result->SetField("Interface", interfaces_.Get(LinkName(names_.links, first.interfaceIndex)));
    result->SetField("Next Hops", MakeNextHops(route));
    result->SetField("Protocol", protocols_.Get(routing.protocols.NameOf(route.protocol)));
    result->SetField("Scope", scopes_.Get(routing.scopes.NameOf(route.scope)));
    result->SetField("Source", TextOrNone(route.source));
    result->SetField("Metric", route.metric);
    result->SetField("Table", tables_.Get(routing.tables.NameOf(route.table)));
    result->SetField("Table Number", static_cast<long>(route.table));
    return result;
  }

 private:
  std::shared_ptr<MetaObj::MetaList> MakeNextHops(const NetworkRoute& route) {
    auto nextHops = NextHopShape().NewList();
    for (const NextHop& nextHop : route.nextHops) {
      auto row = NextHopShape().NewStruct();
      row->SetField("Gateway", TextOrNone(nextHop.gateway));
      row->SetField("Interface", interfaces_.Get(LinkName(names_.links, nextHop.interfaceIndex)));
      row->SetField("Weight", nextHop.weight);
      nextHops->Add(row);
    }
    return nextHops;
  }

  const RouteNames& names_;
  RepeatedText via_;
  RepeatedText interfaces_;
  RepeatedText protocols_;
  RepeatedText scopes_;
  RepeatedText tables_;
};

/// Selects the routes that the user asks for.
class RouteFilter {
 public:
  RouteFilter(const CallSpec::Input& input, const RouteNames& names, CallSpec::Output& output)
      : names_(names),
        families_(input, "family"),
        interfaces_(input, "interface"),
        isInterfaceGiven_(input.HasParameter("interface")),
        types_(input, "type", RouteTypeWords(), output),
        tables_(input, "table", names.routing.tables, output),
        isAll_(input.IsFlagSet("all")) {
    if (isAll_ && input.HasParameter("table")) {
      output.AddErrorMessage(
          "--all lists the routes of all tables, so --table cannot be used too.");
    }
  }

  bool Accepts(const NetworkRoute& route) const {
    return IsTableChosen(route.table) && families_.Accepts(route.family) &&
           types_.Accepts(RouteTypeName(route.type)) && UsesChosenInterface(route);
  }

 private:
  bool IsTableChosen(unsigned table) const {
    return isAll_ || (tables_.IsGiven() ? tables_.Accepts(table) : table == RT_TABLE_MAIN);
  }

  bool UsesChosenInterface(const NetworkRoute& route) const {
    return !isInterfaceGiven_ ||
           std::any_of(route.nextHops.begin(), route.nextHops.end(), [this](const NextHop& hop) {
             return interfaces_.Accepts(LinkName(names_.links, hop.interfaceIndex));
           });
  }

  const RouteNames& names_;
  IntFilter families_;
  NameFilter interfaces_;
  bool isInterfaceGiven_;
  WordFilter types_;
  NumberFilter tables_;
  bool isAll_;
};

class NetworkRouteList final : public ListCommand {
 public:
  NetworkRouteList()
      : ListCommand("List the routes by which packets are sent.", Shape,
                    "The routes, in the kernel's order.") {
    ShowColumns("Destination,Type,Protocol,Metric,Via", {{"wrap-last", "true"}});
    AddMetaData("complete:interface", kInterfaceCompletion);
    AddExample("", "List the routes of the main table");
    AddExample("--family 6 --interface eth0", "List the IPv6 routes through one interface");
    AddExample("--table local --table 254", "List the routes of two tables");
    AddExample("--all --type blackhole --type unreachable", "List the routes that lead nowhere");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddFamilyParameter(spec);
    AddInterfaceParameter(spec);
    Parameter("table", CallSpec::StringList,
              "List the routes of this table, a name in rt_tables such as main or local, or a "
              "number; the default is main.")
        .Short("t")
        .AddTo(spec);
    Parameter("type", CallSpec::StringList,
              "List only routes of this type, a word or its number: unicast, local, broadcast, "
              "anycast, multicast, blackhole, unreachable, prohibit, throw, nat, xresolve.")
        .Short("T")
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "List the routes of all tables.").Short("a").AddTo(spec);
  }

  std::string GetColumns(const CallSpec::Input& input) const override {
    return input.IsFlagSet("all") || input.HasParameter("table") ? "Table,Destination,Type,Via"
                                                                 : ListCommand::GetColumns(input);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    RouteNames names = {{}, ReadRoutingNames()};
    const RouteFilter filter(input, names, output);
    if (output.HasError()) {
      return;
    }
    names.links = LinkNames(ReadLinks());
    RouteRows maker(names);
    for (const NetworkRoute& route : ReadRoutes()) {
      if (filter.Accepts(route)) {
        rows.Add(maker.Make(route));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkRouteList() {
  return std::make_shared<NetworkRouteList>();
}

}  // namespace Kestrel::Host
