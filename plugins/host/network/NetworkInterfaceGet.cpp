// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/KestrelException.h>

#include <algorithm>
#include <string>
#include <vector>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/network/NetworkAddressShape.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkInterfaceFields.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkParameters.h"

namespace Kestrel::Host {
namespace {

const StructShape& TrafficShape() {
  static const StructShape shape = StructShape("NetworkTraffic")
                                       .Int("Bytes", "The number of bytes.")
                                       .Int("Packets", "The number of packets.")
                                       .Int("Errors", "The number of packets with errors.")
                                       .Int("Dropped", "The number of dropped packets.");
  return shape;
}

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("NetworkInterfaceDetails")
          .String("Name", "The name of the interface.")
          .String("Alias", "The alias that the administrator has set, or none.")
          .With(DeclareInterfaceFields)
          .String("Broadcast", "Its link-layer broadcast address, or none.")
          .Strings("Flags", "Its flags, such as BROADCAST or PROMISC.")
          .String("Master", "The bridge or bond that it is part of, or none.")
          .String("Queueing", "The queueing discipline for packets to be sent, or none.")
          .Int("Queue Length", "How many packets the queue can contain.")
          .Structs("Addresses", NetworkAddressShape(), "Its addresses.")
          .Struct("Received", TrafficShape(), "What it has received since it was created.")
          .Struct("Transmitted", TrafficShape(), "What it has sent since it was created.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const LinkTraffic& traffic) {
  auto result = TrafficShape().NewStruct();
  result->SetField("Bytes", traffic.bytes);
  result->SetField("Packets", traffic.packets);
  result->SetField("Errors", traffic.errors);
  result->SetField("Dropped", traffic.dropped);
  return result;
}

std::shared_ptr<MetaObj::MetaList> AddressList(const NetworkLink& link,
                                               const std::map<long, std::string>& linkNames) {
  const NumberTable scopes = ReadRoutingNames().scopes;
  auto list = NetworkAddressShape().NewList();
  for (const NetworkAddress& address : ReadAddresses()) {
    if (address.interfaceIndex == link.index) {
      list->Add(Host::ToStruct(address, linkNames, scopes));
    }
  }
  return list;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const NetworkLink& link,
                                              const std::map<long, std::string>& linkNames) {
  auto result = Shape().NewStruct();
  result->SetField("Name", SanitizedText(link.name));
  result->SetField("Alias", SanitizedText(TextOrNone(link.alias)));
  SetInterfaceFields(link, *result);
  result->SetField("Broadcast", TextOrNone(link.broadcast));
  result->SetField("Flags", LinkFlagNames(link.flags));
  result->SetField("Master", SanitizedText(LinkName(linkNames, link.masterIndex)));
  result->SetField("Queueing", SanitizedText(TextOrNone(link.queueing)));
  result->SetField("Queue Length", link.queueLength);
  result->SetField("Addresses", AddressList(link, linkNames));
  result->SetField("Received", ToStruct(link.received));
  result->SetField("Transmitted", ToStruct(link.transmitted));
  return result;
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
    AddMetaData("complete:interface", kInterfaceCompletion);
    AddExample("--interface lo", "Show the loopback interface");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("interface", CallSpec::String, "The name of the interface.")
        .Short("i")
        .Required()
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareStruct(spec, "The interface with its addresses and its traffic.");
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
    output.SetRootObject(ToStruct(*found, LinkNames(links)));
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkInterfaceGet() {
  return std::make_shared<NetworkInterfaceGet>();
}

}  // namespace Kestrel::Host
