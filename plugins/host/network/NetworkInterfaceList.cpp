// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <net/if.h>

#include <map>
#include <string>
#include <vector>

#include "plugins/host/frame/DataSource.h"
#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/network/NetworkAddressShape.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkParameters.h"

namespace Kestrel::Host {
namespace {

const RecordShape& Shape() {
  static const RecordShape shape =
      RecordShape("NetworkInterface")
          .Text("Name", "The interface's name.")
          .Number("Index", "The interface's number.")
          .Text("State", "Whether it can carry packets: UP, DOWN, UNKNOWN and others.")
          .Truth("Up", "Whether the administrator has it switched on.")
          .Text("Type", "The kind of its link: ether, loopback and others.")
          .Text("Kind", "The kind of a virtual interface: veth, bridge and others; else empty.")
          .Number("MTU", "The largest packet that it carries, in bytes.")
          .Text("MAC Address", "Its link-layer address; empty for none.")
          .Texts("Addresses", "Its addresses with their prefix lengths.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToRecord(const NetworkLink& link,
                                              const std::vector<std::string>& addresses) {
  auto record = Shape().NewRecord();
  record->SetField("Name", OutsideText(link.name));
  record->SetField("Index", link.index);
  record->SetField("State", link.state);
  record->SetField("Up", (link.flags & IFF_UP) != 0);
  record->SetField("Type", link.type);
  record->SetField("Kind", OutsideText(link.kind));
  record->SetField("MTU", link.mtu);
  record->SetField("MAC Address", link.address);
  record->SetField("Addresses", addresses);
  return record;
}

std::map<long, std::vector<std::string>> PrefixesByLink() {
  std::map<long, std::vector<std::string>> prefixes;
  for (const NetworkAddress& address : ReadAddresses()) {
    prefixes[address.interfaceIndex].push_back(PrefixText(address));
  }
  return prefixes;
}

class NetworkInterfaceList final : public HostCommand {
 public:
  NetworkInterfaceList() : HostCommand("List the network interfaces.") {
    ShowAsTable("NetworkInterface", "Name,State,MTU,MAC Address,Addresses",
                {{"wrap-last", "true"}});
    AddExample("", "List every interface");
    AddExample("--up true --state DOWN", "List those that are switched on but carry nothing");
    AddExample("--interface eth0 --interface lo", "List two interfaces by name");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddInterfaceParameter(spec);
    Parameter("state", CallSpec::StringList, "List interfaces in this state only:%FULLENUM%")
        .Short("s")
        .OneOf({{"UP", "carries packets"},
                {"DOWN", "carries none"},
                {"LOWERLAYERDOWN", "the interface below it carries none"},
                {"DORMANT", "waits for an event, such as a login"},
                {"TESTING", "is being tested"},
                {"NOTPRESENT", "lacks a part"},
                {"UNKNOWN", "does not tell"}})
        .AddTo(spec);
    Parameter("up", CallSpec::BoolList,
              "List interfaces that are switched on (true) or off (false); both may be given.")
        .Short("u")
        .AddTo(spec);
  }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareList(spec, "The interfaces by number.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const TextFilter interfaces(input, "interface");
    const TextFilter states(input, "state");
    const TruthFilter up(input, "up");
    auto prefixes = PrefixesByLink();
    const auto list = Shape().NewList();
    for (const NetworkLink& link : ReadLinks()) {
      if (interfaces.Accepts(link.name) && states.Accepts(link.state) &&
          up.Accepts((link.flags & IFF_UP) != 0)) {
        list->Add(ToRecord(link, prefixes[link.index]));
      }
    }
    output.SetRootObject(list);
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkInterfaceList() {
  return std::make_shared<NetworkInterfaceList>();
}

}  // namespace Kestrel::Host
