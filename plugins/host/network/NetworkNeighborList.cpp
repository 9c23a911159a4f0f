// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
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
          .String("Interface", "The interface through which it is reached.")
          .String("MAC Address", "Its link-layer address, or unknown.")
          .String("State", "Its state: reachable, stale, failed and others.")
          .Bool("Router", "Whether it is a router.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const NetworkNeighbor& neighbor,
                                              const std::map<long, std::string>& links) {
  auto result = Shape().NewStruct();
  result->SetField("Address", TextOrNone(neighbor.address));
  result->SetField("Family", neighbor.family);
  result->SetField("Interface", SanitizedText(LinkName(links, neighbor.interfaceIndex)));
  result->SetField("MAC Address", neighbor.linkAddress.empty() ? "unknown" : neighbor.linkAddress);
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
    AddMetaData("complete:interface", kInterfaceCompletion);
    AddExample("", "List the neighbors that the kernel has looked for");
    AddExample("--state failed --state incomplete", "List the neighbors that do not answer");
    AddExample("--all --family 4", "List all IPv4 neighbors");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddFamilyParameter(spec);
    AddInterfaceParameter(spec);
    Parameter("state", CallSpec::StringList,
              "List only neighbors in this state, a word or its number: none (is new), incomplete "
              "(is being looked for), reachable, stale (was not reached recently), delay (will be "
              "checked soon), probe (is being checked), failed, noarp (needs no lookup), permanent "
              "(set by the administrator).")
        .Short("s")
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "Also list neighbors in the states noarp and none.")
        .Short("a")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const IntFilter families(input, "family");
    const NameFilter interfaces(input, "interface");
    const WordFilter states(input, "state", NeighborStateWords(), output);
    if (output.HasError()) {
      return;
    }
    // Neighbors in a state given with --state are listed even if it is omitted by default.
    const bool isAll = input.IsFlagSet("all") || states.IsGiven();
    const auto links = LinkNames(ReadLinks());
    for (const NetworkNeighbor& neighbor : ReadNeighbors()) {
      const bool wasAsked = neighbor.state != "noarp" && neighbor.state != "none";
      if ((isAll || wasAsked) && families.Accepts(neighbor.family) &&
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
