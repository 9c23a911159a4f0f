// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <map>
#include <string>
#include <vector>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/network/NetworkAddressShape.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/NetworkInterfaceFields.h"
#include "plugins/host/network/NetworkLinks.h"
#include "plugins/host/network/NetworkParameters.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("NetworkInterface")
          .String("Name", "The name of the interface.")
          .With(DeclareInterfaceFields)
          .Strings("Addresses", "Its addresses with their prefix lengths.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const NetworkLink& link,
                                              const std::vector<std::string>& addresses) {
  auto result = Shape().NewStruct();
  result->SetField("Name", SanitizedText(link.name));
  SetInterfaceFields(link, *result);
  result->SetField("Addresses", addresses);
  return result;
}

std::map<long, std::vector<std::string>> PrefixesByLink() {
  std::map<long, std::vector<std::string>> prefixes;
  for (const NetworkAddress& address : ReadAddresses()) {
    prefixes[address.interfaceIndex].push_back(FormatPrefix(address));
  }
  return prefixes;
}

class NetworkInterfaceList final : public ListCommand {
 public:
  NetworkInterfaceList()
      : ListCommand("List the network interfaces.", Shape, "The interfaces, sorted by index.") {
    ShowColumns("Name,State,MAC Address,Addresses", {{"wrap-last", "true"}});
    AddMetaData("complete:interface", kInterfaceCompletion);
    AddExample("", "List every interface");
    AddExample("--up true --state down", "List those that are enabled but down");
    AddExample("--interface eth0 --interface lo", "List two interfaces by name");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddInterfaceParameter(spec);
    Parameter(
        "state", CallSpec::StringList,
        "List only interfaces in this state, a word or its number: UP (can transmit packets), "
        "DOWN, LOWERLAYERDOWN (the interface below it is down), DORMANT (waits for an event, "
        "such as a login), TESTING, NOTPRESENT (a component is missing), UNKNOWN (does not "
        "report its state).")
        .Short("s")
        .AddTo(spec);
    Parameter("up", CallSpec::BoolList,
              "List only interfaces that are enabled (true) or disabled (false).")
        .Short("u")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const NameFilter interfaces(input, "interface");
    const WordFilter states(input, "state", LinkStateWords(), output);
    const BoolFilter up(input, "up");
    if (output.HasError()) {
      return;
    }
    auto prefixes = PrefixesByLink();
    for (const NetworkLink& link : ReadLinks()) {
      if (interfaces.Accepts(link.name) && states.Accepts(link.state) &&
          up.Accepts(IsEnabled(link))) {
        rows.Add(ToStruct(link, prefixes[link.index]));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkInterfaceList() {
  return std::make_shared<NetworkInterfaceList>();
}

}  // namespace Kestrel::Host
