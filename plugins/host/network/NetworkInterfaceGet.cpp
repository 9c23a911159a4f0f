// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/KestrelException.h>
#include <net/if.h>

#include <algorithm>
#include <string>
#include <vector>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/network/NetworkAddressShape.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkParameters.h"

namespace Kestrel::Host {
namespace {

const RecordShape& TrafficShape() {
  static const RecordShape shape = RecordShape("NetworkTraffic")
                                       .Number("Bytes", "How many bytes it carried.")
                                       .Number("Packets", "How many packets it carried.")
                                       .Number("Errors", "How many packets were damaged.")
                                       .Number("Dropped", "How many packets were given up.");
  return shape;
}

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("NetworkInterfaceDetails")
          .Text("Name", "The interface's name.")
          .Text("Alias", "What the administrator calls it; empty for nothing.")
          .Number("Index", "The interface's number.")
          .Text("State", "Whether it can carry packets: UP, DOWN, UNKNOWN and others.")
          .Truth("Up", "Whether the administrator has it switched on.")
          .Text("Type", "The kind of its link: ether, loopback and others.")
          .Text("Kind", "The kind of a virtual interface: veth, bridge and others; else empty.")
          .Number("MTU", "The largest packet that it carries, in bytes.")
          .Text("MAC Address", "Its link-layer address; empty for none.")
          .Text("Broadcast", "The link-layer address that reaches every neighbor.")
          .Texts("Flags", "What is true of it, such as BROADCAST or PROMISC.")
          .Text("Master", "The bridge or bond that it belongs to; empty for none.")
          .Text("Queueing", "How packets queue up that wait to be sent.")
          .Number("Queue Length", "How many packets may wait to be sent.")
          .Records("Addresses", NetworkAddressShape(), "Its addresses.")
          .Record("Received", TrafficShape(), "What it has received since it was made.")
          .Record("Transmitted", TrafficShape(), "What it has sent since it was made.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToRecord(const LinkTraffic& traffic) {
  auto record = TrafficShape().NewRecord();
  record->SetField("Bytes", traffic.bytes);
  record->SetField("Packets", traffic.packets);
  record->SetField("Errors", traffic.errors);
  record->SetField("Dropped", traffic.dropped);
  return record;
}

std::shared_ptr<MetaObj::MetaList> AddressList(const NetworkLink& link,
                                               const std::map<long, std::string>& linkNames) {
  auto list = NetworkAddressShape().NewList();
  for (const NetworkAddress& address : ReadAddresses()) {
    if (address.interfaceIndex == link.index) {
      list->Add(Host::ToRecord(address, linkNames));
    }
  }
  return list;
}

std::shared_ptr<MetaObj::MetaStruct> ToRecord(const NetworkLink& link,
                                              const std::map<long, std::string>& linkNames) {
  auto record = Shape().NewRecord();
  record->SetField("Name", OutsideText(link.name));
  record->SetField("Alias", OutsideText(link.alias));
  record->SetField("Index", link.index);
  record->SetField("State", link.state);
  record->SetField("Up", (link.flags & IFF_UP) != 0);
  record->SetField("Type", link.type);
  record->SetField("Kind", OutsideText(link.kind));
  record->SetField("MTU", link.mtu);
  record->SetField("MAC Address", link.address);
  record->SetField("Broadcast", link.broadcast);
  record->SetField("Flags", LinkFlagNames(link.flags));
  record->SetField("Master", OutsideText(LinkName(linkNames, link.masterIndex)));
  record->SetField("Queueing", OutsideText(link.queueing));
  record->SetField("Queue Length", link.queueLength);
  record->SetField("Addresses", AddressList(link, linkNames));
  record->SetField("Received", ToRecord(link.received));
  record->SetField("Transmitted", ToRecord(link.transmitted));
  return record;
}

class NetworkInterfaceGet final : public HostCommand {
 public:
  NetworkInterfaceGet() : HostCommand("Show everything about one network interface.") {
    ShowAsLines("NetworkInterfaceDetails",
                "Name,Alias,Index,State,Up,Type,Kind,MTU,MAC Address,Broadcast,Flags,Master,"
                "Queueing,Queue Length,Received,Transmitted,Addresses",
                {{"header:NetworkInterfaceDetails", "Interface %Name%"},
                 {"header:NetworkAddress", "%Address%"},
                 {"header:NetworkTraffic", "<NONE>"},
                 {"fields:NetworkAddress", "Family,Prefix Length,Scope,Peer,Broadcast,Flags"},
                 {"units:NetworkInterfaceDetails.MTU", "bytes"},
                 {"units:NetworkInterfaceDetails.Queue Length", "packets"}});
    AddExample("--interface lo", "Show the interface by which the machine talks to itself");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("interface", CallSpec::String, "The name of the interface; %REGEX%.")
        .Short("i")
        .Required()
        .Matching(kInterfaceName)
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareRecord(spec, "The interface with its addresses and what it has carried.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const std::string& name = input.GetParameter("interface");
    const std::vector<NetworkLink> links = ReadLinks();
    const auto found = std::find_if(links.begin(), links.end(),
                                    [&name](const NetworkLink& link) { return link.name == name; });
    if (found == links.end()) {
      output.AddErrorMessage("There is no network interface named '" + name + "'");
      return;
    }
    output.SetRootObject(ToRecord(*found, LinkNames(links)));
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkInterfaceGet() {
  return std::make_shared<NetworkInterfaceGet>();
}

}  // namespace Kestrel::Host
