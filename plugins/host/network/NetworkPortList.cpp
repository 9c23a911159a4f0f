// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/network/NetworkCommands.h"
#include "plugins/host/network/ServicePorts.h"
#include "plugins/host/network/WordFilter.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("NetworkPort")
          .Int("Port", "The number of the port.")
          .String("Protocol", "The protocol: tcp, udp, sctp and others.")
          .String("Service", "The service that the port is assigned to.")
          .Strings("Aliases", "Other names of the service.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const ServicePort& port) {
  auto result = Shape().NewStruct();
  result->SetField("Port", port.port);
  result->SetField("Protocol", SanitizedText(port.protocol));
  result->SetField("Service", SanitizedText(port.service));
  result->SetField("Aliases", SanitizedList(port.aliases));
  return result;
}

// Returns the protocols in the list, which are the only valid values of "protocol".
WordSet ProtocolsOf(const std::vector<ServicePort>& ports) {
  std::set<std::string> protocols;
  for (const ServicePort& port : ports) {
    protocols.insert(port.protocol);
  }
  WordSet words;
  for (const std::string& protocol : protocols) {
    words.Word(protocol);
  }
  return words;
}

bool HasName(const ServicePort& port, const NameFilter& names) {
  return names.Accepts(port.service) ||
         std::any_of(port.aliases.begin(), port.aliases.end(),
                     [&names](const std::string& alias) { return names.Accepts(alias); });
}

class NetworkPortList final : public ListCommand {
 public:
  NetworkPortList()
      : ListCommand("List the services that ports are assigned to.", Shape,
                    "The entries of /etc/services, in their order.") {
    ShowColumns("Port,Protocol,Service,Aliases", {{"wrap-last", "true"}});
    AddMetaData("complete:name", "network.port.list Service");
    AddExample("--port 22 --port 53", "List the services of two ports");
    AddExample("--name 'http*' --protocol tcp", "List the ports of services by name");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("port", CallSpec::IntList, "List only the port with this number; %ENUM%.")
        .Short("P")
        .Between(0, 65535)
        .AddTo(spec);
    Parameter("name", CallSpec::StringList,
              "List only services with this name or alias; * in it stands for anything.")
        .Short("n")
        .AddTo(spec);
    Parameter("protocol", CallSpec::StringList, "List only this protocol, such as tcp or udp.")
        .Short("p")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const std::vector<ServicePort> ports = ReadServicePorts();
    const IntFilter numbers(input, "port");
    const NameFilter names(input, "name");
    const WordFilter protocols(input, "protocol", ProtocolsOf(ports), output);
    for (const ServicePort& port : ports) {
      if (numbers.Accepts(port.port) && HasName(port, names) && protocols.Accepts(port.protocol)) {
        rows.Add(ToStruct(port));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewNetworkPortList() {
  return std::make_shared<NetworkPortList>();
}

}  // namespace Kestrel::Host
