// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkParameters.h"
#include "plugins/host/network/NetworkRoutes.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("NetworkNeighbor")
          .String("Address", "The neighbor's IPv4 or IPv6 address.")
          .Int("Family", "The version of the Internet protocol: 4 or 6.")
          .String("Interface", "The interface behind which it lives.")
          .String("MAC Address", "Its link-layer address; empty while it is not known.")
          .String("State", "What is known of it: reachable, stale, failed and others.")
          .Bool("Router", "Whether it says that it passes packets on.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const NetworkNeighbor& neighbor,
                                              const std::map<long, std::string>& links) {
  auto result = Shape().NewStruct();
  result->SetField("Address", neighbor.address);
  result->SetField("Family", neighbor.family);
  result->SetField("Interface", SanitizedText(LinkName(links, neighbor.interfaceIndex)));
  result->SetField("MAC Address", neighbor.linkAddress);
  result->SetField("State", neighbor.state);
  result->SetField("Router", neighbor.isRouter);
  return result;
}

class NetworkNeighborList final : public ListCommand {
 public:
  NetworkNeighborList()
      : ListCommand("List the link-layer addresses of the neighbors.", Shape,
                    "The neighbors, in the kernel's order.") {
    ShowColumns("Address,Interface,MAC Address,State");
    AddExample("", "List the neighbors that the kernel has asked for");
    AddExample("--state failed --state incomplete", "List the neighbors that do not answer");
    AddExample("--all --family 4", "List every IPv4 neighbor, also those that need no asking");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddFamilyParameter(spec);
    AddInterfaceParameter(spec);
    Parameter("state", CallSpec::StringList, "List neighbors in this state only:%FULLENUM%")
        .Short("s")
        .OneOf({{"none", "nothing has happened yet"},
                {"incomplete", "was asked and has not answered yet"},
                {"reachable", "has answered lately"},
                {"stale", "has not answered lately, nor been asked"},
                {"delay", "is about to be asked again"},
                {"probe", "is being asked again"},
                {"failed", "does not answer"},
                {"noarp", "needs no asking"},
                {"permanent", "was set by the administrator"}})
        .AddTo(spec);
    Parameter("all", CallSpec::Flag,
              "List also neighbors that need no asking (noarp) or were not asked (none).")
        .Short("a")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const IntFilter families(input, "family");
    const StringFilter interfaces(input, "interface");
    const StringFilter states(input, "state");
    // A state that is asked for by name is listed whatever it is.
    const bool isEverythingListed = input.IsFlagSet("all") || states.IsGiven();
    const auto links = LinkNames(ReadLinks());
    for (const NetworkNeighbor& neighbor : ReadNeighbors()) {
      const bool wasAsked = neighbor.state != "noarp" && neighbor.state != "none";
      if ((isEverythingListed || wasAsked) && families.Accepts(neighbor.family) &&
          states.Accepts(neighbor.state) &&
          interfaces.Accepts(LinkName(links, neighbor.interfaceIndex))) {
        rows.Add(ToStruct(neighbor, links));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkNeighborList() {
  return std::make_shared<NetworkNeighborList>();
}

}  // namespace Kestrel::Host
